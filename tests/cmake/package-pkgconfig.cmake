# A plain compiler call with what pkg-config says about the installed package builds the consumers.
cmake_minimum_required(VERSION 3.25)

set(ENV{PKG_CONFIG_PATH} ${WORK_DIR}/moved/${LIBDIR}/pkgconfig)
set(ENV{LD_LIBRARY_PATH} ${WORK_DIR}/moved/${LIBDIR})
set(consumer ${WORK_DIR}/consumer-pkgconfig)
file(MAKE_DIRECTORY ${consumer})

function(build_and_run source package)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${package}
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  execute_process(COMMAND ${CXX} -std=c++20 ${SOURCE_DIR}/tests/consumer/${source}.cpp
      -o ${consumer}/${source} ${flags}
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${consumer}/${source} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

build_and_run(UseTopoLib topolib)
build_and_run(UseTopoLibVlan topolibvlan)
build_and_run(UseMox mox)
