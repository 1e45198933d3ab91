# SPDX-License-Identifier: MIT
"""Writes a contact sheet in one HTML file: contact_sheet.py CARD OUT.html"""

import base64
import html
import sys

import sorvik

with open(sys.argv[2], "w", encoding="utf-8") as sheet:
    sheet.write("<!doctype html><meta charset=utf-8><title>Contact sheet</title>\n")
    for clip in sorvik.open(sys.argv[1]):
        picture = base64.b64encode(clip.thumbnail(320, 180).png()).decode()
        sheet.write(f'<figure><img src="data:image/png;base64,{picture}">')
        sheet.write(f"<figcaption>{html.escape(clip.name)}</figcaption></figure>\n")
