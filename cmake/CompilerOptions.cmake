# topolib_compile_options(<target>): the language level, the warnings and the instrumentation that
# every target of ours is built with. Whoever uses the libraries gets the language level only.
function(topolib_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  if(TOPOLIB_UNITY_BUILD)
    # Most of what a source costs is its headers and the templates that it shares with its neighbours.
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()

  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion
      -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast)
  endif()
  if(TOPOLIB_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()

  if(TOPOLIB_SANITIZE)
    set(sanitize -fsanitize=${TOPOLIB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(${target} PRIVATE ${sanitize})
    target_link_options(${target} PRIVATE ${sanitize})
  endif()

  if(TOPOLIB_COVERAGE)
    # Several threads count at once, hence the atomic update.
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  else()
    # No path of the machine that builds gets into a binary; messages name files from the root, also where a compiler
    # cache has made the paths relative. The coverage data, though, is found by its full path.
    file(RELATIVE_PATH root ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
    string(REGEX REPLACE "/$" "" root ${root})
    target_compile_options(${target} PRIVATE
      -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${root}/=)
  endif()
endfunction()
