# A project outside the tree finds the installed package with CMake, builds against it, and runs.
cmake_minimum_required(VERSION 3.25)

set(consumer ${WORK_DIR}/consumer-cmake)
file(REMOVE_RECURSE ${consumer})
file(COPY ${SOURCE_DIR}/tests/consumer/ DESTINATION ${consumer})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${consumer} -B ${consumer}/build -G Ninja
    -D CMAKE_PREFIX_PATH=${WORK_DIR}/moved -D CMAKE_CXX_COMPILER=${CXX}
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${consumer}/build COMMAND_ERROR_IS_FATAL ANY)
foreach(program IN ITEMS use_topolib use_topolibvlan use_mox)
  execute_process(COMMAND ${consumer}/build/${program} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
