# The Debian packages: one for each library, the development files, the program. packaging/package.sh makes them.

# topolib_package(<component> <package> <section> <description>...): the package of an install component. The first line
# of the description is its synopsis.
macro(topolib_package component package section)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  string(JOIN "\n" CPACK_DEBIAN_${key}_DESCRIPTION ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  install(FILES packaging/changelog DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component}
    RENAME changelog.Debian)
endmacro()

# topolib_library_package(<library> <description>...): the package of a shared library, named after its SONAME. Whoever
# is linked with the library depends on the version that it was linked with, or a later one.
set(shlibs_of_all ${PROJECT_BINARY_DIR}/packaging/shlibs.local)
file(WRITE ${shlibs_of_all} "")
macro(topolib_library_package library)
  string(TOLOWER lib${library}${PROJECT_VERSION_MAJOR} package)
  topolib_package(${library} ${package} libs ${ARGN})
  set(shlibs "lib${library} ${PROJECT_VERSION_MAJOR} ${package} (>= ${PROJECT_VERSION})\n")
  file(APPEND ${shlibs_of_all} ${shlibs})
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/packaging/${package}/shlibs CONTENT ${shlibs} @ONLY)
  set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/packaging/${package}/shlibs ${PROJECT_SOURCE_DIR}/packaging/triggers)
  list(APPEND libraries "${package} (= ${package_version})")
endmacro()

# topolib_install_document(<file> <folder>): installs a document, its links changed to where things are installed.
function(topolib_install_document file folder)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  cmake_path(GET file FILENAME name)
  file(READ ${file} text)
  string(REPLACE "](../examples" "](examples" text "${text}")
  string(REPLACE "](../" "](${CMAKE_INSTALL_FULL_INCLUDEDIR}/TopoLib/" text "${text}")
  file(WRITE ${PROJECT_BINARY_DIR}/packaging/${name} "${text}")
  install(FILES ${PROJECT_BINARY_DIR}/packaging/${name} DESTINATION ${folder} COMPONENT Runtime)
endfunction()

# The newest entry of the changelog is of this version, and knows which package of it this is.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/changelog)
file(STRINGS packaging/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^topolib \\((${PROJECT_VERSION}-([0-9]+))\\) ")
  message(FATAL_ERROR "packaging/changelog does not begin with version ${PROJECT_VERSION}: ${newest}")
endif()
set(package_version ${CMAKE_MATCH_1})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})

set(about
  "TopoLib keeps the topologies (spanning tree instances) and VLANs of a network"
  "switch in step with its configuration and status: which port is active in"
  "which topology, and which port forwards or blocks which VLAN."
  ".")
topolib_library_package(Mox
  "framework of the topology library" ${about}
  "This package holds the framework: entities with attributes, collections,"
  "notification, the clock and the activity loop, and the types of the inputs.")
topolib_library_package(TopoLib
  "topology library for Ethernet bridging" ${about}
  "This package holds the library.")
topolib_library_package(TopoLibVlan
  "topology library for Ethernet bridging, by VLAN" ${about}
  "This package holds the view of the same state by VLAN.")
topolib_package(Development libtopolib-dev libdevel
  "topology library for Ethernet bridging, development files" ${about}
  "This package holds what a program is built with: the headers, and the files"
  "for CMake and pkg-config.")
list(JOIN libraries ", " CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS)
topolib_package(Runtime topo net
  "command line agent of the topology library" ${about}
  "topo takes a configuration in a small language, or a captured Linux bridge,"
  "and shows which port forwards which VLAN, and why the others do not.")

set(documents ${CMAKE_INSTALL_DATADIR}/doc/topo)
foreach(name IN ITEMS tour language agents)
  topolib_install_document(${PROJECT_SOURCE_DIR}/docs/${name}.md ${documents})
endforeach()
install(DIRECTORY examples DESTINATION ${documents} COMPONENT Runtime FILES_MATCHING PATTERN *.topo PATTERN *_agent.cpp)
install(DIRECTORY tests/topo/captures/kernel6.12-early/ DESTINATION ${documents}/examples/real-bridge/capture
  COMPONENT Runtime)
install(FILES packaging/topo.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  COMPONENT Runtime RENAME topo)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGE_CONTACT "TopoLib maintainers <maintainers@topolib.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE topolib)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# What is staged is finished by a script of ours, which also finds out what it depends on: the search that CPack has
# knows neither the packages of the same build nor triggers.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/finish.cmake)
set(CPACK_TOPOLIB_SHLIBS ${shlibs_of_all})
set(CPACK_TOPOLIB_LIBRARIES ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
include(CPack)
