#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Times "sorvik catalog" with 1 and 16 jobs over a share on which each request takes 5 ms.
#   bench/slowcatalogue.sh BUILD_DIR [CARDS]
# Needs FUSE and the right to mount.
set -euo pipefail
[ $# -ge 1 ] || { echo "usage: $0 BUILD_DIR [CARDS]" >&2; exit 2; }
build_dir=$(cd "$1" && pwd)
cards=${2:-32}
source_dir=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'fusermount3 -u "$work/share" 2> /dev/null || umount "$work/share" || true; rm -rf "$work"' EXIT
mkdir "$work/share" "$work/server"
bash "$source_dir/tools/make-sample-card" "$work/card"
for ((i = 0; i < cards; ++i)); do cp -a "$work/card" "$work/server/CARD$i"; done
export SORVIK_READ_AHEAD=0
SORVIK_TEST_SHARE_DELAY=5000 "$build_dir/sorvik-test-share" "$work/server" "$work/share" sshfs \
    > "$work/mounted" &
for _ in {1..100}; do [ -s "$work/mounted" ] && break; sleep 0.1; done

# Prints the seconds of a run.
seconds() {
  local start
  start=$(date +%s.%N)
  "$build_dir/sorvik" catalog "$work/share" --jobs "$1" -o "$work/$1.ndjson" || [ $? -eq 1 ]
  echo "$start $(date +%s.%N)" | awk '{ print $2 - $1 }'
}
one=$(seconds 1)
sixteen=$(seconds 16)
cmp "$work/1.ndjson" "$work/16.ndjson"
awk -v one="$one" -v sixteen="$sixteen" -v cards="$cards" \
    'BEGIN { printf "%d cards: 1 job %.1f s, 16 jobs %.1f s, ratio %.1f\n", cards, one, sixteen, one / sixteen }'
