# The CMake package TopoLib and the pkg-config files; the libraries and headers install themselves
# in topolib_add_library. Everything is found relative to where it lies, so the installed tree can
# be moved.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TopoLib)
install(EXPORT TopoLib
  NAMESPACE TopoLib:: FILE TopoLibTargets.cmake DESTINATION ${package_folder}
  COMPONENT Development)
configure_package_config_file(cmake/TopoLibConfig.cmake.in ${PROJECT_BINARY_DIR}/TopoLibConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TopoLibConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/TopoLibConfig.cmake ${PROJECT_BINARY_DIR}/TopoLibConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT Development)

set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix /prefix/${pkgconfig_folder} /prefix)
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix "${pkgconfig_to_prefix}")
foreach(name IN ITEMS mox topolib topolibvlan)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${pkgconfig_folder} COMPONENT Development)
endforeach()
