#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# JsonSchemas.sh SOURCE_DIR BUILD_DIR: the JSON of each command matches its schema in docs/schema, and
# each schema belongs to a command.
set -euo pipefail
source_dir=$1
sorvik=$2/sorvik
python3 -c 'import jsonschema' 2> /dev/null || {
  echo "skipped: python3-jsonschema is not installed"
  exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
card=$work/CARD
bash "$source_dir/tools/make-sample-card" "$card"
touch "$work/$(printf 'latin-\xe4.mov')"
sound=$card/CONTENTS/AUDIO/0001AB00.MXF

# save SCHEMA ARGUMENT...: appends the documents that the command prints.
save() {
  local schema=$1
  shift
  "$sorvik" "$@" >> "$work/$schema.out" 2> /dev/null || true
}
save ls ls "$card" --json
save ls ls "$work" --json --all
save ls ls --json
save ls "$work" --json
save entry entry "$card" 0003ED --json
save places places "$work" --json
save who who "$card" --json
save files files "$card" --json
save owner owner "$sound" "$card/CONTENTS/CLIP/0001AB.XML" --ndjson
save meta meta "$card/CONTENTS/CLIP/0001AB.XML" --json
save meta meta "$card/CONTENTS/CLIP/0001AB.XML" --json --sources
save thumb thumb "$card" 0001AB -o "$work/clip.png" --json
save sheet sheet "$card" -o "$work/sheet.html" --json
save cards cards "$work" --json
save catalog catalog "$work" "$work/missing"
save join join "$card" --json
save join join "$card" 0003ED --json
save providers providers --json
save fields fields --json
save check check "$card" --json
rm "$sound"
save catalog catalog "$work"
save check check "$work" --json --files
save check check "$card" --json --quick
save error ls "$work/missing" --json
save error ls --json --bogus
save error entry "$card" bogus --json
save error join "$card" bogus --json
save error owner "$card/LASTCLIP.TXT" "$work" --ndjson
save error meta "$sound" "$sound" --ndjson

python3 - "$source_dir/docs/schema" "$work" << 'PYTHON'
import json, pathlib, sys
import jsonschema
schemas, work = map(pathlib.Path, sys.argv[1:])
failed = False
for file in sorted(schemas.glob("*.json")):
    schema = json.loads(file.read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    output = work / (file.stem + ".out")
    lines = output.read_text().splitlines() if output.exists() else []
    if not lines:
        print(f"{file.name}: no output to compare with")
        failed = True
    for line in lines:
        for error in validator.iter_errors(json.loads(line)):
            print(f"{file.name}: {error.message[:300]}")
            failed = True
    # A schema that accepts other documents would test nothing.
    if validator.is_valid({"bogus": 1}) or validator.is_valid([{"bogus": 1}]):
        print(f"{file.name}: accepts any document")
        failed = True
for output in work.glob("*.out"):
    if not (schemas / (output.stem + ".json")).exists():
        print(f"{output.stem}: no schema")
        failed = True
sys.exit(failed)
PYTHON
