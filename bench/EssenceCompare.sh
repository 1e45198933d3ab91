#!/bin/bash
# SPDX-License-Identifier: MIT
# Compares this library with common tools on the same clips: 500 MXF files and 50 AVCHD streams.
#   bench/EssenceCompare.sh build/release/EssenceBench [FOLDER]
# FOLDER keeps the clips for the next run. Tools that aren't installed are skipped.
set -e
bench=$1
folder=${2:-$(mktemp -d)}
[ -n "$2" ] || trap 'rm -rf "$folder"' EXIT
make_clips() {  # one of each kind, then copies
  local source="-f lavfi -i testsrc2=s=1920x1080:r=25 -f lavfi -i sine=r=48000 -t 1"
  ffmpeg -v error $source -c:v mpeg2video -b:v 20M -g 12 -c:a pcm_s16le -timecode 01:02:03:04 \
      -y "$folder/mxf/000.mxf"
  ffmpeg -v error $source -c:v libx264 -preset ultrafast -b:v 20M -c:a ac3 -f mpegts \
      -mpegts_m2ts_mode 1 -y "$folder/mts/000.MTS"
  for i in $(seq -w 1 499); do cp "$folder/mxf/000.mxf" "$folder/mxf/$i.mxf"; done
  for i in $(seq -w 1 49); do cp "$folder/mts/000.MTS" "$folder/mts/0$i.MTS"; done
}
if [ ! -e "$folder/mts/000.MTS" ]; then
  mkdir -p "$folder/mxf" "$folder/mts"
  make_clips
fi
SORVIK_BENCH_CLIPS=$folder "$bench" --benchmark_counters_tabular=true
# Milliseconds per file; all files in one run if the tool supports that.
time_tool() {  # label, number of files, command...
  local label=$1 count=$2 begin end
  shift 2
  command -v "$1" > /dev/null || return 0
  begin=$(date +%s%N)
  "$@" > /dev/null 2>&1
  end=$(date +%s%N)
  awk -v l="$label" -v n=$((end - begin)) -v c="$count" 'BEGIN { printf "%-28s %8.3f ms per file\n", l, n / c / 1e6 }'
}
time_tool "MXF mediainfo" 500 mediainfo "$folder"/mxf/*.mxf
time_tool "MXF exiftool -fast2" 500 exiftool -fast2 "$folder/mxf"
time_tool "MXF exiftool" 500 exiftool "$folder/mxf"
each() { for file in "${@:2}"; do "$1" -v error -show_format -show_streams "$file"; done; }
command -v ffprobe > /dev/null && time_tool "MXF ffprobe (20, one by one)" 20 each ffprobe "$folder"/mxf/00*.mxf "$folder"/mxf/01*.mxf
time_tool "MTS mediainfo" 50 mediainfo "$folder"/mts/*.MTS
time_tool "MTS exiftool" 50 exiftool -ext MTS "$folder/mts"
command -v ffprobe > /dev/null && time_tool "MTS ffprobe (10, one by one)" 10 each ffprobe "$folder"/mts/00*.MTS
