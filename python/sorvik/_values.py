# SPDX-License-Identifier: MIT
"""The values of the package: frozen, comparable, hashable and picklable."""

from __future__ import annotations

import os
import struct
import sys
import zlib
from collections.abc import Mapping
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Iterator, Literal, Optional, Union

from . import _core
from ._typed import Frames, Timecode, Value, value_of

# A value as the library returns it: a text, a list, a size in bytes, or no value.
RawValue = Union[str, tuple[Any, ...], int, None]

Severity = Literal["error", "warning", "note"]
Depth = Literal["names", "structure"]
FileRole = Literal["clip", "structure", "foreign", "hidden"]

_UTF8 = sys.getfilesystemencoding().lower() == "utf-8"


def path_of(text: str) -> Path:
    """Returns the path of a text of the library, whose bytes are those of the file system."""
    return Path(text if _UTF8 else os.fsdecode(text.encode("utf-8", "surrogateescape")))


def text_of(path: Path) -> str:
    """The inverse of `path_of`."""
    return str(path) if _UTF8 else os.fsencode(path).decode("utf-8", "surrogateescape")


# What the library returns for a frame count without a duration.
_NO_FRAME_COUNT = " @ "


def json_value(value: RawValue) -> Any:
    """Returns a value in the form that it has in the JSON of the program."""
    if isinstance(value, tuple):
        return [json_value(item) for item in value]
    if value == _NO_FRAME_COUNT:
        return ""
    return {"bytes": value} if isinstance(value, int) else value


@dataclass(frozen=True, slots=True, kw_only=True)
class Field:
    """One field of an entry.

    `text` is the text for people; empty if the field has no value. `value` is for programs and doesn't
    depend on the language: a number, Fraction, datetime, date, Timecode, Frames, FrameSize, str, bool, a
    tuple of str, or None for a field without a value. `label` is in the language of the user. `source` is
    where the value is from, if the clip was read with its sources; else None.
    """

    name: str
    label: str
    text: str
    value: Value
    source: Optional[str] = None


def _text_of_value(value: RawValue) -> str:
    if isinstance(value, tuple):
        return "; ".join(text for text in map(_text_of_value, value) if text)
    return "" if value is None else str(value)


_NO_SOURCES: Mapping[str, str] = {}


class Fields(Mapping[str, Field]):
    """The fields of an entry by name; only those that were requested or that the provider adds."""

    __slots__ = ("_values", "_labels", "_listing", "_index", "_typed", "_sources")

    def __init__(
        self,
        values: Mapping[str, RawValue],
        labels: Labels,
        listing: Optional[_core.Listing] = None,
        index: int = 0,
        typed: Optional[dict[str, Value]] = None,
        sources: Mapping[str, str] = _NO_SOURCES,
    ) -> None:
        self._values = values
        self._labels = labels
        self._listing = listing  # of the entry `index`; None if `typed` is complete
        self._index = index
        self._typed = typed  # created and filled as values are used
        self._sources = sources

    def _typed_value(self, name: str) -> Value:
        if self._typed is None:
            self._typed = {}
        if name not in self._typed and self._listing is not None:
            self._typed[name] = value_of(self._listing.typed(self._index, name))
        return self._typed.get(name)

    def __getitem__(self, name: str) -> Field:
        text = _text_of_value(self._values[name])
        return Field(
            name=name,
            label=self._labels[name],
            text=text,
            value=self._typed_value(name),
            source=self._sources.get(name),
        )

    def __iter__(self) -> Iterator[str]:
        return iter(self._values)

    def __len__(self) -> int:
        return len(self._values)

    def __contains__(self, name: object) -> bool:
        return name in self._values

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Fields) and self._values == other._values

    def __hash__(self) -> int:
        return hash(frozenset(self._values.items()))

    def __repr__(self) -> str:
        return f"Fields({dict(self._values)!r})"

    def __reduce__(self) -> tuple[type[Fields], tuple[Any, ...]]:
        typed = {name: self._typed_value(name) for name in self}
        labels = Labels({name: self._labels[name] for name in self})
        return Fields, (dict(self._values), labels, None, 0, typed, dict(self._sources))

    def with_sources(self, sources: Mapping[str, str]) -> Fields:
        """Returns the same fields with the names of their sources."""
        return Fields(
            self._values, self._labels, self._listing, self._index, self._typed, sources
        )

    def value(self, name: str) -> Value:
        """Returns the value of a field; None if the entry lacks the field or the field has none."""
        return self._typed_value(name) if name in self._values else None

    def raw(self, name: str) -> RawValue:
        """Returns a value as the library returned it; None if the entry lacks the field."""
        return self._values.get(name)

    def to_dict(self) -> dict[str, Any]:
        """Returns {FIELD: VALUE} as in the JSON of the program."""
        return {name: json_value(value) for name, value in self._values.items()}


