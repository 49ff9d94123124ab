# The fuzz targets: bin/scenario-fuzz and bin/import-fuzz, for Clang, whose libFuzzer drives them.
#
#   cmake -B build/fuzz -D CMAKE_CXX_COMPILER=clang++ -D CMAKE_BUILD_TYPE=RelWithDebInfo -D TOPOLIB_FUZZ=ON
#   cmake --build build/fuzz --target scenario-fuzz import-fuzz
#   build/fuzz/bin/scenario-fuzz -max_total_time=600 NEW_INPUTS tests/fuzz/corpus-scenario
#
# What a target is linked with has to be instrumented as well: the sources are compiled once more.
option(TOPOLIB_FUZZ "Build the fuzz targets" OFF)
if(NOT TOPOLIB_FUZZ)
  return()
endif()
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "TOPOLIB_FUZZ needs Clang: -D CMAKE_CXX_COMPILER=clang++")
endif()
find_package(nlohmann_json REQUIRED)

file(GLOB_RECURSE fuzz_sources CONFIGURE_DEPENDS
  mox/*.cpp kestrel/*.cpp quill/*.cpp bridging/*.cpp interface/*.cpp topolib/*.cpp)
file(GLOB fuzz_program_sources CONFIGURE_DEPENDS topo/*.cpp)
list(FILTER fuzz_program_sources EXCLUDE REGEX "/topo/(main|Shell[A-Za-z]*)\\.cpp$")

add_library(fuzz_parts OBJECT EXCLUDE_FROM_ALL ${fuzz_sources} ${fuzz_program_sources})
topolib_compile_options(fuzz_parts)
target_include_directories(fuzz_parts PUBLIC ${PROJECT_SOURCE_DIR})
target_compile_options(fuzz_parts PUBLIC -fsanitize=fuzzer-no-link,address -fno-omit-frame-pointer)
target_link_libraries(fuzz_parts PUBLIC nlohmann_json::nlohmann_json)

foreach(subject IN ITEMS Scenario Import)
  string(TOLOWER ${subject}-fuzz target)
  add_executable(${target} EXCLUDE_FROM_ALL tests/fuzz/${subject}Fuzz.cpp)
  topolib_compile_options(${target})
  target_link_libraries(${target} PRIVATE fuzz_parts)
  target_link_options(${target} PRIVATE -fsanitize=fuzzer,address)
endforeach()
