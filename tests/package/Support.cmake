# What the scripts of this folder share.
cmake_minimum_required(VERSION 3.25)

# must_run(<command> <argument>...): stops with everything the command printed when it fails.
function(must_run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    string(REPLACE "\n" "\n  " output "\n${output}")
    message(FATAL_ERROR "${command}\nended with ${status}:${output}")
  endif()
endfunction()

# check_embedding(<program>): runs the example of examples/embedding.
function(check_embedding program)
  execute_process(COMMAND ${program} counter "counter + 10" "table[2]" "selected->y"
                          "origin.x" "&origin" "sizeof(struct point)" "(int)0xFFFFFFFF" "orgin.x"
                  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(expected
"counter = -3, 4 bytes
counter + 10 = 7, 8 bytes
table[2] = 30, 4 bytes
selected->y = -8, 4 bytes
origin.x = 7, 4 bytes
&origin = 4116, 8 bytes
sizeof(struct point) = 8, 8 bytes
(int)0xFFFFFFFF = -1, 4 bytes
orgin.x = error: Undefined label orgin
")
  if(NOT status EQUAL 0 OR NOT output STREQUAL expected)
    # CMake prints indented lines as they are.
    string(REPLACE "\n" "\n  " output "\n${output}")
    string(REPLACE "\n" "\n  " expected "\n${expected}")
    message(FATAL_ERROR "${program} ended with ${status} and printed${output}\nnot${expected}")
  endif()
endfunction()
