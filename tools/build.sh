# SPDX-License-Identifier: MIT
# Functions shared by ./browse, ./test and .ci/run: installing the packages of cmake/packages.txt,
# and incremental builds. All messages go to stderr; run from the top of the checkout.

# count NUMBER WORD: "1 package", "3 packages".
count() {
  printf '%s %s' "$1" "$2"
  [ "$1" -eq 1 ] || printf s
}

# need_packages SET...: installs the packages of these sets that are missing.
need_packages() {
  local wanted=() missing=() root=() name set installed
  # On other systems CMake reports what is missing.
  command -v dpkg-query > /dev/null || return 0
  while read -r name set; do
    case "$name" in '' | '#'*) continue ;; esac
    case " $* " in *" $set "*) wanted+=("$name") ;; esac
  done < cmake/packages.txt
  # One query for all packages; the answer omits those that dpkg doesn't know.
  installed=" $(dpkg-query -W -f='${db:Status-Status}=${Package} ' "${wanted[@]}" 2> /dev/null || true)"
  for name in "${wanted[@]}"; do
    case "$installed" in *" installed=$name "*) ;; *) missing+=("$name") ;; esac
  done
  [ ${#missing[@]} -ne 0 ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo > /dev/null || {
      echo "missing packages, which only root or sudo can install: ${missing[*]}" >&2
      return 1
    }
    root=(sudo)
  fi
  local log=build/packages.log
  local apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300)
  echo "installing $(count ${#missing[@]} package)" >&2
  mkdir -p build
  # The package lists of a new machine are empty or outdated: update them if the first try fails.
  { "${apt[@]}" --no-install-recommends install "${missing[@]}" ||
    { "${apt[@]}" update && "${apt[@]}" --no-install-recommends install "${missing[@]}"; }; } \
    > "$log" 2>&1 < /dev/null || {
    echo "could not install ${missing[*]} (see $PWD/$log)" >&2
    return 1
  }
}

# can_build PRESET: true if build/PRESET can be written or created.
can_build() {
  local folder=build/$1
  while [ ! -e "$folder" ]; do folder=$(dirname "$folder"); done
  [ -w "$folder" ]
}

# need_writable PRESET: fails with a message if build/PRESET can't be written.
need_writable() {
  can_build "$1" || {
    echo "cannot build: no permission to write $PWD/build" >&2
    return 1
  }
}

# configure PRESET [CMAKE_ARGUMENT...]: runs CMake; shows its output only on failure.
configure() {
  local log
  log=$(cmake --preset "$@" 2>&1) || {
    printf '%s\n' "$log" >&2
    return 1
  }
}

# configured PRESET [CMAKE_ARGUMENT...]: configures build/PRESET unless that has been done.
configured() {
  local cache=build/$1/CMakeCache.txt
  # A build tree that was copied or moved together with the sources is unusable.
  if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
    rm -rf "build/$1"
  fi
  [ -f "build/$1/build.ninja" ] || configure "$@"
}

# announce STEPS: prints that a build starts, with an estimate of its duration. A step took 1.5 s on
# a fast and 3 s on a busy processor.
announce() {
  local seconds_per_step=3 minutes
  minutes=$((($1 * seconds_per_step / $(nproc) + 30) / 60))
  if [ "$minutes" -eq 0 ]; then
    echo "building" >&2
  else
    echo "building (about $(count "$minutes" minute))" >&2
  fi
}

# follow_build: reads the output of ninja. Announces the build at its first step, counts the steps on
# a terminal, and prints all lines in CI; otherwise the lines that aren't steps go to the file $1.
# (A dry run can't tell the number of steps: it ends at the check for added source files.)
follow_build() {
  local messages=$1 announced=$2 line
  while IFS= read -r line; do
    if [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\ (Building|Linking|Copying|Compiling) ]]; then
      "$announced" || announce $((BASH_REMATCH[2] - BASH_REMATCH[1] + 1))
      announced=true
      [ ! -t 2 ] || printf '\r[%s/%s]\033[K' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" >&2
    else
      printf '%s\n' "$line" >> "$messages"
    fi
    [ -z "${CI:-}" ] || printf '%s\n' "$line" >&2
  done
  [ ! -t 2 ] || printf '\r\033[K' >&2
}

# built PRESET [TARGET...]: brings targets up to date; silent if there is nothing to do.
built() {
  local preset=$1 announced=false messages status
  shift
  local ninja=(ninja -C "build/$preset")
  if [ ! -e "build/$preset/.ninja_log" ]; then
    announce "$("${ninja[@]}" -t commands "$@" | wc -l)"
    announced=true
  fi
  messages=$(mktemp)
  "${ninja[@]}" "$@" 2>&1 | follow_build "$messages" "$announced" && status=0 || status=$?
  [ "$status" -eq 0 ] || [ -n "${CI:-}" ] || cat "$messages" >&2
  rm -f "$messages"
  return "$status"
}
