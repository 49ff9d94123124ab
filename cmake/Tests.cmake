# One GoogleTest program per folder of tests/ that mirrors a folder of the tree, and the tests of
# what is installed.
find_package(GTest)
if(NOT GTest_FOUND)
  # Who only installs the libraries needs no test framework. Who runs the tests is told.
  add_test(NAME GoogleTest-is-not-installed COMMAND ${CMAKE_COMMAND} -E false)
  return()
endif()

# What the test programs share: main() and the helpers of tests/support.
file(GLOB support_sources CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(test_support STATIC ${support_sources})
topolib_compile_options(test_support)
target_link_libraries(test_support PUBLIC TopoLib::Mox GTest::gtest)

# topolib_test_part(<target> <optimization> [<library>...]): what everything that holds tests has in common.
function(topolib_test_part target optimization)
  topolib_compile_options(${target})
  target_compile_options(${target} PRIVATE ${optimization})
  if(TOPOLIB_SANITIZE MATCHES "undefined")
    # What UBSan asks before each access takes half of the time that a test compiles. The libraries are asked.
    target_compile_options(${target} PRIVATE -fno-sanitize=null,alignment,object-size,vptr)
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_BATCH_SIZE 12)
  target_link_libraries(${target} PRIVATE test_support ${ARGN})
endfunction()

# topolib_test_program(<program> SOURCES <source>... [LINK <library>...]): the program of these sources. Tests are
# compiled far more often than they run, and so without optimization, but for the suites that play by the thousand.
function(topolib_test_program program)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  set(long_suites ${arg_SOURCES})
  list(FILTER long_suites INCLUDE REGEX "/[A-Za-z]*(Random|Model|Matrix|Slice|Memory|Cost)Test\\.cpp$")
  list(REMOVE_ITEM arg_SOURCES ${long_suites})
  add_executable(${program} ${arg_SOURCES})
  topolib_test_part(${program} -O0 ${arg_LINK})
  if(long_suites)
    add_library(${program}_long OBJECT ${long_suites})
    topolib_test_part(${program}_long -O1 ${arg_LINK})
    target_link_libraries(${program} PRIVATE ${program}_long)
  endif()
  if(TOPOLIB_SANITIZE)
    # What the sanitizers note about each access holds addresses: one that may be loaded anywhere relocates them at each start.
    target_link_options(${program} PRIVATE -no-pie)
  endif()
endfunction()

# topolib_add_tests(<program> <folder> [PROCESSES <n>] [SUFFIX <suffix>] [ENVIRONMENT <variable=value>...]): the tests of
# the program for CTest. So many processes (8) share them, since a process takes longer to start than most tests; each
# leaves in the folder gtest the report of what it ran.
function(topolib_add_tests program folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "SUFFIX;PROCESSES" "ENVIRONMENT")
  set(processes 8)
  if(arg_PROCESSES)
    set(processes ${arg_PROCESSES})
  endif()
  foreach(index RANGE 1 ${processes})
    set(name ${folder}.${index}of${processes}${arg_SUFFIX})
    string(REPLACE / _ report ${name})
    math(EXPR shard "${index} - 1")
    add_test(NAME ${name} COMMAND ${program}
      --gtest_brief=1 --gtest_output=xml:${PROJECT_BINARY_DIR}/gtest/${report}.xml)
    set_tests_properties(${name} PROPERTIES LABELS ${folder} TIMEOUT 1200
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${processes};GTEST_SHARD_INDEX=${shard};${arg_ENVIRONMENT}")
  endforeach()
endfunction()

# topolib_add_test_folder(<folder> <library> [PROCESSES <n>]): the tests of a folder, linked with the library that they
# test. Each program runs under two hash seeds: what depends on the order of a hash shows. With sanitizers the longest
# suites run under one.
function(topolib_add_test_folder folder library)
  file(GLOB sources CONFIGURE_DEPENDS tests/${folder}/*Test.cpp)
  string(REPLACE / _ program ${folder}_test)
  topolib_test_program(${program} SOURCES ${sources} LINK TopoLib::${library})
  if(TOPOLIB_COVERAGE)
    target_sources(${program} PRIVATE tests/coverage/DumpOnAbort.cpp)
  endif()
  topolib_add_tests(${program} ${folder} ${ARGN})
  set(second_seed TOPOLIB_TEST_HASH_SEED=2654435769)
  if(TOPOLIB_SANITIZE)
    list(APPEND second_seed GTEST_FILTER=-*Model*:*Matrix*:*Slice*:*MapRandom*)
  endif()
  topolib_add_tests(${program} ${folder} ${ARGN} SUFFIX .seed2 ENVIRONMENT ${second_seed})
endfunction()

topolib_add_test_folder(mox Mox)
foreach(folder IN ITEMS mox/threads kestrel quill bridging interface)
  topolib_add_test_folder(${folder} Mox PROCESSES 1)
endforeach()
topolib_add_test_folder(topolib TopoLib)
topolib_add_test_folder(topolib/vlan TopoLibVlan)

# The tests of the program run it as a process. The scenarios of examples/ end with expectations.
if(TOPOLIB_BUILD_PROGRAM)
  file(GLOB program_tests CONFIGURE_DEPENDS tests/topo/*Test.cpp)
  topolib_test_program(topo_test SOURCES ${program_tests} LINK topo_parts GTest::gmock nlohmann_json::nlohmann_json)
  add_dependencies(topo_test topo)
  topolib_add_tests(topo_test topo ENVIRONMENT TOPO_PROGRAM=$<TARGET_FILE:topo>)

  add_test(NAME packaging.completion
    COMMAND bash ${PROJECT_SOURCE_DIR}/tests/packaging/completion.sh $<TARGET_FILE:topo>)
  set_tests_properties(packaging.completion PROPERTIES LABELS package TIMEOUT 60)

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

include(cmake/GdbTests.cmake)
if(TOPOLIB_TEST_PACKAGE)
  include(cmake/PackageTests.cmake)
endif()
