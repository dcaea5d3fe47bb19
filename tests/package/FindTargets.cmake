# examples/source and examples/core, built as someone else's projects over the installed package.
include(${CMAKE_CURRENT_LIST_DIR}/Support.cmake)

file(REMOVE_RECURSE ${SCRATCH})
foreach(example source core)
  file(COPY ${SOURCE}/examples/${example}/ DESTINATION ${SCRATCH}/${example})
  must_run(${CMAKE_COMMAND} -S ${SCRATCH}/${example} -B ${SCRATCH}/${example}-build
           -G "${GENERATOR}" -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}"
           "-DCMAKE_PREFIX_PATH=${PREFIX}")
  must_run(${CMAKE_COMMAND} --build ${SCRATCH}/${example}-build)
endforeach()
execute_process(COMMAND ${SCRATCH}/source-build/source ${PROGRAM} x "x + 1"
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0 OR NOT output STREQUAL "x + 1 = 16843010\n")
  message(FATAL_ERROR "examples/source ended with ${status} and printed: ${output}")
endif()

execute_process(COMMAND ${SCRATCH}/core-build/example_core ${PROGRAM} x
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 1 OR NOT output MATCHES "not a core dump|no core dump")
  message(FATAL_ERROR "examples/core ended with ${status} and printed: ${output}")
endif()
