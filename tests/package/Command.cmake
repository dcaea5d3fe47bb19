# The command's component brings the command, its manual page and completions, and nothing else.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
must_run(${CMAKE_COMMAND} --install ${BUILD} --component command --prefix ${SCRATCH})
file(GLOB_RECURSE installed RELATIVE ${SCRATCH} ${SCRATCH}/*)
set(expected
  bin/resolve
  share/bash-completion/completions/resolve
  share/man/man1/resolve.1
  share/zsh/site-functions/_resolve)
if(NOT installed STREQUAL expected)
  message(FATAL_ERROR "the command's component brings: ${installed}")
endif()
execute_process(COMMAND ${SCRATCH}/bin/resolve --version OUTPUT_VARIABLE version
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT version STREQUAL "resolve ${VERSION}")
  message(FATAL_ERROR "resolve --version printed \"${version}\"")
endif()
