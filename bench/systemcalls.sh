#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# System calls of a listing per clip: the difference between 200 and 100 clips, divided by 100, so that the
# program start doesn't count. Needs strace.
#   bench/systemcalls.sh BUILD_FOLDER
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for clips in 100 200; do "$build/ListingBench" make "$work/$clips" $clips; done

# calls CARD FIELDS...: the number of file system calls of one listing
calls() {
  strace -f -qq -o "$work/trace" \
      -e trace=open,openat,read,pread64,stat,newfstatat,fstat,statx,lstat,access,readlink,getdents64 \
      "$build/sorvik" ls "$@" --json > /dev/null
  wc -l < "$work/trace"
}
opens() { grep -cE '(open|openat)\(' "$work/trace" || true; }

printf '%-14s %12s %12s %12s %12s\n' structure 'calls/clip' 'opens/clip' '+ExtraPath' 'opens/clip'
for card in "$work"/100/*; do
  name=$(basename "$card")
  row=()
  for fields in Name Name,ExtraPath; do
    few=$(calls "$work/100/$name/card" --fields $fields); few_opens=$(opens)
    many=$(calls "$work/200/$name/card" --fields $fields); many_opens=$(opens)
    row+=("$(((many - few) / 100)).$(printf '%02d' $(((many - few) % 100)))")
    row+=("$(((many_opens - few_opens) / 100)).$(printf '%02d' $(((many_opens - few_opens) % 100)))")
  done
  printf '%-14s %12s %12s %12s %12s\n' "$name" "${row[@]}"
done
