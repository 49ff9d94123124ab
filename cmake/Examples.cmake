# Every source of examples/ is one program; if <stem>.expected stands beside it, a test compares
# what it prints.
file(GLOB examples CONFIGURE_DEPENDS examples/*.cpp)
file(GLOB expected_outputs CONFIGURE_DEPENDS examples/*.expected)
foreach(source IN LISTS examples)
  cmake_path(GET source STEM stem)
  set(program example_${stem})
  add_executable(${program} ${source})
  topolib_compile_options(${program})
  target_link_libraries(${program} PRIVATE TopoLib::TopoLibVlan)
  set_target_properties(${program} PROPERTIES OUTPUT_NAME ${stem})

  set(expected ${PROJECT_SOURCE_DIR}/examples/${stem}.expected)
  if(TOPOLIB_BUILD_TESTS AND expected IN_LIST expected_outputs)
    add_test(NAME example.${stem} COMMAND ${CMAKE_COMMAND}
      -D PROGRAM=$<TARGET_FILE:${program}>
      -D EXPECTED=${expected}
      -D ACTUAL=${PROJECT_BINARY_DIR}/examples/${stem}.actual
      -P ${PROJECT_SOURCE_DIR}/tests/cmake/example.cmake)
    set_tests_properties(example.${stem} PROPERTIES LABELS examples TIMEOUT 60)
  endif()
endforeach()
