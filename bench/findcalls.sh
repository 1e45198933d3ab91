#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Compares the system calls of "sorvik cards" with those of "find -type d" over the same folder.
#   bench/findcalls.sh SORVIK FOLDER
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 SORVIK FOLDER" >&2; exit 2; }
command -v strace > /dev/null || { echo "$0: strace is missing" >&2; exit 1; }
counts=$(mktemp)
trap 'rm -f "$counts"' EXIT

# Prints the number of system calls of a command. A folder without cards is no failure here.
count_calls() {
  strace -f -c -o "$counts" "$@" > /dev/null 2>&1 || true
  awk '/total$/ { print $4 }' "$counts"
}

cards=$(count_calls "$1" cards "$2")
walk=$(count_calls find "$2" -type d)
awk -v cards="$cards" -v walk="$walk" \
    'BEGIN { printf "sorvik cards %d, find %d, ratio %.2f\n", cards, walk, cards / walk }'
