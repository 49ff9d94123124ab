# Imports a captured Linux bridge and plays the demonstration on it; its expectations must hold.
cmake_minimum_required(VERSION 3.25)

file(MAKE_DIRECTORY ${WORK_DIR})
set(bridge ${WORK_DIR}/bridge.topo)
execute_process(COMMAND ${TOPO} import linux ${SOURCE_DIR}/tests/topo/captures/kernel6.12-early --bridge br0
  OUTPUT_FILE ${bridge} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${TOPO} run ${bridge} ${SOURCE_DIR}/examples/real-bridge/changes.topo
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
