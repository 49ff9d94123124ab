# Finishes the staged packages, before CPack puts each into a file: compresses what policy wants compressed, finds the
# packages that each depends on, and gives every file the time of the sources, so that the same sources make the same
# packages.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(staged ${CPACK_TEMPORARY_DIRECTORY}/${component})
  file(GLOB plain ${staged}/usr/share/man/man*/*.[1-9] ${staged}/usr/share/doc/*/changelog*)
  execute_process(COMMAND gzip -9 --no-name ${plain} COMMAND_ERROR_IS_FATAL ANY)

  file(GLOB binaries ${staged}/usr/bin/* ${staged}/usr/lib/*/*.so.*.*)
  if(binaries)
    # dpkg-shlibdeps wants to see the files of a package that is being made.
    file(WRITE ${CPACK_TOPLEVEL_DIRECTORY}/debian/control "")
    file(MAKE_DIRECTORY ${staged}/DEBIAN)
    execute_process(COMMAND dpkg-shlibdeps -O -l${CPACK_TOPOLIB_LIBRARIES} -L${CPACK_TOPOLIB_SHLIBS} ${binaries}
      WORKING_DIRECTORY ${CPACK_TOPLEVEL_DIRECTORY}
      OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${staged}/DEBIAN)
    string(TOUPPER ${component} key)
    string(REPLACE "shlibs:Depends=" "" CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}")
  endif()

  if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find ${staged} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
