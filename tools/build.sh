# SPDX-License-Identifier: MIT
# What the commands at the top share: the packages of cmake/packages.txt, and builds that cost
# nothing where nothing has changed. Everything it says goes to stderr.

# need_packages SET...: installs what is missing of these sets, by name.
need_packages() {
  local wanted=() missing=() root=() name set
  while read -r name set; do
    case "$name" in '' | '#'*) continue ;; esac
    case " $* " in *" $set "*) wanted+=("$name") ;; esac
  done < cmake/packages.txt
  # One question for all; a package that dpkg has never heard of is missing in its answer.
  local installed
  installed=" $(dpkg-query -W -f='${db:Status-Status}=${Package} ' "${wanted[@]}" 2> /dev/null || true)"
  for name in "${wanted[@]}"; do
    case "$installed" in *" installed=$name "*) ;; *) missing+=("$name") ;; esac
  done
  [ ${#missing[@]} -ne 0 ] || return 0
  if [ "$(id -u)" -ne 0 ]; then root=(sudo); fi
  echo "installing ${missing[*]}" >&2
  # The package lists of a fresh machine are empty or old: then they are fetched, and it is tried anew.
  local install=("${root[@]}" env DEBIAN_FRONTEND=noninteractive
    apt-get -qq -y -o DPkg::Lock::Timeout=300 --no-install-recommends install "${missing[@]}")
  "${install[@]}" >&2 2> /dev/null < /dev/null ||
    { "${root[@]}" apt-get -qq update >&2 < /dev/null && "${install[@]}" >&2 < /dev/null; } ||
    { echo "these packages are needed and could not be installed: ${missing[*]}" >&2; return 1; }
}

# configured PRESET [CMAKE_ARGUMENT...]: configures build/PRESET unless it is there already.
configured() {
  local preset=$1 cache=build/$1/CMakeCache.txt
  shift
  # A build tree that was copied or moved along with the sources is of no use.
  if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
    rm -rf "build/$preset"
  fi
  [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" "$@" >&2
}

# built PRESET [TARGET...]: brings targets up to date; says something only where there is work.
built() {
  local preset=$1 log
  shift
  local ninja=(ninja -C "build/$preset")
  if [ -t 2 ] || [ -n "${CI:-}" ]; then
    "${ninja[@]}" -n "$@" 2> /dev/null | grep -q 'no work to do' || "${ninja[@]}" "$@" >&2
  elif ! log=$("${ninja[@]}" "$@" 2>&1); then
    printf '%s\n' "$log" | grep -v '^\[[0-9]*/[0-9]*\] [BLC]' >&2
    return 1
  fi
}
