# SPDX-License-Identifier: MIT
"""The package gives the answers of the program."""

import io
import json
import os
import subprocess

import numpy
import pytest
from PIL import Image

import sorvik
from conftest import BINARIES


def test_documents_are_those_of_the_program(made_cards, program):
    assert len(made_cards) > 10
    for provider, path in made_cards:
        card = sorvik.open(path)
        assert (card.provider, str(card.path)) == (provider, path)
        listing = program("ls", path)
        assert card.to_dict() == listing
        names = ["Name", "Path", "duration", "startTimecode"]
        clips = list(card.clips(names))
        assert [clip.key for clip in clips] == list(listing["entries"])
        assert {clip.key: clip.fields.to_dict() for clip in clips} == program(
            "ls", path, "--fields", ",".join(names)
        )["entries"]
        key = next(iter(listing["entries"]))
        assert card.clip(key).to_dict() == program("entry", path, key)


def test_verdicts_owners_and_files_are_those_of_the_program(made_cards, program):
    for provider, path in made_cards:
        card = sorvik.open(path, provider=provider)
        if card.score <= 30:
            with pytest.raises(sorvik.NotACard):
                card.verdict()
            continue
        verdict = card.verdict()
        document = program("check", path, "--provider", provider, "--files")
        assert verdict.to_dict(files=True) == document
        assert bool(verdict) == document["complete"]
        assert card.verdict("names").to_dict() == program(
            "check", path, "--provider", provider, "--quick"
        )
        file = next(file for file in verdict.files if file.role == "clip")
        assert sorvik.owner(file.path).to_dict() == program("owner", str(file.path))
        assert [f for f in card.files() if f.present] == list(verdict.files)


def test_found_cards_are_those_of_the_program(made_cards):
    root = os.path.dirname(made_cards[0][1])
    lines = subprocess.run(
        [BINARIES / "sorvik", "cards", root, "--json"], stdout=subprocess.PIPE, check=True
    ).stdout.splitlines()
    expected = [json.loads(line) for line in lines]
    cards = sorvik.cards(root)
    assert [card.summary() for card in cards] == expected
    found = list(sorvik.scan(root, fields=["Name"]))
    assert [each for each in found if isinstance(each, sorvik.Card)] == cards
    clips = [each for each in found if isinstance(each, sorvik.Clip)]
    assert clips == [clip for card in cards for clip in card.clips(["Name"])]


def test_catalogue_is_that_of_the_program(made_cards):
    root = os.path.dirname(made_cards[0][1])
    command = [BINARIES / "sorvik", "catalog", root]
    lines = subprocess.run(command, stdout=subprocess.PIPE).stdout.splitlines()
    assert list(sorvik.catalogue(root)) == [json.loads(line) for line in lines]