class Labels(dict[str, str]):
    """Labels by field, looked up in a listing when they are first used."""

    def __init__(
        self, known: Mapping[str, str] = {}, listing: Optional[_core.Listing] = None
    ) -> None:
        super().__init__(known)
        self._listing = listing

    def __missing__(self, name: str) -> str:
        label = self[name] = name if self._listing is None else self._listing.label(name)
        return label

    def __reduce__(self) -> tuple[type[Labels], tuple[dict[str, str]]]:
        return Labels, (dict(self),)


@dataclass(frozen=True, slots=True, kw_only=True)
class Source:
    """Where the value of a field is from: "sidecar", "xmp", "record", "index", "native" or "provider".

    `others` are (source, value) pairs of weaker sources with a different value, strongest first. `name`
    is that of a field, or of a further property such as "aux:Lens".
    """

    name: str
    source: str
    value: str
    others: tuple[tuple[str, str], ...]

    def to_dict(self) -> dict[str, Any]:
        """Returns the source as in the JSON of `sorvik meta --sources`, always with the value."""
        others = [{"from": source, "value": value} for source, value in self.others]
        return {"from": self.source, "value": self.value, "others": others}


@dataclass(frozen=True, slots=True, kw_only=True)
class File:
    """A file of a card or clip. `part` is what it is, such as "essence" or "sound channel"; empty if
    that isn't known. `owners` are the keys of the entries that it belongs to."""

    path: Path
    role: FileRole
    part: str
    size: int
    present: bool
    owners: tuple[str, ...]

    def to_dict(self) -> dict[str, Any]:
        """Returns the file as in the JSON of `sorvik check --files`."""
        return {"path": text_of(self.path), "role": self.role, "owners": list(self.owners)}


def file_of(raw: tuple[Any, ...]) -> File:
    path, role, part, size, present, owners = raw
    return File(
        path=path_of(path), role=role, part=part, size=size, present=present, owners=owners
    )


@dataclass(frozen=True, slots=True, kw_only=True)
class Part:
    """A file of a recording that the camera cut into several, or wrote as separate files for picture and
    sound.

    `path` is the folder of an image sequence; None if the part is missing and its place not known.
    `channel` is 0 for a file with all channels. `inferred`: that it continues the part before it follows
    from its times only. `frames` are those of the recording, between `first_frame` and `frames_after`
    others of the file.
    """

    name: str
    path: Optional[Path]
    track: Literal["picture and sound", "picture", "sound"]
    channel: int
    present: bool
    inferred: bool
    frames: Optional[Frames]
    first_frame: int
    frames_after: int
    start: Optional[Timecode]


def part_of(raw: tuple[Any, ...], rate: tuple[int, int]) -> Part:
    name, path, track, channel, present, inferred, frames, first_frame, frames_after, start = raw
    timecode = value_of(("timecode", start, rate, ";" in start))
    length = value_of(("duration", frames, rate))
    return Part(
        name=name,
        path=path_of(path) if path else None,
        track=track,
        channel=channel,
        present=present,
        inferred=inferred,
        frames=length if isinstance(length, Frames) and frames >= 0 else None,
        first_frame=first_frame,
        frames_after=frames_after,
        start=timecode if isinstance(timecode, Timecode) else None,
    )


