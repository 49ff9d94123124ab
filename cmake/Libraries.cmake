include(${CMAKE_CURRENT_LIST_DIR}/ExportMap.cmake)

# One list for all libraries: a public template of one namespace that another library instantiates
# is the same in the whole process.
set(TOPOLIB_EXPORT_MAP ${PROJECT_BINARY_DIR}/exports.map)
topolib_write_export_map(${TOPOLIB_EXPORT_MAP}
  Mox Kestrel Quill Bridging Interface Topology::Library)

# topolib_add_library(<name> FOLDERS <folder>... [LINK <library>...]): the shared library lib<name>
# of all sources of these folders and their detail folders, alias TopoLib::<name>. The library itself
# is the install component <name>; its headers, and the link that the linker follows, are Development.
function(topolib_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;LINK")
  set(patterns "")
  foreach(folder IN LISTS arg_FOLDERS)
    list(APPEND patterns ${folder}/*.cpp ${folder}/detail/*.cpp)
  endforeach()
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})

  add_library(${name} SHARED ${sources})
  add_library(TopoLib::${name} ALIAS ${name})
  topolib_compile_options(${name})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/TopoLib>)
  target_link_libraries(${name} PUBLIC ${arg_LINK})

  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    BUILD_WITH_INSTALL_RPATH ON
    LINK_DEPENDS ${TOPOLIB_EXPORT_MAP})
  target_link_options(${name} PRIVATE
    -Wl,--version-script=${TOPOLIB_EXPORT_MAP} -Wl,--no-undefined
    # Types, modules and log call sites are registered by address, so the library stays once it is loaded.
    -Wl,-z,nodelete)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Nobody replaces our functions from outside, so calls among them may be inlined, as Clang does.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  endif()
  if(TOPOLIB_COVERAGE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/coverage/DumpOnAbort.cpp)
  endif()

  install(TARGETS ${name} EXPORT TopoLib
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${name} NAMELINK_COMPONENT Development)
  foreach(folder IN LISTS arg_FOLDERS)
    foreach(part IN ITEMS ${folder} ${folder}/detail)
      file(GLOB headers CONFIGURE_DEPENDS ${part}/*.h)
      install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TopoLib/${part} COMPONENT Development)
    endforeach()
  endforeach()
endfunction()
