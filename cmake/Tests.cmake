# One GoogleTest program per folder of tests/ that mirrors a folder of the tree, and the tests of
# what is installed.
find_package(GTest REQUIRED)
include(GoogleTest)

# What the test programs share: main() and the helpers of tests/support.
file(GLOB support_sources CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(test_support STATIC ${support_sources})
topolib_compile_options(test_support)
target_link_libraries(test_support PUBLIC TopoLib::Mox GTest::gtest)

# topolib_test_program(<program>): what the test programs have in common.
function(topolib_test_program program)
  topolib_compile_options(${program})
  target_link_libraries(${program} PRIVATE test_support)
  if(TOPOLIB_SANITIZE)
    # What the sanitizers note about each access holds addresses: one that may be loaded anywhere relocates them at each start.
    target_link_options(${program} PRIVATE -no-pie)
  endif()
endfunction()

# topolib_add_tests(<program> <folder> [SUFFIX <suffix>] [ENVIRONMENT <variable=value>...]): a test of CTest for each test
# of the program. With sanitizers, where a process takes a tenth of a second to start and to end, some processes share the
# tests, and each leaves in the folder gtest the report of what it ran.
function(topolib_add_tests program folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "SUFFIX" "ENVIRONMENT")
  if(NOT TOPOLIB_SANITIZE)
    gtest_discover_tests(${program} TEST_PREFIX ${folder}. TEST_SUFFIX "${arg_SUFFIX}"
      DISCOVERY_MODE PRE_TEST
      PROPERTIES LABELS ${folder} TIMEOUT 300 ENVIRONMENT "${arg_ENVIRONMENT}")
    return()
  endif()
  set(processes 8)
  foreach(index RANGE 1 ${processes})
    set(name ${folder}.${index}of${processes}${arg_SUFFIX})
    string(REPLACE / _ report ${name})
    math(EXPR shard "${index} - 1")
    add_test(NAME ${name} COMMAND ${program} --gtest_output=xml:${PROJECT_BINARY_DIR}/gtest/${report}.xml)
    set_tests_properties(${name} PROPERTIES LABELS ${folder} TIMEOUT 1200
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${processes};GTEST_SHARD_INDEX=${shard};${arg_ENVIRONMENT}")
  endforeach()
endfunction()

# topolib_add_test_folder(<folder> <library>): the tests of a folder, linked with the library that they test.
# Each program runs under two hash seeds: what depends on the order of a hash shows. With sanitizers the longest
# suites run under one.
function(topolib_add_test_folder folder library)
  file(GLOB sources CONFIGURE_DEPENDS tests/${folder}/*Test.cpp)
  string(REPLACE / _ program ${folder}_test)
  add_executable(${program} ${sources})
  topolib_test_program(${program})
  target_link_libraries(${program} PRIVATE TopoLib::${library})
  if(TOPOLIB_COVERAGE)
    target_sources(${program} PRIVATE tests/coverage/DumpOnAbort.cpp)
  endif()
  topolib_add_tests(${program} ${folder})
  set(second_seed TOPOLIB_TEST_HASH_SEED=2654435769)
  if(TOPOLIB_SANITIZE)
    list(APPEND second_seed GTEST_FILTER=-*Model*:*Matrix*:*Slice*)
  endif()
  topolib_add_tests(${program} ${folder} SUFFIX .seed2 ENVIRONMENT ${second_seed})
endfunction()

foreach(folder IN ITEMS mox mox/threads kestrel quill bridging interface)
  topolib_add_test_folder(${folder} Mox)
endforeach()
topolib_add_test_folder(topolib TopoLib)
topolib_add_test_folder(topolib/vlan TopoLibVlan)

# The tests of the program run it as a process. The scenarios of examples/ end with expectations.
if(TOPOLIB_BUILD_PROGRAM)
  file(GLOB program_tests CONFIGURE_DEPENDS tests/topo/*Test.cpp)
  add_executable(topo_test ${program_tests})
  topolib_test_program(topo_test)
  # With sanitizers GCC takes parts of std::regex for uninitialised.
  target_compile_options(topo_test PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_libraries(topo_test PRIVATE topo_parts GTest::gmock nlohmann_json::nlohmann_json)
  add_dependencies(topo_test topo)
  topolib_add_tests(topo_test topo ENVIRONMENT TOPO_PROGRAM=$<TARGET_FILE:topo>)

  file(GLOB scenarios CONFIGURE_DEPENDS examples/*.topo)
  foreach(scenario IN LISTS scenarios)
    cmake_path(GET scenario STEM stem)
    add_test(NAME scenario.${stem} COMMAND topo run ${scenario})
    set_tests_properties(scenario.${stem} PROPERTIES LABELS examples TIMEOUT 300)
  endforeach()
  add_test(NAME scenario.real-bridge COMMAND ${CMAKE_COMMAND}
    -D TOPO=$<TARGET_FILE:topo>
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D WORK_DIR=${PROJECT_BINARY_DIR}/examples
    -P ${PROJECT_SOURCE_DIR}/tests/cmake/real-bridge.cmake)
  set_tests_properties(scenario.real-bridge PROPERTIES LABELS examples TIMEOUT 300)
endif()

# The README shows a program and its output: both are the files that are built and tested.
if(EXISTS ${PROJECT_SOURCE_DIR}/README.md)
  add_test(NAME readme.listing COMMAND ${CMAKE_COMMAND}
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR} -P ${PROJECT_SOURCE_DIR}/tests/cmake/readme.cmake)
endif()

if(TOPOLIB_TEST_PACKAGE)
  include(cmake/PackageTests.cmake)
endif()
