#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the build into a folder of its own, builds the example against that package by CMake and by
# pkg-config, and runs it on a made folder.
set -euo pipefail
source_dir=$1
build_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if ! cmake -N -LA "$build_dir" 2>/dev/null | grep -q '^SORVIK_SANITIZE:STRING=$'; then
  echo "left out: an instrumented library needs instrumented hosts"
  exit 0
fi

cmake --install "$build_dir" --prefix "$work/prefix" > "$work/install.log"
mkdir -p "$work/folder"
touch "$work/folder/one.mov" "$work/folder/two.txt"
expected=$(printf 'com.halvane.Merisk.WinProviderDirectory\n  one.mov\n  two.txt')

check() {
  local output
  output=$("$@" "$work/folder")
  [ "$output" = "$expected" ] || { echo "unexpected output of $*:"; echo "$output"; exit 1; }
}

cmake -S "$source_dir/examples/poll-loop" -B "$work/build" -G Ninja \
    -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/cmake.log"
cmake --build "$work/build" >> "$work/cmake.log"
check "$work/build/poll-loop"

# The .pc file names the configured prefix, so the check goes through --define-prefix.
pc_dir=$(dirname "$(find "$work/prefix" -name SorvikProvider.pc)")
lib_dir=$(dirname "$(find "$work/prefix" -name libSorvikProvider.so)")
flags=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --define-prefix --cflags SorvikProvider)
libs=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --define-prefix --libs SorvikProvider)
# shellcheck disable=SC2086
c++ -std=c++20 $flags -I"$work/prefix/include" "$source_dir/examples/poll-loop/main.cpp" $libs \
    -L"$lib_dir" -Wl,-rpath,"$lib_dir" -o "$work/by-pkg-config"
check "$work/by-pkg-config"

if [ -x "$work/prefix/bin/sorvik" ]; then
  "$work/prefix/bin/sorvik" ls "$work/folder" | grep -q one.mov
fi
readelf -d "$lib_dir/libSorvikProvider.so" | grep -q 'SONAME.*libSorvikProvider.so\.[0-9]'
# Nothing but the library's own names leaves it.
foreign=$(nm -DC --defined-only "$lib_dir/libSorvikProvider.so" | awk '{print $2, $3, $4, $5, $6}' |
    grep -E '^[TDB] ' | grep -vE 'Sorvik|Hestra|tarnwick|halvane|Fenwold|bitplate' || true)
[ -z "$foreign" ] || { echo "symbols that should be hidden:"; echo "$foreign"; exit 1; }
echo "the installed package works"
