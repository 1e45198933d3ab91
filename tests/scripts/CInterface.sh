#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# CInterface.sh SOURCE_DIR BUILD_DIR: the library exports the functions that the C header declares, with the
# versions of src/c/symbols.map, and no others.
set -euo pipefail
source_dir=$1
build_dir=$2
fail() { echo "FAIL: $*"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

tr '\n' ' ' < "$source_dir/include/SorvikProvider/c/sorvik.h" |
  grep -oE 'SORVIK_C_EXPORT [^;]*;' | grep -oE '\bsorvik_[a-z_]+\(' | tr -d '(' | sort > "$work/declared"
sed -n 's/^    \(sorvik_[a-z_]*\);$/\1/p' "$source_dir/src/c/symbols.map" | sort > "$work/listed"
awk '/^SORVIK_/ {version = $1} /^    sorvik_/ {sub(";", "", $1); print $1 "@@" version}' \
  "$source_dir/src/c/symbols.map" | sort > "$work/versioned"
nm -D --defined-only "$build_dir/libSorvikProvider.so" | awk '$2 == "T" && $3 ~ /^sorvik_/ {print $3}' |
  sort > "$work/exported"

[ "$(wc -l < "$work/declared")" -gt 60 ] || fail "functions of the header not found"
diff "$work/declared" "$work/listed" || fail "the header and symbols.map differ"
diff "$work/versioned" "$work/exported" || fail "symbols.map and the exported symbols differ"
