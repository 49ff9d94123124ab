# The libraries export our namespaces and nothing else; of the detail namespaces only what
# exported-details.txt lists with a reason.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/installed-libraries.cmake)

# Everything that may stand before a mangled nested name, then our namespaces.
set(kind "(GV|GR|T[VTISCHW]|Thn?[0-9]+_|Tv[0-9]+_n?[0-9]+_)?Z?N[VK]*[RO]?")
set(ours "(3Mox|7Kestrel|5Quill|8Bridging|9Interface|8Topology7Library)")
set(nested "(8Topology|4Inst|4Vlan)*")

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/exported-details.txt allowed REGEX "^[A-Za-z]")
list(TRANSFORM allowed REPLACE " .*" "")

function(is_allowed_detail demangled result)
  foreach(name IN LISTS allowed)
    string(FIND "${demangled}" "${name}" position)
    if(NOT position EQUAL -1)
      set(${result} TRUE PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${result} FALSE PARENT_SCOPE)
endfunction()

function(list_symbols library demangle result)
  execute_process(COMMAND ${NM} --dynamic --defined-only --no-sort --format=posix ${demangle} ${library}
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  # Array types and lambdas would confuse the splitting into a list.
  string(REGEX REPLACE "[][;]" "_" output "${output}")
  string(REGEX MATCHALL "[^\n]+" lines "${output}")
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

foreach(library IN LISTS libraries)
  list_symbols(${library} --no-demangle mangled_symbols)
  list_symbols(${library} --demangle demangled_symbols)
  if(NOT mangled_symbols)
    message(SEND_ERROR "${library}: exports nothing at all")
  endif()
  foreach(mangled demangled IN ZIP_LISTS mangled_symbols demangled_symbols)
    if(NOT mangled MATCHES "^_Z${kind}${ours}")
      message(SEND_ERROR "${library}: not of our namespaces: ${demangled}")
    elseif(mangled MATCHES "^_Z${kind}${ours}${nested}12_GLOBAL__N_1")
      message(SEND_ERROR "${library}: of an anonymous namespace: ${demangled}")
    elseif(mangled MATCHES "^_Z${kind}${ours}${nested}6detail")
      is_allowed_detail("${demangled}" is_allowed)
      if(NOT is_allowed)
        message(SEND_ERROR "${library}: of a detail namespace, without a reason in "
          "exported-details.txt: ${demangled}")
      endif()
    endif()
  endforeach()
endforeach()
