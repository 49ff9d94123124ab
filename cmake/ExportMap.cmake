# topolib_write_export_map(<file> <namespace>...): writes a linker version script that exports the
# symbols of these namespaces and nothing else.
#
# Visibility alone is not enough: the standard library declares its templates visible, so each of
# their instantiations would become part of our binary interface. Conversely the script alone is
# not enough either: within our namespaces, only what is marked public is visible at all.
#
# The patterns are on mangled names, because the demangled name of a function template begins with
# its return type. N<length><name> begins a nested name; what may stand before it is listed here.
function(topolib_write_export_map file)
  set(kinds
    "_ZN"            # functions, variables
    "_ZN[KRO]"       # member functions that are const or have a reference qualifier
    "_ZNK[RO]"
    "_ZT[VTISCHW]N"  # vtable, VTT, type information, its name, construction vtable, thread-local
    "_ZThn[0-9]*_N"  # thunks for a second base
    "_ZThn[0-9]*_NK"
    "_ZTv0_n[0-9]*_N" # thunks for a virtual base
    "_ZTv0_n[0-9]*_NK"
    "_ZGVN"          # guards of variables
    "_ZZN"           # variables inside of functions, and their guards
    "_ZZNK"
    "_ZGVZN"
    "_ZGVZNK")
  set(content "{\n  global:\n")
  foreach(namespace IN LISTS ARGN)
    string(REPLACE "::" ";" parts "${namespace}")
    set(mangled "")
    foreach(part IN LISTS parts)
      string(LENGTH ${part} length)
      string(APPEND mangled ${length}${part})
    endforeach()
    string(APPEND content "    # ${namespace}\n")
    foreach(kind IN LISTS kinds)
      string(APPEND content "    ${kind}${mangled}*;\n")
    endforeach()
  endforeach()
  string(APPEND content "  local: *;\n};\n")
  file(CONFIGURE OUTPUT ${file} CONTENT "${content}" @ONLY)
endfunction()
