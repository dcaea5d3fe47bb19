# The static library needs nothing but the C and C++ runtime: a host can link it anywhere.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

# symbols(<variable> <nm option>... <file>): the names that nm lists, versions cut off.
function(symbols variable)
  execute_process(COMMAND ${NM} --format=posix ${ARGN} RESULT_VARIABLE status
                  OUTPUT_VARIABLE output ERROR_VARIABLE error)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "nm ${ARGN}: ${error}")
  endif()
  string(REGEX MATCHALL "[^\n]+" lines "${output}")
  list(FILTER lines INCLUDE REGEX "^[^ ]+ [A-Za-z]")
  list(TRANSFORM lines REPLACE "[@ ].*" "")
  list(REMOVE_DUPLICATES lines)
  set(${variable} ${lines} PARENT_SCOPE)
endfunction()

# foreign_symbols(<variable> <library>): what the library takes from elsewhere than the runtime.
function(foreign_symbols variable library)
  symbols(needed --undefined-only ${library})
  symbols(own --defined-only ${library})
  list(REMOVE_ITEM needed ${own} ${runtime})
  # A build with sanitizers calls their runtime from everywhere.
  list(FILTER needed EXCLUDE REGEX "^(__asan_|__ubsan_|__sanitizer_|__lsan_)|^_GLOBAL_OFFSET_TABLE_$")
  set(${variable} ${needed} PARENT_SCOPE)
endfunction()

set(runtime)
foreach(name libstdc++.so.6 libm.so.6 libgcc_s.so.1 libc.so.6)
  execute_process(COMMAND ${CXX} -print-file-name=${name} OUTPUT_VARIABLE path
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  symbols(names --dynamic --defined-only ${path})
  list(APPEND runtime ${names})
endforeach()
# The linker, every program's start and the loader give these.
list(APPEND runtime __dso_handle __tls_get_addr)

foreign_symbols(foreign ${LIBRARY})
if(foreign)
  message(FATAL_ERROR "${LIBRARY} needs: ${foreign}")
endif()

# The check sees what it is there to see.
file(REMOVE_RECURSE ${SCRATCH})
file(WRITE ${SCRATCH}/needy.cpp "extern \"C\" int dwarf_begin(int);
int Needy(int file) { return dwarf_begin(file); }\n")
must_run(${CXX} -c ${SCRATCH}/needy.cpp -o ${SCRATCH}/needy.o)
must_run(${AR} rc ${SCRATCH}/libneedy.a ${SCRATCH}/needy.o)
foreign_symbols(foreign ${SCRATCH}/libneedy.a)
if(NOT foreign STREQUAL dwarf_begin)
  message(FATAL_ERROR "a library that needs dwarf_begin was said to need: ${foreign}")
endif()
