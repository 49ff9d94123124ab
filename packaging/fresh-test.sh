#!/usr/bin/env bash
# Tries the packages as their users do, in a Debian that has none of them yet: installs them, builds and runs what needs
# them, purges them, and sees that nothing is left. As root, on a system that may be thrown away:
#
#   fresh-test.sh FOLDER_WITH_DEBS
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
debs=("$(readlink -f "$1")"/*.deb)
consumer=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../tests/consumer
log=$(mktemp)
scratch=$(mktemp -d)
trap 'rm -rf "$log" "$scratch"' EXIT
cp "$consumer"/* "$scratch"
cd "$scratch"

say() { echo "== $*"; }

fail() {
  echo "fresh-test: $*" >&2
  exit 1
}

# quietly <command>...: shows what it wrote only if it fails.
quietly() {
  "$@" >"$log" 2>&1 || {
    cat "$log"
    fail "failed: $*"
  }
}

packages=()
files=()
for deb in "${debs[@]}"; do
  packages+=("$(dpkg-deb --field "$deb" Package)")
  while IFS= read -r file; do
    file=/${file#./}
    # What is there already belongs to others, as /usr does.
    if [[ ! -e $file && ! -L $file ]]; then files+=("$file"); fi
  done < <(dpkg-deb --fsys-tarfile "$deb" | tar -t)
done
((${#files[@]} > 0)) || fail "the packages are installed already"

say "installing ${packages[*]}"
quietly apt-get -q update
quietly apt-get -qy --no-install-recommends install "${debs[@]}"
for file in "${files[@]}"; do
  [[ -e $file ]] || fail "not installed, or a link to nothing: $file"
done

say "running topo and its examples"
documents=/usr/share/doc/topo
topo --version
for scenario in "$documents"/examples/*.topo; do quietly topo run "$scenario"; done
topo import linux "$documents/examples/real-bridge/capture" --bridge br0 >bridge.topo
quietly topo run bridge.topo "$documents/examples/real-bridge/changes.topo"
topo run "$documents/examples/campus.topo" | tail -n 3
quietly bash -c "source /usr/share/bash-completion/completions/topo && complete -p topo"

while IFS= read -r link; do
  (cd "$documents" && [[ -e $link ]]) || fail "a link in the documentation to what is not there: $link"
done < <(grep -ohE '\]\([^]):#]+' "$documents"/*.md | cut -c 3- | sort -u)

say "building against the headers, with CMake and with pkg-config"
quietly apt-get -qy --no-install-recommends install g++ cmake make pkg-config man-db
quietly cmake -S . -B build
quietly cmake --build build
for program in use_mox use_topolib use_topolibvlan; do quietly "build/$program"; done

# with_pkgconfig <package> <source>: builds and runs one program.
with_pkgconfig() {
  local flags
  read -r -a flags < <(pkg-config --cflags --libs "$1")
  quietly g++ -std=c++20 "$2" -o program "${flags[@]}"
  quietly ./program
}
with_pkgconfig mox UseMox.cpp
with_pkgconfig topolib UseTopoLib.cpp
with_pkgconfig topolibvlan UseTopoLibVlan.cpp
with_pkgconfig topolibvlan "$documents/examples/minimal_agent.cpp"
cat "$log"
quietly man --where topo
cat "$log"

say "purging"
quietly apt-get -qy purge "${packages[@]}"
left=()
for file in "${files[@]}"; do
  # A folder may by now belong to a package that was installed after ours.
  if [[ ! -e $file && ! -L $file ]] || { [[ -d $file ]] && dpkg-query --search "${file%/}" >/dev/null 2>&1; }; then continue; fi
  left+=("$file")
done
((${#left[@]} == 0)) || fail "left behind: ${left[*]}"
if ldconfig -p | grep -E 'lib(Mox|TopoLib)'; then fail "the linker still knows the libraries"; fi
echo "nothing is left of ${#files[@]} files and folders"
