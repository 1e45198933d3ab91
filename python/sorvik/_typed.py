# SPDX-License-Identifier: MIT
"""Values of fields for programs: numbers, fractions, times, timecodes."""

from __future__ import annotations

import functools
import re
from dataclasses import dataclass
from datetime import date, datetime
from fractions import Fraction
from typing import Any, Optional, Union

_TIMECODE = re.compile(r"(\d+):(\d+):(\d+)[:;](\d+)")
# Above this rate, the units of a duration are no frames but sound samples.
_MAX_FRAME_RATE = 1000


def _timecode_text(frames: int, rate: Fraction) -> str:
    seconds, frame = divmod(frames, round(rate))
    minutes, second = divmod(seconds, 60)
    hour, minute = divmod(minutes, 60)
    return f"{hour:02}:{minute:02}:{second:02}:{frame:02}"


@dataclass(frozen=True, slots=True, kw_only=True)
class Frames:
    """A duration in frames, or in other units such as sound samples. `rate` is the number of units per
    second; None if the file doesn't say."""

    count: int
    rate: Optional[Fraction]

    @property
    def seconds(self) -> Optional[Fraction]:
        """The exact duration in seconds; None if the rate isn't known."""
        return None if self.rate is None else self.count / self.rate

    def __int__(self) -> int:
        return self.count

    def __str__(self) -> str:
        if self.rate is None or not 1 <= self.rate <= _MAX_FRAME_RATE or self.count < 0:
            return str(self.count)
        return _timecode_text(self.count, self.rate)


@dataclass(frozen=True, slots=True, kw_only=True)
class Timecode:
    """A timecode. `rate` is the number of frames per second; None if the file doesn't say."""

    hours: int
    minutes: int
    seconds: int
    frames: int
    rate: Optional[Fraction]
    drop_frame: bool

    def __str__(self) -> str:
        separator = ";" if self.drop_frame else ":"
        return f"{self.hours:02}:{self.minutes:02}:{self.seconds:02}{separator}{self.frames:02}"


@dataclass(frozen=True, slots=True, kw_only=True)
class FrameSize:
    """The size of a picture; `unit` is mostly "pixel"."""

    width: int
    height: int
    unit: str

    def __str__(self) -> str:
        return f"{self.width} x {self.height}"


# None: the field has no value. A text that isn't of the type of its field stays a str.
Value = Union[
    None,
    bool,
    int,
    float,
    Fraction,
    str,
    date,
    datetime,
    Timecode,
    Frames,
    FrameSize,
    tuple[str, ...],
]


# Making a Fraction takes longer than all else here, and the clips of a card mostly have the same rate.
@functools.lru_cache(maxsize=64)
def _rate(raw: tuple[int, int]) -> Optional[Fraction]:
    return Fraction(*raw) if raw[0] else None


def _time(text: str) -> Value:
    try:
        return datetime.fromisoformat(text) if "T" in text else date.fromisoformat(text)
    except ValueError:
        return text


def _timecode(text: str, rate: tuple[int, int], drop_frame: bool) -> Value:
    match = _TIMECODE.fullmatch(text)
    if match is None:
        return text
    hours, minutes, seconds, frames = map(int, match.groups())
    return Timecode(
        hours=hours,
        minutes=minutes,
        seconds=seconds,
        frames=frames,
        rate=_rate(rate),
        drop_frame=drop_frame,
    )


def value_of(raw: Any) -> Value:
    """Returns the value of what the extension module returns for a field."""
    if not isinstance(raw, tuple):
        return raw  # type: ignore[no-any-return]
    kind, *parts = raw
    if kind == "fraction":
        return Fraction(*parts[0])
    if kind == "time":
        return _time(parts[0])
    if kind == "timecode":
        return _timecode(*parts)
    if kind == "duration":
        return Frames(count=parts[0], rate=_rate(parts[1]))
    if kind == "frame size":
        return FrameSize(width=parts[0], height=parts[1], unit=parts[2])
    texts: tuple[str, ...] = parts[0]
    return texts or None
