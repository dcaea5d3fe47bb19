# examples/embedding, built as someone else's project with find_package.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
# A copy: nothing of the source tree around it can help.
file(COPY ${SOURCE}/examples/embedding/ DESTINATION ${SCRATCH}/source)
must_run(${CMAKE_COMMAND} -S ${SCRATCH}/source -B ${SCRATCH}/build -G "${GENERATOR}"
         -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_PREFIX_PATH=${PREFIX}")
# Not one that happens to be installed on this machine.
file(STRINGS ${SCRATCH}/build/CMakeCache.txt found REGEX "^StringResolver_DIR:")
string(FIND "${found}" "=${PREFIX}/" at)
if(at EQUAL -1)
  message(FATAL_ERROR "another package was found: ${found}")
endif()
must_run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
check_embedding(${SCRATCH}/build/embedding)
