# What GDB shows with the printers of tools/gdb, of a program made for it: the tests gdb.printers and gdb.garbage. Not
# under the instrumentation, which has nothing to find in a program that only stands still.
find_program(TOPOLIB_GDB gdb)
if(NOT TOPOLIB_GDB)
  message(STATUS "Without gdb its printers are not tested")
  return()
endif()
if(TOPOLIB_SANITIZE OR TOPOLIB_COVERAGE)
  return()
endif()

add_executable(gdb_sample tests/gdb/Sample.cpp)
topolib_compile_options(gdb_sample)
target_link_libraries(gdb_sample PRIVATE TopoLib::TopoLibVlan)
# All that the printers read of a type, wherever the libraries have less: compilers leave a class with virtual functions
# to the source that defines them.
target_compile_options(gdb_sample PRIVATE -O0 -g2
  $<IF:$<CXX_COMPILER_ID:GNU>,-femit-class-debug-always,-fstandalone-debug>)

foreach(stem IN ITEMS printers garbage)
  add_test(NAME gdb.${stem} COMMAND ${CMAKE_COMMAND}
    -D GDB=${TOPOLIB_GDB}
    -D SCRIPT=${PROJECT_SOURCE_DIR}/tests/gdb/${stem}.py
    -D PROGRAM=$<TARGET_FILE:gdb_sample>
    -D WORK_DIR=${PROJECT_BINARY_DIR}/gdb
    -P ${PROJECT_SOURCE_DIR}/tests/cmake/gdb.cmake)
  set_tests_properties(gdb.${stem} PROPERTIES
    LABELS gdb TIMEOUT 300 SKIP_REGULAR_EXPRESSION "GDB cannot start programs here")
endforeach()
