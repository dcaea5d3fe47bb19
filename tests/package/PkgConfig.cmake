# examples/embedding, compiled by one command with what pkg-config says.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})
find_program(pkg_config NAMES pkg-config pkgconf REQUIRED)
set(ENV{PKG_CONFIG_PATH} "${PREFIX}/${LIBDIR}/pkgconfig")
execute_process(COMMAND ${pkg_config} --cflags --libs stringresolver RESULT_VARIABLE status
                OUTPUT_VARIABLE arguments ERROR_VARIABLE error OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "pkg-config: ${error}")
endif()
separate_arguments(arguments UNIX_COMMAND "${arguments}")
separate_arguments(FLAGS UNIX_COMMAND "${FLAGS}")
must_run(${CXX} -std=c++20 ${FLAGS} ${SOURCE}/examples/embedding/main.cpp ${arguments}
         -o ${SCRATCH}/embedding)
check_embedding(${SCRATCH}/embedding)
