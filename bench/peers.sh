#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Compares the listing of generated cards of 1,000 clips, with all files of each clip, with general tools
# on the same cards, including program start. Tools that aren't installed are skipped.
#   bench/peers.sh BUILD_FOLDER [CLIPS]
set -euo pipefail
build=$1
clips=${2:-1000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/ListingBench" make "$work/cards" "$clips"

# seconds COMMAND...: user plus system time, which depends least on the load of the machine
seconds() {
  local TIMEFORMAT='%U %S'
  { time "$@" > /dev/null 2>&1 || true; } 2>&1 | awk '{printf "%.2f", $1 + $2}'
}
have() { command -v "$1" > /dev/null; }

printf '%-14s %8s %12s %12s\n' structure sorvik exiftool mediainfo
for card in "$work"/cards/*/card; do
  name=$(basename "$(dirname "$card")")
  ours=$(seconds "$build/sorvik" ls "$card" --fields Name,Path,CreateDate,duration,ExtraPath --json)
  exif=- media=-
  have exiftool && exif=$(seconds exiftool -r -q -fast2 "$card")
  have mediainfo && media=$(seconds mediainfo "$card")
  printf '%-14s %8s %12s %12s\n' "$name" "$ours" "$exif" "$media"
done
