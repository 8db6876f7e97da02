# What ./demo, ./check and .ci/run share. Sourced; `root` is the top of the tree.

say() { printf '== %s\n' "$*"; }
die() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

jobs=$(nproc)
if command -v ccache >/dev/null; then
  # The same sources in another clone are the same objects.
  export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    return 1
  fi
}

# Installs the packages of packages.txt that are missing; touches apt only when some are.
need_packages() {
  local missing=() package
  while read -r package; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done < <(grep -v '^#' "$root/packaging/packages.txt")
  [ ${#missing[@]} -gt 0 ] || return 0
  say "installing ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive sh -c \
    'apt-get update -qq && apt-get install -y -qq --no-install-recommends "$@"' sh "${missing[@]}" ||
    die "these packages are missing and could not be installed: ${missing[*]}"
}

# need_space DIRECTORY MEGABYTES
need_space() {
  mkdir -p "$1" 2>/dev/null || die "cannot make the directory $1"
  local free
  free=$(df -Pm "$1" | awk 'NR == 2 { print $4 }')
  [ "$free" -ge "$2" ] || die "$1 has $free MB free and $2 MB are needed: make room on that disk"
}

# build PRESET [TARGET...]; everything unless targets are named.
build() {
  local preset=$1
  shift
  need_space "$root/build" 1500
  say "configuring and building ($preset)"
  (cd "$root" && cmake --preset "$preset" >"build/$preset.configure.log" 2>&1) ||
    { tail -n 20 "$root/build/$preset.configure.log" >&2; die "cmake could not configure the tree"; }
  (cd "$root" && cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}) ||
    die "the build failed: see above"
}

# run_tests PRESET: ctest's summary is the last output, its result the function's.
run_tests() {
  say "testing ($1)"
  (cd "$root" && ctest --preset "$1" -j "$((jobs * 2))")
}
