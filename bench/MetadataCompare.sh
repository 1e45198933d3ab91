#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Compares this library with exiftool, if installed, on 1,000 XMP files and 1,000 photographs, and counts
# the system calls of one pass (including one stat per file by the benchmark).
#   bench/MetadataCompare.sh build/release/MetadataBench
set -euo pipefail
bench=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SORVIK_BENCH_FILES=$work

"$bench" --benchmark_filter=ThousandFiles
for kind in xmp jpg; do
  if command -v exiftool > /dev/null; then
    begin=$(date +%s%N)
    exiftool -fast2 -q "$work/$kind" > /dev/null
    end=$(date +%s%N)
    awk -v k="$kind" -v n=$((end - begin)) \
        'BEGIN { printf "%s: exiftool -fast2 %.0f files/s\n", k, 1000 / (n / 1e9) }'
  fi
  if command -v strace > /dev/null; then
    filter=ThousandFiles/$([ "$kind" = xmp ] && echo 0 || echo 1)
    for passes in 1 2; do
      strace -f -qq -o "$work/trace$passes" -e trace=openat,read,pread64,fstat,newfstatat,statx,getdents64 \
          "$bench" --benchmark_filter="$filter" --benchmark_min_time=0 \
          $([ $passes = 2 ] && echo --benchmark_repetitions=2) > /dev/null 2>&1
    done
    for call in openat pread64 read fstat newfstatat statx getdents64; do
      few=$(grep -c " $call(" "$work/trace1" || true)
      many=$(grep -c " $call(" "$work/trace2" || true)
      printf '%s: %s %d\n' "$kind" "$call" $((many - few))
    done | grep -v ' 0$' || true
  fi
done
