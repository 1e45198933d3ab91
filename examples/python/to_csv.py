# SPDX-License-Identifier: MIT
"""Writes the clips of all cards below a folder for pandas.read_csv: to_csv.py PATH OUT.csv"""

import csv
import sys

import sorvik

COLUMNS = ("card", "provider", "key", "name", "path", "start", "seconds", "frames", "created")


def row_of(clip: sorvik.Clip) -> tuple[object, ...]:
    seconds = clip.duration.seconds if clip.duration else None
    return (
        clip.card.path,
        clip.card.provider.rsplit(".", 1)[-1],
        clip.key,
        clip.name,
        clip.path,
        clip.start,
        None if seconds is None else float(seconds),
        int(clip.duration) if clip.duration else None,
        clip.created.isoformat() if clip.created else None,
    )


with open(sys.argv[2], "w", newline="", encoding="utf-8") as output:
    table = csv.writer(output)
    table.writerow(COLUMNS)
    for found in sorvik.scan(sys.argv[1]):
        if isinstance(found, sorvik.Clip):
            table.writerow(row_of(found))
