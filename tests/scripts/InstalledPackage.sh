#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the build to a temporary prefix, builds the examples with this package by CMake and one by
# pkg-config, and runs them on a folder. The example for Qt is built if Qt is installed.
set -euo pipefail
source_dir=$1
build_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# grep reads all input here and below (no -q), so that its predecessor in a pipe doesn't get SIGPIPE.
if ! grep '^SORVIK_SANITIZE:STRING=$' "$build_dir/CMakeCache.txt" > /dev/null; then
  echo "skipped: an instrumented library needs instrumented hosts"
  exit 77
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

cmake -S "$source_dir/examples" -B "$work/build" -G Ninja \
    -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/cmake.log"
cmake --build "$work/build" >> "$work/cmake.log"
for example in poll-loop glib-loop asio-loop c-poll-loop; do check "$work/build/$example"; done
if [ -x "$work/build/qt-loop" ]; then check "$work/build/qt-loop"; else echo "qt-loop: Qt not found"; fi

# The .pc file locates headers and library in any prefix.
pc_dir=$(dirname "$(find "$work/prefix" -name SorvikProvider.pc)")
lib_dir=$(dirname "$(find "$work/prefix" -name libSorvikProvider.so)")
flags=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --cflags SorvikProvider)
libs=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --libs SorvikProvider)
# shellcheck disable=SC2086
c++ -std=c++20 $flags -I "$source_dir/examples" "$source_dir/examples/poll-loop/main.cpp" $libs \
    -Wl,-rpath,"$lib_dir" -o "$work/by-pkg-config"
check "$work/by-pkg-config"

# A card on which only the index relates the proxy to the clip.
card=$work/CARD
mkdir -p "$card"/{Clip,Sub,Edit,General}
printf '<NonRealTimeMeta><Duration value="10"/></NonRealTimeMeta>' > "$card/Clip/C0001M01.XML"
touch "$card/Clip/C0001.MXF" "$card/Sub/proxy.MP4" "$card/DISCMETA.XML"
printf '%s' '<MediaProfile><Contents><Material uri="./Clip/C0001.MXF"><Proxy uri="./Sub/proxy.MP4"/>' \
    '</Material></Contents></MediaProfile>' > "$card/MEDIAPRO.XML"
sorvik=$work/prefix/bin/sorvik
"$sorvik" ls "$work/folder" | grep one.mov > /dev/null
"$sorvik" files "$card" | grep proxy.MP4 > /dev/null || { echo "the index wasn't read"; exit 1; }
# A host may load the library by a link in another folder.
mkdir "$work/links"
ln -s "$lib_dir"/libSorvikProvider.so.[0-9] "$work/links/"
LD_LIBRARY_PATH=$work/links "$sorvik" files "$card" | grep proxy.MP4 > /dev/null ||
  { echo "the index wasn't read by a library loaded by a link"; exit 1; }
# Without the module that reads indexes, the listing must fail instead of omitting the proxy.
rm -r "$lib_dir/SorvikProvider"
status=0
"$sorvik" files "$card" > "$work/files" 2> "$work/error" || status=$?
if [ "$status" != 1 ] || [ -s "$work/files" ] || [ "$(wc -l < "$work/error")" != 1 ]; then
  echo "a missing module isn't reported ($status)"
  cat "$work/files" "$work/error"
  exit 1
fi
if readelf -d "$lib_dir/libSorvikProvider.so" | grep NEEDED | grep xerces > /dev/null; then
  echo "the library links Xerces-C directly"
  exit 1
fi
readelf -d "$lib_dir/libSorvikProvider.so" | grep 'SONAME.*libSorvikProvider.so\.[0-9]' > /dev/null
# The library exports only its own symbols.
others=$(nm -DC --defined-only "$lib_dir/libSorvikProvider.so" | awk '{print $2, $3, $4, $5, $6}' |
    grep -E '^[TDB] ' | grep -vE 'Sorvik|sorvik_|Hestra|tarnwick|halvane|Fenwold|bitplate' || true)
[ -z "$others" ] || { echo "exported symbols that should be hidden:"; echo "$others"; exit 1; }
echo "passed"
