# Has GDB play SCRIPT on PROGRAM, and compares what it leaves in WORK_DIR/<stem>.actual with <stem>.expected beside the
# script.
cmake_minimum_required(VERSION 3.25)

file(MAKE_DIRECTORY ${WORK_DIR})
cmake_path(GET SCRIPT STEM stem)
set(actual ${WORK_DIR}/${stem}.actual)
file(REMOVE ${actual})
set(ENV{PYTHONDONTWRITEBYTECODE} 1)
execute_process(
  COMMAND ${GDB} --nx --batch -iex "set auto-load no" -iex "set debuginfod enabled off" -x ${SCRIPT} ${PROGRAM}
  WORKING_DIRECTORY ${WORK_DIR} INPUT_FILE /dev/null RESULT_VARIABLE result)
if(NOT EXISTS ${actual})
  message(FATAL_ERROR "GDB ended with ${result}")
endif()
cmake_path(REPLACE_EXTENSION SCRIPT expected OUTPUT_VARIABLE expected)
execute_process(COMMAND diff -u ${expected} ${actual} RESULT_VARIABLE different)
if(different)
  message(FATAL_ERROR "GDB does not show ${expected}")
endif()
