# Installs the build to the scratch prefix that the other package tests use.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# The package must not depend on where it was installed to.
file(RENAME ${WORK_DIR}/prefix ${WORK_DIR}/moved)
