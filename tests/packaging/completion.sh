#!/usr/bin/env bash
# What Tab completes behind `topo`: completion.sh PROGRAM
set -euo pipefail
program=$(readlink -f "$1")
# shellcheck disable=SC1091
source "$(dirname "$(readlink -f "$0")")/../../packaging/topo.bash"

# Bash has it only while it completes.
compopt() { :; }

# completed <word>...: what stands for the last one, in order and in one line.
completed() {
  COMP_WORDS=("$program" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _topo "$program" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
  if ((${#COMPREPLY[@]})); then printf '%s\n' "${COMPREPLY[@]}" | sort | paste -s -d ' '; fi
}

failures=0
# expect <completions> <word>...: compares.
expect() {
  local wanted=$1 found
  shift
  found=$(completed "$@")
  if [[ $found != "$wanted" ]]; then
    echo "topo $* <Tab>: expected '$wanted', found '$found'"
    ((++failures))
  fi
}

# explained <word>...: the options, or behind them the subcommands, that the program's own help lists.
explained() {
  "$program" "$@" --help | grep -oE -- '^ +(-h, *)?--[a-z-]+' | grep -o -- '--.*' | sort | paste -s -d ' '
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir capture "more captures"
touch a.topo b.topo "b c.topo" notes.txt

subcommands=$("$program" --help | sed '1,/^Subcommands:\|^SUBCOMMANDS:/Id; s/^ *//; s/ .*//; /^$/d' | sort | paste -s -d ' ')
expect "$subcommands" ""
expect "run" r
expect "" nonsense
expect "$(explained)" -
expect "$(explained run)" run -
expect "$(explained shell)" shell -
expect "$(explained import linux)" import linux -
expect "--real-time" run a.topo --r

expect "a.topo b c.topo b.topo capture more captures" run ""
expect "a.topo b c.topo b.topo capture more captures" shell --json ""
expect "b c.topo b.topo" run a.topo b
expect "" run notes
expect "TopoLib= TopoLibVlan=" run --trace ""

expect "linux" import ""
expect "capture more captures" import linux ""
expect "capture" import linux --bridge br0 cap
expect "" import linux capture --bridge ""

commands=$("$program" help | awk 'NF == 0 { exit } { print $1 }' | sort | paste -s -d ' ')
expect "$commands" help ""
expect "echo expect explain" help e
expect "" help show ""

if ((failures)); then
  echo "$failures completions are wrong"
  exit 1
fi
echo "every completion is as expected"
