#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# CatalogueRecipes.sh SOURCE_DIR BUILD_DIR: runs the recipes of docs/catalogue.md as they are written. All ways
# to divide the work, one that was killed in the middle included, give the lines of a single run.
set -euo pipefail
source_dir=$(cd "$1" && pwd)
build_dir=$(cd "$2" && pwd)
for tool in parallel sqlite3; do
  command -v $tool > /dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export PATH=$build_dir:$PATH HOME=$work ARCHIVE=$work/archive
mkdir -p "$HOME/.parallel"
touch "$HOME/.parallel/will-cite"
cd "$work"
bash "$source_dir/tools/make-sample-card" card
for i in {1..20}; do mkdir -p "archive/day$((i % 3))" && cp -a card "archive/day$((i % 3))/CARD $i"; done
rm "archive/day1/CARD 4/CONTENTS/VIDEO/0001AB.MXF" # an incomplete card
fail() { echo "FAIL: $*"; exit 1; }

# Prints the recipe of that name.
recipe() {
  awk -v mark="<!-- recipe: $1 -->" '$0 == mark { found = 1 } /^```$/ { if (inside) exit }
    inside { print } found && /^```sh$/ { inside = 1 }' "$source_dir/docs/catalogue.md" | grep . ||
    fail "no recipe $1"
}
# The sorted lines without "end", which each shard has.
lines() { cat "$@" | grep -v '^{"type":"end"' | LC_ALL=C sort; }

status=0
sorvik catalog "$ARCHIVE" -o single.ndjson || status=$?
[ $status -eq 1 ] || fail "exit status $status of an archive with an incomplete card"
lines single.ndjson > expected
[ "$(grep -c '^{"type":"card"' expected)" -eq 20 ] || fail "cards are missing"

# Killed in the middle, and repeated.
recipe parallel > parallel.sh
setsid bash parallel.sh > /dev/null 2>&1 &
group=$!
for _ in {1..200}; do [ "$(find out -name '*.ndjson' 2> /dev/null | wc -l)" -ge 5 ] && break; sleep 0.05; done
kill -KILL -- "-$group" 2> /dev/null || true
wait $group 2> /dev/null || true
killed_after=$(find out -name '*.ndjson' | wc -l)
[ "$killed_after" -lt 20 ] || echo "note: the run ended before it was killed"
bash parallel.sh > /dev/null 2>&1 || fail "the repeated run fails"
lines out/*.ndjson | cmp - expected || fail "the lines of parallel differ (killed after $killed_after)"
before=$(ls -l --time-style=full-iso out)
bash parallel.sh > /dev/null 2>&1
[ "$(ls -l --time-style=full-iso out)" = "$before" ] || fail "a finished run does the work again"

recipe shards > shards.sh
bash shards.sh
lines shard1.ndjson shard2.ndjson | cmp - expected || fail "the lines of the shards differ"

recipe sqlite-lines > lines.sh
[ "$(bash lines.sh | awk -F '\t' '{ sum += $2 } END { print NR, sum }')" = "20 60" ] ||
  fail "SQLite reads other clips from the lines"

recipe sqlite > sqlite.sh
bash sqlite.sh > answers
grep -q '^Sample|2026-05-14|60|' answers || fail "clips by camera and day: $(cat answers)"
grep -q '/day1/CARD 4/CONTENTS/VIDEO/0001AB.MXF$' answers || fail "the missing file is not found"

# A catalogue of an interrupted run makes the next one shorter, and the result is the same.
head -c 30000 single.ndjson > old.ndjson.part
sorvik catalog "$ARCHIVE" --since old.ndjson.part -o new.ndjson || [ $? -eq 1 ]
cmp new.ndjson single.ndjson || fail "a resumed catalogue differs"
