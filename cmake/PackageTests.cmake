# Tests of the installed package: each uses a scratch installation that the first one makes.
find_package(PkgConfig REQUIRED)

function(topolib_add_package_test name)
  add_test(NAME package.${name} COMMAND ${CMAKE_COMMAND}
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D BUILD_DIR=${PROJECT_BINARY_DIR}
    -D WORK_DIR=${PROJECT_BINARY_DIR}/package
    -D LIBDIR=${CMAKE_INSTALL_LIBDIR}
    -D CXX=${CMAKE_CXX_COMPILER}
    -D NM=${CMAKE_NM}
    -D READELF=${CMAKE_READELF}
    -D PKG_CONFIG=${PKG_CONFIG_EXECUTABLE}
    -P ${PROJECT_SOURCE_DIR}/tests/cmake/package-${name}.cmake)
  set_tests_properties(package.${name} PROPERTIES LABELS package TIMEOUT 300 ${ARGN})
endfunction()

topolib_add_package_test(install FIXTURES_SETUP package)
foreach(name IN ITEMS cmake pkgconfig exports needed paths)
  topolib_add_package_test(${name} FIXTURES_REQUIRED package)
endforeach()