@dataclass(frozen=True, slots=True, kw_only=True)
class Problem:
    """Something that is wrong with a card: of a check, or of a card that a scan can't list.

    `kind` is missing, empty, truncated, unreadable, orphaned, unlisted or stale. `path` is where it is
    or should be; None if it is not known.
    """

    kind: str
    severity: Severity
    role: str
    path: Optional[Path]
    entries: tuple[str, ...] = ()
    detail: str = ""

    def __str__(self) -> str:
        where = "" if self.path is None else f": {self.path}"
        why = f" ({self.detail})" if self.detail else ""
        return f"{self.severity}: {self.kind} {self.role}{where}{why}"

    def to_dict(self) -> dict[str, Any]:
        """Returns the problem as in the findings of the JSON of `sorvik check`."""
        return {
            "kind": self.kind,
            "severity": self.severity,
            "role": self.role,
            "path": "" if self.path is None else text_of(self.path),
            "entries": list(self.entries),
            "detail": self.detail,
        }


def problem_of(raw: tuple[Any, ...]) -> Problem:
    kind, severity, role, path, entries, detail = raw
    return Problem(
        kind=kind,
        severity=severity,
        role=role,
        path=path_of(path) if path else None,
        entries=entries,
        detail=detail,
    )


@dataclass(frozen=True, slots=True, kw_only=True)
class Verdict:
    """Whether a card is complete; false as a bool if it isn't."""

    path: Path
    provider: str
    complete: bool
    depth: Depth
    clips: int
    size: int
    problems: tuple[Problem, ...]
    files: tuple[File, ...]

    def __bool__(self) -> bool:
        return self.complete

    @property
    def unlisted(self) -> tuple[Problem, ...]:
        """The clips that the card's own list doesn't know."""
        return tuple(problem for problem in self.problems if problem.kind == "unlisted")

    def to_dict(self, *, files: bool = False) -> dict[str, Any]:
        """Returns the JSON of `sorvik check`; with `files`, that of `sorvik check --files`."""
        document: dict[str, Any] = {
            "path": text_of(self.path),
            "provider": self.provider,
            "complete": self.complete,
            "depth": self.depth,
            "against": None,
            "clips": self.clips,
            "bytes": self.size,
            "findings": [problem.to_dict() for problem in self.problems],
        }
        if files:
            document["files"] = [file.to_dict() for file in self.files]
        return document


def verdict_of(raw: tuple[Any, ...]) -> Verdict:
    path, provider, complete, depth, clips, size, findings, files = raw
    return Verdict(
        path=path_of(path),
        provider=provider,
        complete=complete,
        depth=depth,
        clips=clips,
        size=size,
        problems=tuple(map(problem_of, findings)),
        files=tuple(map(file_of, files)),
    )


class Picture(_core.Picture):
    """Top-down RGBA pixels with straight alpha, as a read-only buffer of (height, width, 4) bytes.

    Without a copy: `numpy.asarray(picture)`, and
    `PIL.Image.frombuffer("RGBA", picture.size, picture, "raw", "RGBA", 0, 1)`.
    """

    __slots__ = ()

    @property
    def size(self) -> tuple[int, int]:
        """Width and height, as in Pillow."""
        return self.width, self.height

    def __bytes__(self) -> bytes:
        return memoryview(self).tobytes()  # type: ignore[arg-type]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Picture):
            return NotImplemented
        return self.size == other.size and bytes(self) == bytes(other)

    def __hash__(self) -> int:
        return hash((self.size, bytes(self)))

    def __repr__(self) -> str:
        return f"<sorvik.Picture {self.width} x {self.height}>"

    def __reduce__(self) -> tuple[type[Picture], tuple[int, int, bytes]]:
        return Picture, (self.width, self.height, bytes(self))

    def png(self) -> bytes:
        """Returns the picture as a PNG file."""
        row = 4 * self.width
        pixels = bytes(self)
        rows = b"".join(
            b"\0" + pixels[start : start + row] for start in range(0, len(pixels), row)
        )
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)
        chunks = ((b"IHDR", header), (b"IDAT", zlib.compress(rows, 1)), (b"IEND", b""))
        return b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
            for name, data in chunks
        )
