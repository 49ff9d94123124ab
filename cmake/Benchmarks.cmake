# One program that measures our structures and, in the same run, their peers.
find_package(benchmark REQUIRED)
find_package(Boost 1.81 REQUIRED)
find_package(absl REQUIRED)

file(GLOB sources CONFIGURE_DEPENDS bench/*.cpp)
if(sources)
  add_executable(topolib_bench ${sources})
  topolib_compile_options(topolib_bench)
  # What is measured must not be optimised together with its neighbours.
  set_target_properties(topolib_bench PROPERTIES UNITY_BUILD OFF)
  target_link_libraries(topolib_bench PRIVATE
    TopoLib::TopoLibVlan benchmark::benchmark Boost::headers absl::flat_hash_map)
endif()
