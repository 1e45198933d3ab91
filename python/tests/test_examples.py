# SPDX-License-Identifier: MIT
import csv
import subprocess
import sys

from PIL import Image

from conftest import SOURCES


def run(example, *arguments):
    return subprocess.run(
        [sys.executable, SOURCES / "examples/python" / example, *arguments],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    ).stdout.splitlines()


def test_table(sample):
    lines = run("table.py", sample)
    assert lines[0] == f"{sample} (Panasonic P2)"
    assert lines[1] == "Harbour walk      10:04:11:08  00:00:29:07  25"
    assert len(lines) == 4


def test_copy_list(sample):
    assert "CONTENTS/VIDEO/0002CC.MXF" in run("copy_list.py", sample, "Gull on the pier")


def test_contact_sheet(sample, tmp_path):
    run("contact_sheet.py", sample, tmp_path / "sheet.html")
    assert (tmp_path / "sheet.html").read_text().count("data:image/png") == 3


def test_scan_progress(sample):
    assert run("scan_progress.py", sample.parent) == [f"complete   {sample}"]


def test_montage(sample, tmp_path):
    run("montage.py", sample, tmp_path / "out.png")
    with Image.open(tmp_path / "out.png") as montage:
        assert montage.size == (640, 90)
        assert len(set(montage.getdata())) > 10


def test_to_csv(sample, tmp_path):
    run("to_csv.py", sample, tmp_path / "out.csv")
    with open(tmp_path / "out.csv", newline="") as table:
        rows = list(csv.DictReader(table))
    assert [row["name"] for row in rows] == ["Harbour walk", "Gull on the pier", "Ferry leaves"]
    assert rows[0]["provider"] == "ProviderP2" and rows[0]["start"] == "10:04:11:08"
    assert [float(row["seconds"]) for row in rows] == [29.28, 8.56, 343.48]
    assert rows[0]["created"] == "2026-05-14T11:20:05+02:00"
