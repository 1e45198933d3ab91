# SPDX-License-Identifier: MIT
"""Prints the files of one clip relative to its card, for rsync --files-from: copy_list.py CARD NAME"""

import sys

import sorvik

card = sorvik.open(sys.argv[1])
(clip,) = [clip for clip in card.clips(["Name"]) if clip.name == sys.argv[2]]
for file in clip.files:
    if file.present:
        print(file.path.relative_to(card.path))
    else:
        print(f"missing {file.part}: {file.path}", file=sys.stderr)
