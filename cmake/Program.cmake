# The topo program: bin/topo. Everything but main() is a library, which the tests link as well.
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBEDIT REQUIRED IMPORTED_TARGET libedit)

file(GLOB program_sources CONFIGURE_DEPENDS topo/*.cpp)
list(REMOVE_ITEM program_sources ${PROJECT_SOURCE_DIR}/topo/main.cpp)
add_library(topo_parts STATIC ${program_sources})
topolib_compile_options(topo_parts)
if(TOPOLIB_SANITIZE)
  # Most of it is JSON templates, which take minutes to instrument and to optimise as well.
  target_compile_options(topo_parts PRIVATE -O0)
endif()
target_link_libraries(topo_parts PUBLIC TopoLib::TopoLibVlan PRIVATE nlohmann_json::nlohmann_json PkgConfig::LIBEDIT)

add_executable(topo topo/main.cpp)
topolib_compile_options(topo)
target_link_libraries(topo PRIVATE topo_parts CLI11::CLI11)
# It reads a command line, once; what CLI11 instantiates for that is not worth the time to optimise it.
set_source_files_properties(topo/main.cpp PROPERTIES COMPILE_OPTIONS -O0)
target_compile_definitions(topo PRIVATE TOPO_VERSION="${PROJECT_VERSION}")
set_target_properties(topo PROPERTIES INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})
install(TARGETS topo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
install(FILES docs/topo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Runtime)
