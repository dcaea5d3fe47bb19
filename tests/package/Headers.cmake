# Each installed header compiles alone, twice over, and without a warning.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
set(include_dir "${PREFIX}/include/stringresolver")
file(GLOB_RECURSE headers RELATIVE "${include_dir}" "${include_dir}/*.h")
if(NOT headers)
  message(FATAL_ERROR "no headers in ${include_dir}")
endif()
foreach(header IN LISTS headers)
  file(WRITE ${SCRATCH}/alone.cpp "#include \"${header}\"\n#include \"${header}\"\n")
  must_run(${CXX} -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only
           "-I${include_dir}" ${SCRATCH}/alone.cpp)
endforeach()
