# A project with the same check builds, stops building when a header breaks the rule, and builds
# again when it no longer does.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
file(WRITE ${SCRATCH}/CMakeLists.txt "
cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES CXX)
include(\"${SOURCE}/cmake/Layering.cmake\")
add_library(small STATIC resolver/Small.cpp)
target_include_directories(small PRIVATE \${PROJECT_SOURCE_DIR})
check_layering(small FOLDERS host resolver)
")
file(WRITE ${SCRATCH}/host/Small.h "#include <string>\n")
file(WRITE ${SCRATCH}/targets/Small.h "#include <string>\n")
file(WRITE ${SCRATCH}/resolver/Small.cpp "#include \"host/Small.h\"\nint Small() { return 1; }\n")
set(build ${CMAKE_COMMAND} --build ${SCRATCH}/build)
must_run(${CMAKE_COMMAND} -S ${SCRATCH} -B ${SCRATCH}/build -G "${GENERATOR}" -DCMAKE_CXX_COMPILER=${CXX})
must_run(${build})

file(WRITE ${SCRATCH}/host/Small.h "#include \"targets/Small.h\"\n")
execute_process(COMMAND ${build} RESULT_VARIABLE status OUTPUT_VARIABLE output
                ERROR_VARIABLE output)
if(status EQUAL 0 OR NOT output MATCHES "host/Small.h: #include \"targets/Small.h\"")
  message(FATAL_ERROR "a header that includes a higher layer was built (${status}):\n${output}")
endif()
if(output MATCHES "Building CXX object")
  message(FATAL_ERROR "files were compiled before the layers were checked:\n${output}")
endif()

file(WRITE ${SCRATCH}/host/Small.h "#include <list>\n")
must_run(${build})

# A file that no list names yet counts too.
file(WRITE ${SCRATCH}/resolver/New.h "#include <elf.h>\n")
execute_process(COMMAND ${build} RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
if(status EQUAL 0)
  message(FATAL_ERROR "a new header that includes a library was not looked at")
endif()
