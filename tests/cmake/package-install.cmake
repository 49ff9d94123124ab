# Installs the build to the scratch prefix that the other package tests use.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# The package must not depend on where it was installed to.
file(RENAME ${WORK_DIR}/prefix ${WORK_DIR}/moved)

# Each header is installed once, in the folder that it has in the sources.
set(include ${WORK_DIR}/moved/include/TopoLib)
file(GLOB_RECURSE installed LIST_DIRECTORIES FALSE RELATIVE ${include} ${include}/*)
set(headers "")
foreach(folder IN ITEMS mox kestrel quill bridging interface topolib)
  file(GLOB_RECURSE of_folder RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/${folder}/*.h)
  list(APPEND headers ${of_folder})
endforeach()
set(unexpected ${installed})
list(REMOVE_ITEM unexpected ${headers})
list(REMOVE_ITEM headers ${installed})
if(unexpected)
  message(SEND_ERROR "installed where no header of the sources lies: ${unexpected}")
endif()
if(headers)
  message(SEND_ERROR "not installed: ${headers}")
endif()
