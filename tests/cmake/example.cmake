# Runs PROGRAM and compares its standard output, byte for byte, with the file EXPECTED.
cmake_minimum_required(VERSION 3.25)

cmake_path(GET ACTUAL PARENT_PATH folder)
file(MAKE_DIRECTORY ${folder})
execute_process(COMMAND ${PROGRAM} OUTPUT_FILE ${ACTUAL} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${result}")
endif()
execute_process(COMMAND diff -u ${EXPECTED} ${ACTUAL} RESULT_VARIABLE different)
if(different)
  message(FATAL_ERROR "${PROGRAM} does not print ${EXPECTED}")
endif()
