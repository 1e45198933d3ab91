# SPDX-License-Identifier: MIT
"""Writes the clips of all cards below a folder for pandas.read_csv: to_csv.py PATH OUT.csv"""

import csv
import sys

import sorvik

COLUMNS = ("card", "provider", "key", "name", "path", "startTimecode", "duration", "CreateDate")

with open(sys.argv[2], "w", newline="", encoding="utf-8") as output:
    table = csv.DictWriter(output, COLUMNS)
    table.writeheader()
    for clip in sorvik.scan(sys.argv[1]):
        if not isinstance(clip, sorvik.Clip):
            continue
        row: dict[str, object] = {name: clip.fields.raw(name) for name in COLUMNS[5:]}
        row |= {"card": clip.card.path, "provider": clip.card.provider.rsplit(".", 1)[-1]}
        row |= {"key": clip.key, "name": clip.name, "path": clip.path}
        table.writerow(row)
