# SPDX-License-Identifier: MIT
"""Joins the pictures of all clips into one with Pillow: montage.py CARD OUT.png"""

import sys

from PIL import Image

import sorvik

COLUMNS, WIDTH, HEIGHT = 4, 160, 90

clips = list(sorvik.open(sys.argv[1]))
rows = -(-len(clips) // COLUMNS)
montage = Image.new("RGB", (COLUMNS * WIDTH, rows * HEIGHT), "white")
for number, clip in enumerate(clips):
    try:
        picture = clip.thumbnail(WIDTH, HEIGHT)
    except sorvik.NoPicture:
        continue
    # Pillow uses the pixels of the library without a copy.
    tile = Image.frombuffer("RGBA", picture.size, picture, "raw", "RGBA", 0, 1)
    montage.paste(tile, (number % COLUMNS * WIDTH, number // COLUMNS * HEIGHT), tile)
montage.save(sys.argv[2])