def test_pictures_are_those_of_the_program(sample, tmp_path):
    clip = next(iter(sorvik.open(sample)))
    picture = clip.thumbnail(80, 60)
    output = tmp_path / "out.png"
    subprocess.run(
        [BINARIES / "sorvik", "thumb", sample, clip.key, "-o", output, "--size", "80x60", "--icon"],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    with Image.open(output) as expected:
        rgba = expected.convert("RGBA")
    assert picture.size == rgba.size
    assert bytes(picture) == rgba.tobytes()
    assert Image.open(io.BytesIO(picture.png())).tobytes() == rgba.tobytes()
    pixels = numpy.asarray(picture)
    assert pixels.shape == (picture.height, picture.width, 4) and not pixels.flags.writeable
    shared = Image.frombuffer("RGBA", picture.size, picture, "raw", "RGBA", 0, 1)
    assert shared.tobytes() == rgba.tobytes()


def test_picture_is_that_of_the_camera(sample):
    clip = next(iter(sorvik.open(sample)))
    with Image.open(sample / "CONTENTS/ICON/0001AB.BMP") as icon:
        expected = icon.convert("RGBA")
    picture = clip.picture()
    assert picture.size == expected.size
    assert bytes(picture) == expected.tobytes()
    width, height = clip.picture(expected.width // 2, expected.height).size
    assert width == expected.width // 2 and height <= expected.height // 2 + 1


def test_sources_are_those_of_the_program(made_cards, program):
    compared = 0
    for provider, path in made_cards:
        clip = next(iter(sorvik.open(path, provider=provider)))
        document = program("meta", clip.path, "--sources")
        # The program doesn't ask the provider about entries whose key is their path.
        if "sources" in document and clip.key != str(clip.path):
            for name, source in document["sources"].items():
                source.setdefault("value", document["fields"].get(name))
            got = {name: source.to_dict() for name, source in clip.sources().items()}
            assert got == document["sources"], path
            compared += 1
    assert compared


def test_fields_have_a_source(sample):
    card = sorvik.open(sample)
    fields = card.clip("0001AB", sources=True).fields
    assert fields["duration"].source == "record" and fields["Path"].source is None
    assert card.clip("0001AB").fields["duration"].source is None


def test_join_lists_are_those_of_the_program(made_cards):
    def run(*arguments):
        command = [BINARIES / "sorvik", "join", *arguments]
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return done.stdout or None

    def join(place, format):
        try:
            return place.join(format).encode("utf-8", "surrogateescape")
        except sorvik.Error:
            return None

    made = set()
    for provider, path in made_cards:
        card = sorvik.open(path, provider=provider)
        if card.score <= 30:
            continue
        clip = next(iter(card))
        for format in ("ffconcat", "otio", "csv", "json"):
            arguments = (path, clip.key, "--provider", provider, "--format", format)
            expected = run(*arguments)
            assert join(clip, format) == expected, (path, format)
            made.add(format if expected else None)
        expected = run(path, "--provider", provider, "--format", "csv")
        assert join(card, "csv") == expected, path
    assert made >= {"ffconcat", "otio", "csv", "json"}


@pytest.mark.filterwarnings("error")
def test_join_lists_with_gaps(sample, tmp_path):
    subprocess.run(["cp", "-r", sample, tmp_path / "CARD"], check=True)
    *_, merged = sorvik.open(tmp_path / "CARD")
    with pytest.raises(sorvik.Error, match="tracks in separate files"):
        merged.join("ffconcat")
    lists = merged.join_lists("ffconcat", tmp_path / "shot.ffconcat")
    assert list(lists)[0] == tmp_path / "shot.ffconcat" and len(lists) > 1
    assert "file 'CARD/CONTENTS/VIDEO/0003ED.MXF'" in lists[tmp_path / "shot.ffconcat"]
    with pytest.raises(ValueError, match="unknown format 'mov'"):
        merged.join("mov")
    (tmp_path / "CARD/CONTENTS/VIDEO/0004FA.MXF").unlink()
    with pytest.raises(sorvik.JoinWarning, match="part '0004FA' of '0003ED' is missing"):
        merged.join("otio")


def test_parts_of_a_clip(sample):
    *_, merged = sorvik.open(sample)
    pictures = [part for part in merged.parts if part.track != "sound"]
    video = sample / "CONTENTS/VIDEO"
    assert [part.path for part in pictures] == [video / "0003ED.MXF", video / "0004FA.MXF"]
    assert sum(part.frames.count for part in pictures) == merged.duration.count
    assert pictures[0].start == merged.start and all(part.present for part in merged.parts)


def test_missing_files_of_a_clip(sample, tmp_path):
    subprocess.run(["cp", "-r", sample, tmp_path / "CARD"], check=True)
    missing = tmp_path / "CARD/CONTENTS/AUDIO/0001AB01.MXF"
    missing.unlink()
    card = sorvik.open(tmp_path / "CARD")
    files = card.clip("0001AB").files
    assert [file.path for file in files if not file.present] == [missing]
    assert not card.verdict()
    assert card.verdict().problems[0].path == missing


def test_opens_the_card_around_a_path(sample, tmp_path):
    inside = sample / "CONTENTS" / "VIDEO"
    assert sorvik.open(inside).path == sample
    assert sorvik.open(sample.parent).path == sample
    assert sorvik.open(inside, nearby=False).path == inside
    assert sorvik.open(tmp_path).provider.endswith("Directory")
    assert [clip.path for clip in sorvik.open("volumes:")]
