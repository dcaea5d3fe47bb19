# Installs the library's component, moves the installed tree, and looks at what is there.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH} "${PREFIX}")
must_run(${CMAKE_COMMAND} --install ${BUILD} --component resolver --prefix ${SCRATCH})
file(RENAME ${SCRATCH} "${PREFIX}")

file(GLOB_RECURSE headers RELATIVE "${PREFIX}/include" "${PREFIX}/include/*")
set(expected
  stringresolver/host/DataLableType.h
  stringresolver/host/ParrentInterface.h
  stringresolver/host/SharedList.h
  stringresolver/model/AreaBlock.h
  stringresolver/model/RelationCode.h
  stringresolver/resolver/StringParametersResolving.h)
if(NOT headers STREQUAL expected)
  message(FATAL_ERROR "installed headers: ${headers}")
endif()
file(GLOB_RECURSE commands "${PREFIX}/bin/*")
if(commands)
  message(FATAL_ERROR "the library's component brings commands: ${commands}")
endif()

# Whoever only embeds the resolver has no elfutils, and no use for where it was built.
file(GLOB_RECURSE texts "${PREFIX}/*.cmake" "${PREFIX}/*.pc")
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  if(content MATCHES "libdw|libelf|elfutils|-ldw|-lelf")
    message(FATAL_ERROR "${text} asks for elfutils")
  endif()
  foreach(place ${SOURCE} ${SCRATCH})
    string(FIND "${content}" "${place}" at)
    if(NOT at EQUAL -1)
      message(FATAL_ERROR "${text} names ${place}")
    endif()
  endforeach()
endforeach()
