# SPDX-License-Identifier: MIT
"""Lists a card as a table: table.py PATH"""

import sys

import sorvik

FIELDS = ("Name", "startTimecode", "duration", "videoFrameRate")

card = sorvik.open(sys.argv[1])
print(card)
rows = [tuple(clip.fields[name].text for name in FIELDS if name in clip.fields) for clip in card]
widths = [max(map(len, column)) for column in zip(*rows)]
for row in rows:
    print("  ".join(text.ljust(width) for text, width in zip(row, widths)).rstrip())
