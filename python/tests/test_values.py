# SPDX-License-Identifier: MIT
import copy
import dataclasses
import datetime
import os
import pathlib
import pickle
from fractions import Fraction

import pytest

import sorvik
from sorvik._typed import value_of


def values_of(sample):
    card = sorvik.open(sample)
    clip = card.clip("0001AB")
    verdict = card.verdict()
    problem = sorvik.Problem(kind="missing", severity="error", role="essence", path=None)
    owner = sorvik.owner(sample / "CONTENTS/VIDEO/0002CC.MXF")
    return [card, clip, clip.fields, clip.fields["duration"], clip.parts[0], verdict, verdict.files[0], problem,
            owner, clip.thumbnail(32, 18)]


def test_are_picklable_comparable_and_hashable(sample):
    values = values_of(sample)
    for value, again in zip(values, values_of(sample)):
        assert value == again and hash(value) == hash(again)
        assert pickle.loads(pickle.dumps(value)) == value
        assert copy.deepcopy(value) == value
    assert len(set(values)) == len(values)
    for value in values:
        if dataclasses.is_dataclass(value):
            with pytest.raises(dataclasses.FrozenInstanceError):
                setattr(value, dataclasses.fields(value)[0].name, None)


def test_exceptions_keep_their_members():
    for kind in (sorvik.Gone, sorvik.NotACard, sorvik.Unreadable, sorvik.TimedOut):
        error = pickle.loads(pickle.dumps(kind("why", "/path")))
        assert (type(error), error.path, error.message) == (kind, "/path", "why")
        assert str(error) == "/path: why"


def test_fields(sample):
    clip = sorvik.open(sample).clip("0001AB")
    duration = clip.fields["duration"]
    assert (duration.name, duration.label, duration.text) == ("duration", "Duration", "00:00:29:07")
    assert clip.fields["good"].value is None and clip.fields.value("nonsense") is None
    assert clip.fields["good"].text == ""
    assert clip.fields["ExtraPath"].label
    assert isinstance(clip.fields["ExtraPath"].value, tuple)
    assert "nonsense" not in clip.fields and clip.fields.raw("nonsense") is None
    with pytest.raises(KeyError):
        clip.fields["nonsense"]
    assert clip.name == "Harbour walk"
    assert clip.path == sample / "CONTENTS/VIDEO/0001AB.MXF"


def test_typed_values(sample):
    clip = sorvik.open(sample).clip("0001AB")
    rate = Fraction(25)
    assert clip.duration == sorvik.Frames(count=732, rate=rate)
    assert clip.duration.seconds == Fraction(732, 25) and str(clip.duration) == "00:00:29:07"
    assert clip.start == sorvik.Timecode(
        hours=10, minutes=4, seconds=11, frames=8, rate=rate, drop_frame=False
    )
    assert str(clip.start) == "10:04:11:08"
    zone = datetime.timezone(datetime.timedelta(hours=2))
    assert clip.created == datetime.datetime(2026, 5, 14, 11, 20, 5, tzinfo=zone)
    assert not clip.created_is_local
    assert clip.fields["videoFrameRate"].value == rate
    assert clip.fields["videoFrameSize"].value == sorvik.FrameSize(
        width=1920, height=1080, unit="pixel"
    )
    merged = list(sorvik.open(sample))[-1]  # two recordings
    assert merged.duration.count == (5 * 60 + 43) * 25 + 12


@pytest.mark.parametrize(
    "raw, value",
    [
        (None, None),
        (True, True),
        (7, 7),
        ("text", "text"),
        (("texts", ()), None),
        (("texts", ("a", "b")), ("a", "b")),
        (("fraction", (30000, 1001)), Fraction(30000, 1001)),
        (("time", "2024-05-01"), datetime.date(2024, 5, 1)),
        (("time", "2024-05-01T10:00:00"), datetime.datetime(2024, 5, 1, 10)),
        (("time", "2024-05"), "2024-05"),
        (("time", "2024-99-99T99:00:00Z"), "2024-99-99T99:00:00Z"),
        (("timecode", "nonsense", (25, 1), False), "nonsense"),
        (("duration", 48000, (0, 1)), sorvik.Frames(count=48000, rate=None)),
    ],
)
def test_conversion_of_typed_values(raw, value):
    assert value_of(raw) == value


def test_texts_of_typed_values():
    drop = value_of(("timecode", "01:02:03;04", (30000, 1001), True))
    assert str(drop) == "01:02:03;04"
    assert str(sorvik.Frames(count=48000, rate=Fraction(48000))) == "48000"
    assert str(sorvik.Frames(count=3601 * 30, rate=Fraction(30000, 1001))) == "01:00:01:00"
    assert sorvik.Frames(count=5, rate=None).seconds is None


def test_names_that_are_not_utf8_survive(tmp_path):
    name = os.fsdecode(b"caf\xe9 \xf0\x9f\x8e\xac.mov")
    (tmp_path / name).touch()
    (clip,) = sorvik.open(tmp_path)
    assert clip.path == tmp_path / name and clip.path.exists()
    assert clip.name == name
    assert sorvik.owner(clip.path).key == str(clip.path)
    assert sorvik.open(os.fsencode(tmp_path)).path == pathlib.Path(tmp_path)


def test_picture_of_bytes():
    picture = sorvik.Picture(2, 1, bytes(range(8)))
    assert memoryview(picture).tobytes() == bytes(range(8))
    for arguments in ((2, 1, b"1234567"), (0, 1, b""), (-1, -1, b"1234")):
        with pytest.raises(ValueError):
            sorvik.Picture(*arguments)
