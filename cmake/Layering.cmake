# check_layering(<target> FOLDERS <folder>... [BELOW <folder>...] [LIBRARIES])
#
# Makes the build of <target> fail when a file of FOLDERS includes what CheckLayering.cmake does not
# allow. Checked again whenever one of these files, or the list of them, changes. To be called in
# the folder that creates <target>.
set(STRINGRESOLVER_CHECK_LAYERING ${CMAKE_CURRENT_LIST_DIR}/CheckLayering.cmake)

function(check_layering target)
  cmake_parse_arguments(PARSE_ARGV 1 arg LIBRARIES "" "FOLDERS;BELOW")
  set(files)
  foreach(folder IN LISTS arg_FOLDERS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS
      ${PROJECT_SOURCE_DIR}/${folder}/*.h ${PROJECT_SOURCE_DIR}/${folder}/*.hpp
      ${PROJECT_SOURCE_DIR}/${folder}/*.inc ${PROJECT_SOURCE_DIR}/${folder}/*.cpp
      ${PROJECT_SOURCE_DIR}/${folder}/*.cc)
    list(APPEND files ${found})
  endforeach()
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.layering)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR} "-DFOLDERS=${arg_FOLDERS}"
            "-DBELOW=${arg_BELOW}" -DLIBRARIES=${arg_LIBRARIES} -DSTAMP=${stamp}
            -P ${STRINGRESOLVER_CHECK_LAYERING}
    DEPENDS ${files} ${STRINGRESOLVER_CHECK_LAYERING}
    COMMENT "Checking what ${target} includes"
    VERBATIM)
  # As a source of the target, the check comes before the first of its files is compiled.
  target_sources(${target} PRIVATE ${stamp})
endfunction()
