# The libraries need nothing but each other and the standard library, and carry the major version.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/installed-libraries.cmake)

set(allowed "^(lib(Mox|TopoLib|TopoLibVlan)\\.so\\.[0-9]+|libstdc\\+\\+\\.so\\.6|libm\\.so\\.6|\
libgcc_s\\.so\\.1|libc\\.so\\.6|ld-linux.*)$")

foreach(library IN LISTS libraries)
  execute_process(COMMAND ${READELF} --dynamic --wide ${library}
    OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)

  string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" entries "${dynamic}")
  foreach(entry IN LISTS entries)
    string(REGEX REPLACE ".*\\[(.*)\\].*" "\\1" needed "${entry}")
    if(NOT needed MATCHES "${allowed}")
      message(SEND_ERROR "${library} needs ${needed}")
    endif()
  endforeach()

  if(NOT dynamic MATCHES "\\(SONAME\\)[^\n]*\\[lib[A-Za-z]+\\.so\\.[0-9]+\\]")
    message(SEND_ERROR "${library} has no SONAME with the major version")
  endif()
endforeach()
