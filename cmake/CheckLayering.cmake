# Fails when a source file includes what its layer must not know.
#
#   cmake -DROOT=<dir> -DFOLDERS=<folder;...> -DBELOW=<folder;...> [-DLIBRARIES=ON] [-DSTAMP=<file>]
#         -P CheckLayering.cmake
#
# The files of each of FOLDERS, relative to ROOT, may include headers of the standard library,
# headers of their own folder, of the folders before it in FOLDERS, and of BELOW, named from ROOT.
# With LIBRARIES they may include any header in angle brackets that is not one of the project's.
# STAMP is touched when nothing is wrong.
cmake_minimum_required(VERSION 3.25)

set(standard_headers
  # C++20, the library's own
  algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
  condition_variable coroutine deque exception execution filesystem format forward_list fstream
  functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list
  locale map memory memory_resource mutex new numbers numeric optional ostream queue random ranges
  ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack
  stdexcept stop_token streambuf string string_view strstream syncstream system_error thread tuple
  type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
  # C's, under their C++ names
  cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef
  cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype)

set(remark "([ \t]*//[^;]*)?")
set(violations)
set(allowed_folders ${BELOW})
foreach(folder IN LISTS FOLDERS)
  list(APPEND allowed_folders ${folder})
  list(JOIN allowed_folders ", " layers)
  file(GLOB_RECURSE files RELATIVE ${ROOT}
    ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.hpp ${ROOT}/${folder}/*.inc
    ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.cc)
  foreach(file IN LISTS files)
    # Whatever brings in another file counts, in any spelling; what is not plainly allowed is not.
    file(STRINGS "${ROOT}/${file}" directives REGEX "^[ \t]*(#|%:)[ \t]*(include|import)|^[ \t]*import[ \t<\"]")
    foreach(directive IN LISTS directives)
      if(directive MATCHES "^#include <([^<>;]+)>${remark}$")
        set(header ${CMAKE_MATCH_1})
        if(header IN_LIST standard_headers)
          continue()
        endif()
        string(REGEX MATCH "^[^/]+" first "${header}")
        if(LIBRARIES AND NOT header MATCHES "\\.\\." AND NOT IS_DIRECTORY "${ROOT}/${first}")
          continue()
        endif()
      elseif(directive MATCHES "^#include \"([^/\";]+)/([^\";]+)\"${remark}$")
        set(path ${CMAKE_MATCH_2})
        if(CMAKE_MATCH_1 IN_LIST allowed_folders AND NOT path MATCHES "\\.\\.")
          continue()
        endif()
      endif()
      list(APPEND violations "${file}: ${directive}")
    endforeach()
  endforeach()
  if(violations)
    list(JOIN violations "\n  " lines)
    if(LIBRARIES)
      set(outside "headers of libraries in <>")
    else()
      set(outside "the standard library's headers in <>")
    endif()
    message(FATAL_ERROR "${folder}/ includes what it must not know:\n  ${lines}\n"
      "It may include ${outside} and \"folder/Header.h\" of: ${layers}.")
  endif()
endforeach()

if(STAMP)
  file(TOUCH "${STAMP}")
endif()
