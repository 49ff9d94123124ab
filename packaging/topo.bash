# Completion of the command line of topo, for bash.

_topo() {
  local program=$1 typed=$2 before=$3 words="" options="--help" paths=()
  case $COMP_CWORD:${COMP_WORDS[1]}:$before in
    *:--bridge | *:=) return ;;
    1:*)
      words="run shell import help"
      options="--help --version"
      ;;
    *:run:--trace | *:shell:--trace)
      words="TopoLib= TopoLibVlan="
      compopt -o nospace
      ;;
    *:run:* | *:shell:*)
      options="--json --trace --real-time --help"
      paths=(-d -fX'!*.topo')
      ;;
    2:import:*) words="linux" ;;
    *:import:*)
      options="--bridge --help"
      paths=(-d)
      ;;
    # The program lists its commands, then an empty line and what else there is to say.
    2:help:*) words=$("$program" help 2>/dev/null | sed '/^$/,$d; s/ .*//') ;;
  esac

  if [[ $typed == -* ]]; then
    words=$options
    paths=()
  fi
  mapfile -t COMPREPLY < <(
    compgen -W "$words" -- "$typed"
    for path in "${paths[@]}"; do compgen "$path" -- "$typed"; done
  )
  if ((${#paths[@]})); then compopt -o filenames; fi
}
complete -F _topo topo
