# Sourced by the tests of the packages.
set -euo pipefail

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

# same WHAT EXPECTED GOT: texts of several lines
same() { diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") >&2 || fail "$1 (< expected, > found)"; }

free_port() {
  perl -MIO::Socket::INET -e \
    'print IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1")->sockport'
}

# offered COMPLETIONS PROGRAMS LINE: what completion answers at the line's end, one a line.
offered() {
  PATH=$2:$PATH bash --norc -c '
    compopt() { :; }
    timeout() { shift && "$@"; }  # a busy machine is no fault
    for file in "$1"/*; do . "$file"; done
    COMP_LINE=$2 COMP_POINT=${#2} COMPREPLY=()
    read -ra COMP_WORDS <<<"$2"
    [[ $2 != *" " ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    "_${COMP_WORDS[0]//-/_}"
    [[ ! ${COMPREPLY[*]} ]] || printf "%s\n" "${COMPREPLY[@]}"' - "$1" "$3" | sort -u
}

tmp=$(mktemp -d)
children=()
end_children() {
  local pid
  for pid in ${children[@]+"${children[@]}"}; do
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  children=()
}
trap 'end_children; rm -rf "$tmp"' EXIT
