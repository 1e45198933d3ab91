# SPDX-License-Identifier: MIT
import copy
import dataclasses
import os
import pathlib
import pickle

import pytest

import sorvik


def values_of(sample):
    card = sorvik.open(sample)
    clip = card.clip("0001AB")
    verdict = card.verdict()
    problem = sorvik.Problem(kind="missing", severity="error", role="essence", path=None)
    owner = sorvik.owner(sample / "CONTENTS/VIDEO/0002CC.MXF")
    return [card, clip, clip.fields, clip.fields["duration"], verdict, verdict.files[0], problem,
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
    assert clip.fields["good"].value is None and clip.fields["good"].text == ""
    assert isinstance(clip.fields["ExtraPath"].value, tuple)
    assert "nonsense" not in clip.fields and clip.fields.raw("nonsense") is None
    with pytest.raises(KeyError):
        clip.fields["nonsense"]
    assert clip.name == "Harbour walk"
    assert clip.path == sample / "CONTENTS/VIDEO/0001AB.MXF"


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
