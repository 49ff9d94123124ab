#!/usr/bin/env bash
# The binary interface of the libraries: what programs that are linked with them rely on.
#
#   abi.sh check BUILD_FOLDER     compares a build of the preset abi with the record in packaging/abi
#   abi.sh record BUILD_FOLDER    makes it the record
#
# Recorded are the exported functions and variables, and the types in them as far as public headers define them; no path
# and no line number, so that every clone makes the same record with the same compiler.
set -euo pipefail
verb=$1
build=$(readlink -f "$2")
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
records=$PWD/packaging/abi
work=$build/abi
libraries=(libMox libTopoLib libTopoLibVlan)
version=$(sed -n 's/^project(TopoLib VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

# suppress_inline <library>: what inline functions and variables of headers are called. Each program has its own, and
# whether the library exports them as well depends on the optimization.
suppress_inline() {
  local names kind
  names=$(nm --dynamic --defined-only --format=posix "$1" | awk '$2 == "u" || $2 == "W" { print $1 }' | paste -s -d '|')
  for kind in function variable; do
    printf '[suppress_%s]\nsymbol_name_regexp = ^(%s)$\ndrop = yes\n' "$kind" "$names"
  done
}

# read_libraries: leaves the interface of each library in the work folder.
read_libraries() {
  local library
  rm -rf "$work"
  cmake --install "$build" --component Development --prefix "$work/installed" >/dev/null
  for library in "${libraries[@]}"; do
    suppress_inline "$build/lib/$library.so" >"$work/$library.inline"
    abidw --headers-dir "$work/installed/include" --drop-private-types --drop-undefined-syms --exported-interfaces-only \
      --suppressions "$work/$library.inline" --no-corpus-path --no-comp-dir-path --no-show-locs \
      "$build/lib/$library.so" | sed "s| path='[^']*/Unity/| path='|" >"$work/$library.abi"
  done
}

record() {
  local library
  read_libraries
  rm -f "$records"/*.abi.xz
  for library in "${libraries[@]}"; do
    xz -9 --extreme --stdout "$work/$library.abi" >"$records/$library-$version.abi.xz"
  done
  echo "the binary interface of $version is recorded in packaging/abi"
}

# compare <library>: prints how it differs from its record.
compare() {
  local recorded result=0
  recorded=$(find "$records" -name "$1-*.abi.xz")
  if [[ -z $recorded ]]; then
    echo "$1 has no record"
    return 1
  fi
  xz --decompress --stdout "$recorded" >"$work/$1.recorded.abi"
  abidiff --harmless --no-show-locs "$work/$1.recorded.abi" "$work/$1.abi" >"$work/$1.differences" || result=$?
  if ((result == 0)); then return; fi

  # The status is a sum: 1 and 2 for a failure of abidiff, 4 for a difference, 8 for one that breaks programs.
  if ((result & 3)); then
    echo "$1 cannot be compared:"
  elif ((result & 8)); then
    echo "$1: programs that are linked with $(basename "$recorded" .abi.xz) may break:"
  else
    echo "$1 differs from $(basename "$recorded" .abi.xz):"
  fi
  cat "$work/$1.differences"
  return 1
}

check() {
  local library result=0
  read_libraries
  for library in "${libraries[@]}"; do compare "$library" || result=1; done
  if ((result)); then
    echo "What breaks programs needs another major version, or is to be undone. What is right, additions as well, is to be"
    echo "recorded: ./dev abi record"
    return 1
  fi
  echo "the binary interface is the recorded one"
}

case $verb in
  check | record) "$verb" ;;
  *)
    sed -n '2,/^set/{/^#/p}' "${BASH_SOURCE[0]}" >&2
    exit 2
    ;;
esac
