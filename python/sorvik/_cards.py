# SPDX-License-Identifier: MIT
"""Cards, their clips, and the functions that find them."""

from __future__ import annotations

import contextlib
import os
import warnings
from dataclasses import dataclass, replace
from datetime import date, datetime
from pathlib import Path
from types import TracebackType
from typing import (
    Any,
    AsyncGenerator,
    AsyncIterator,
    Callable,
    Iterable,
    Iterator,
    Literal,
    Optional,
    Union,
)

from . import _core, _requests
from ._errors import JoinWarning, NotACard
from ._typed import Frames, Timecode
from ._values import (
    Depth,
    Fields,
    File,
    Labels,
    Part,
    Picture,
    Problem,
    RawValue,
    Source,
    Verdict,
    file_of,
    json_value,
    part_of,
    path_of,
    text_of,
    verdict_of,
)

PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
# Which fields a listing has: those of this iterable, all that the provider knows, or its default
# ones with times and durations.
FieldNames = Union[Iterable[str], Literal["all"], None]

JoinFormat = Literal["ffconcat", "otio", "ale", "edl", "fcpxml", "csv", "json"]

_BROWSE_ROOTS = (b"volumes:", b"networkvolumes:", b"easervers:")
_PLAIN_SCORE = 30
_MAX_SIDE = 16384
_USUAL_FIELDS = (
    "startTimecode",
    "duration",
    "videoFrameRate",
    "videoFrameSize",
    "shotDate",
    "CreateDate",
    "Path",
)


def path_argument(path: PathLike) -> bytes:
    encoded = os.fsencode(path)
    if b"\0" in encoded:
        raise ValueError("embedded null byte in path")
    if not encoded:
        raise ValueError("path must not be empty")
    return encoded if encoded.startswith(_BROWSE_ROOTS) else os.path.abspath(encoded)


def _text_argument(text: str, what: str) -> bytes:
    if not isinstance(text, str):
        raise TypeError(f"{what} must be a str, not {type(text).__name__}")
    if not text or "\0" in text:
        raise ValueError(f"{what} must be a text without null bytes, and not empty")
    return text.encode("utf-8", "surrogateescape")


def _fields_argument(fields: FieldNames, usual: bool) -> tuple[Optional[list[str]], bool]:
    """Returns the names (None: all) and whether the provider's default fields are wanted, too."""
    if fields is None:
        return list(_USUAL_FIELDS if usual else ()), True
    if isinstance(fields, str):
        if fields == "all":
            return None, False
        raise TypeError('fields must be an iterable of names, "all" or None')
    names = list(fields)
    for name in names:
        _text_argument(name, "name of a field")
    return names, False


@dataclass(frozen=True, slots=True, kw_only=True)
class Card:
    """A place as a provider supports it: a card, a plain folder or the list of volumes.

    Iterating over it lists its clips. `score` is 100 for the root of a card in good order, 40 with a
    reservation, 30 for a plain folder. `name` is that of the provider in the user's language.
    """

    path: Path
    provider: str
    name: str
    score: int

    def __str__(self) -> str:
        return f"{self.path} ({self.name})"

    def __iter__(self) -> Iterator[Clip]:
        return self.clips()

    def __aiter__(self) -> AsyncIterator[Clip]:
        return self.aclips()

    def _place(self) -> tuple[bytes, bytes]:
        return text_of(self.path).encode("utf-8", "surrogateescape"), self.provider.encode()

    def _start_list(self, fields: FieldNames) -> _requests.Start:
        names, defaults = _fields_argument(fields, self.score > _PLAIN_SCORE)
        place = self._place()
        return lambda queue, number: _core.start_list(*place, names, defaults, queue, number)

    def clips(self, fields: FieldNames = None, *, timeout: Optional[float] = None) -> Clips:
        """Lists the clips, or the items of a plain folder, ordered by key.

        The card is read when the first one is taken. `fields` are names of fields, "all", or None for
        those that most programs need. Raises an Error if the place can't be listed, and TimedOut
        after `timeout` seconds.
        """
        return Clips(self, _requests.events(self._start_list(fields), timeout))

    async def aclips(self, fields: FieldNames = None) -> AsyncGenerator[Clip, None]:
        """The same as `clips` for `async for`. Cancelling the task aborts the listing."""
        listing = await _requests.async_result(self._start_list(fields))
        for clip in _clips_of(self, listing):
            yield clip

    def clip(self, key: str, fields: FieldNames = "all", *, sources: bool = False) -> Clip:
        """Reads one clip; with `sources`, its fields also say where their values are from. Raises NoEntry
        if the card has no clip with this key."""
        names, defaults = _fields_argument(fields, True)
        place, encoded = self._place(), _text_argument(key, "key")
        listing = _requests.result(
            lambda queue, number: _core.start_read_entry(
                *place, encoded, names, defaults, queue, number
            )
        )
        clip = next(_clips_of(self, listing))
        if not sources:
            return clip
        found = {name: source.source for name, source in clip.sources().items()}
        return replace(clip, fields=clip.fields.with_sources(found))

    def _start_files(self, key: Optional[str]) -> _requests.Start:
        place = self._place()
        encoded = None if key is None else _text_argument(key, "key")
        return lambda queue, number: _core.start_list_files(*place, encoded, queue, number)

    def files(self) -> tuple[File, ...]:
        """Returns all files of the card, the missing ones that its clips require included."""
        return tuple(map(file_of, _requests.result(self._start_files(None))))

    async def afiles(self) -> tuple[File, ...]:
        """The same as `files` in an asyncio event loop."""
        return tuple(map(file_of, await _requests.async_result(self._start_files(None))))

    def _start_check(self, depth: Depth) -> _requests.Start:
        if depth not in ("names", "structure"):
            raise ValueError('depth must be "names" or "structure"')
        place = self._place()
        return lambda queue, number: _core.start_check(*place, depth == "names", queue, number)

    def verdict(
        self, depth: Depth = "structure", *, timeout: Optional[float] = None
    ) -> Verdict:
        """Checks whether the card is complete. With "names", of media only names and sizes are read.

        Raises NotACard for a plain folder.
        """
        return verdict_of(_requests.result(self._start_check(depth), timeout))

    async def averdict(self, depth: Depth = "structure") -> Verdict:
        """The same as `verdict` in an asyncio event loop. Cancelling the task aborts the check."""
        return verdict_of(await _requests.async_result(self._start_check(depth)))

    def _start_join(
        self,
        key: Optional[str],
        format: JoinFormat,
        output: Optional[PathLike],
        allow_gaps: bool,
    ) -> _requests.Start:
        place = self._place()
        encoded = None if key is None else _text_argument(key, "key")
        _text_argument(format, "format")
        target = None if output is None else path_argument(output)
        return lambda queue, number: _core.start_join(
            *place, encoded, format, target, allow_gaps, queue, number
        )

    def join(self, format: JoinFormat, *, allow_gaps: bool = False) -> str:
        """Returns a list of all clips for editing programs, as `sorvik join` prints it without a key.
        "ffconcat" is for one clip only. Warns and raises as `Clip.join`."""
        start = self._start_join(None, format, None, allow_gaps)
        return _lists_of(_requests.result(start))[0][1]

    def summary(self) -> dict[str, Any]:
        """Returns the line of `sorvik cards --json` for this card."""
        return {
            "path": text_of(self.path),
            "provider": self.provider,
            "name": self.name,
            "score": self.score,
        }

    def to_dict(self, fields: Optional[Iterable[str]] = None) -> dict[str, Any]:
        """Lists the card and returns the JSON of `sorvik ls`, by default with the provider's default
        fields as the program does."""
        names, defaults = _fields_argument(fields, False)
        place = self._place()
        listing = _requests.result(
            lambda queue, number: _core.start_list(*place, names, defaults, queue, number)
        )
        return _document(self, dict(map(listing.at, range(len(listing)))))


def _document(card: Card, entries: dict[str, dict[str, RawValue]]) -> dict[str, Any]:
    return {
        "path": text_of(card.path),
        "provider": card.provider,
        "entries": {
            key: {name: json_value(value) for name, value in values.items()}
            for key, values in entries.items()
        },
    }


@dataclass(frozen=True, slots=True, kw_only=True)
class Clip:
    """A clip of a card, or an item of a plain folder."""

    card: Card
    key: str
    fields: Fields

    @property
    def name(self) -> str:
        """The display name; the last component of the key if it has none."""
        name = self.fields.raw("Name")
        return name if isinstance(name, str) and name else self.key.rsplit("/", 1)[-1]

    @property
    def path(self) -> Optional[Path]:
        """The file to open, or the folder to browse next; None if there is none."""
        path = self.fields.raw("Path")
        return path_of(path) if isinstance(path, str) and path else None

    @property
    def duration(self) -> Optional[Frames]:
        """None if it isn't known, or if the clip was listed without the field "duration"."""
        duration = self.fields.value("duration")
        return duration if isinstance(duration, Frames) else None

    @property
    def start(self) -> Optional[Timecode]:
        """The timecode of the first frame. None as for `duration`; its field is "startTimecode"."""
        start = self.fields.value("startTimecode")
        return start if isinstance(start, Timecode) else None

    @property
    def created(self) -> Union[datetime, date, None]:
        """When it was recorded, from the fields "shotDate" and "CreateDate". A datetime without a zone
        is the local time of the camera; a date is known without its time."""
        for name in ("shotDate", "CreateDate"):
            created = self.fields.value(name)
            if isinstance(created, date):  # a datetime, too
                return created
        return None

    @property
    def created_is_local(self) -> bool:
        """True if `created` has no zone."""
        created = self.created
        return created is not None and getattr(created, "tzinfo", None) is None

    def __str__(self) -> str:
        times = (self.fields.raw("startTimecode"), self.fields.raw("duration"))
        parts = [self.key.rsplit("/", 1)[-1], self.name, *times]
        return "  ".join(part for part in dict.fromkeys(parts) if isinstance(part, str) and part)

    @property
    def files(self) -> tuple[File, ...]:
        """The files of this clip, the missing ones included. Reads the card: for the files of all
        clips use `Card.files` and their owners."""
        return tuple(map(file_of, _requests.result(self.card._start_files(self.key))))

    def sources(self) -> dict[str, Source]:
        """Reads from which source each value is, by field, further properties of the file included."""
        place, key = self.card._place(), _text_argument(self.key, "key")
        sources = _requests.result(
            lambda queue, number: _core.start_read_sources(*place, key, queue, number)
        )
        return {
            name: Source(name=name, source=source, value=value, others=others)
            for name, source, value, others in sources
        }

    def join(self, format: JoinFormat, *, allow_gaps: bool = False) -> str:
        """Returns a list that joins the files of the recording, as `sorvik join` prints it.

        Warns with a JoinWarning if the first or last part is missing. Raises an Error if a part
        between others is missing, unless gaps are allowed, or if the format needs several lists.
        """
        start = self.card._start_join(self.key, format, None, allow_gaps)
        return _lists_of(_requests.result(start))[0][1]

    async def ajoin(self, format: JoinFormat, *, allow_gaps: bool = False) -> str:
        """The same as `join` in an asyncio event loop."""
        start = self.card._start_join(self.key, format, None, allow_gaps)
        return _lists_of(await _requests.async_result(start))[0][1]

    def join_lists(
        self, format: JoinFormat, output: PathLike, *, allow_gaps: bool = False
    ) -> dict[Path, str]:
        """Returns the texts of the lists by the paths where they belong: `output`, and paths next to it
        for the tracks of a clip whose picture and sound are files of their own. Writes nothing. An
        "ffconcat" list names files below its folder relative to it. Warns and raises as `join`."""
        start = self.card._start_join(self.key, format, output, allow_gaps)
        return {path_of(path): text for path, text in _lists_of(_requests.result(start))}

    @property
    def parts(self) -> tuple[Part, ...]:
        """The files that the recording consists of, track by track in playing order; missing ones
        included. Reads the card."""
        place, key = self.card._place(), _text_argument(self.key, "key")
        parts, rate, _ = _requests.result(
            lambda queue, number: _core.start_list_parts(*place, key, queue, number)
        )
        return tuple(part_of(part, rate) for part in parts)

    def _start_render(
        self, start: Callable[..., _core.Request], width: int, height: int
    ) -> _requests.Start:
        place, key = self.card._place(), _text_argument(self.key, "key")
        if not (1 <= width <= _MAX_SIDE and 1 <= height <= _MAX_SIDE):
            raise ValueError(f"width and height must be 1 to {_MAX_SIDE}")
        return lambda queue, number: start(*place, key, width, height, queue, number)

    def thumbnail(
        self, width: int = 320, height: int = 180, *, timeout: Optional[float] = None
    ) -> Picture:
        """Renders the thumbnail of the clip in this size, as `sorvik thumb` does: for many kinds of clips
        an icon. Raises NoPicture if there is none."""
        start = self._start_render(_core.start_render_thumbnail, width, height)
        return Picture(_requests.result(start, timeout))

    async def athumbnail(self, width: int = 320, height: int = 180) -> Picture:
        """The same as `thumbnail` in an asyncio event loop."""
        start = self._start_render(_core.start_render_thumbnail, width, height)
        return Picture(await _requests.async_result(start))

    def picture(
        self, width: int = 640, height: int = 360, *, timeout: Optional[float] = None
    ) -> Picture:
        """Renders the best picture by which the clip can be recognised: that of the camera, else a preview
        inside the file, else a frame of the video. It fits the size and is never enlarged. Raises
        NoPicture if there is none."""
        start = self._start_render(_core.start_render_picture, width, height)
        return Picture(_requests.result(start, timeout))

    async def apicture(self, width: int = 640, height: int = 360) -> Picture:
        """The same as `picture` in an asyncio event loop."""
        start = self._start_render(_core.start_render_picture, width, height)
        return Picture(await _requests.async_result(start))

    def to_dict(self) -> dict[str, Any]:
        """Returns the JSON of `sorvik entry` with the fields that were read."""
        return _document(self.card, {self.key: dict(self.fields._values)})


def _lists_of(made: tuple[Any, ...]) -> tuple[tuple[str, str], ...]:
    lists, lacks = made
    for text in lacks:
        warnings.warn(text, JoinWarning, stacklevel=3)
    return lists  # type: ignore[no-any-return]


def _clips_of(card: Card, listing: _core.Listing) -> Iterator[Clip]:
    labels = Labels(listing=listing)
    for index in range(len(listing)):
        key, values = listing.at(index)
        yield Clip(card=card, key=key, fields=Fields(values, labels, listing, index))


class _Stream:
    """An iterator over the results of a running request, and its context manager."""

    def __init__(self, events: _requests.Events) -> None:
        self._events = events

    def close(self) -> None:
        """Aborts the request if it is running."""
        self._events.close()

    def __enter__(self) -> Any:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()


class Clips(_Stream, Iterator[Clip]):
    """The clips of a card. Leaving its `with` block aborts the listing."""

    def __init__(self, card: Card, events: _requests.Events) -> None:
        super().__init__(events)
        self._card = card
        self._clips: Iterator[Clip] = iter(())
        self._begun = False

    def __enter__(self) -> Clips:
        return self

    def __next__(self) -> Clip:
        if not self._begun:
            self._begun = True
            for _, listing in self._events:
                self._clips = _clips_of(self._card, listing)
        return next(self._clips)

    def close(self) -> None:
        super().close()
        self._begun = True
        self._clips = iter(())


Found = Union[Card, Clip, Problem]


class Scan(_Stream, Iterator[Found]):
    """The cards below a path with their clips, as they are found. Leaving its `with` block aborts the
    search."""

    def __init__(self, events: _requests.Events) -> None:
        super().__init__(events)
        self._reader = _ScanReader()
        self._ready: Iterator[Found] = iter(())

    def __enter__(self) -> Scan:
        return self

    def __next__(self) -> Found:
        while True:
            for found in self._ready:
                return found
            self._ready = self._reader.read(next(self._events))

    def close(self) -> None:
        super().close()
        self._ready = iter(())


class _ScanReader:
    """Turns the events of a scan into its results."""

    def __init__(self) -> None:
        self._card: Optional[Card] = None

    def read(self, event: _requests.Event) -> Iterator[Found]:
        kind, content = event
        if kind == _requests.CARD:
            self._card = _card_of(content)
            return iter((self._card,))
        if kind == _requests.LISTING and self._card is not None:
            return _clips_of(self._card, content)
        _, text, path = content
        return iter(
            (
                Problem(
                    kind="unreadable",
                    severity="error",
                    role="folder",
                    path=path_of(path) if path else None,
                    detail=text,
                ),
            )
        )


def _card_of(raw: tuple[str, str, str, int]) -> Card:
    path, provider, name, score = raw
    return Card(path=path_of(path), provider=provider, name=name, score=score)


@dataclass(frozen=True, slots=True, kw_only=True)
class Owner:
    """The clip that a file belongs to. `path` is the folder of its structure."""

    path: Path
    provider: str
    key: str
    fields: Fields

    def card(self) -> Card:
        """Opens the card of the clip."""
        return open(self.path, provider=self.provider)

    def to_dict(self) -> dict[str, Any]:
        """Returns the JSON of `sorvik owner`."""
        return {
            "path": text_of(self.path),
            "provider": self.provider,
            "key": self.key,
            "fields": self.fields.to_dict(),
        }


def _start_open(path: PathLike, provider: Optional[str], nearby: bool) -> _requests.Start:
    place = path_argument(path)
    name = None if provider is None else _text_argument(provider, "provider")
    return lambda queue, number: _core.start_open(place, name, nearby, queue, number)


def open(
    path: PathLike,
    *,
    provider: Optional[str] = None,
    nearby: bool = True,
    timeout: Optional[float] = None,
) -> Card:
    """Opens the card at the path, else the one that contains it, else the first one below it, else the
    plain folder.

    With `nearby` false, and with `provider` (such as "ProviderP2"), exactly this path. Raises Gone,
    Unreadable or NotACard.
    """
    return _card_of(_requests.result(_start_open(path, provider, nearby), timeout))


async def aopen(
    path: PathLike, *, provider: Optional[str] = None, nearby: bool = True
) -> Card:
    """The same as `open` in an asyncio event loop. Cancelling the task aborts it."""
    return _card_of(await _requests.async_result(_start_open(path, provider, nearby)))


def _start_scan(
    path: PathLike, nearby: bool, clips: bool, fields: FieldNames
) -> _requests.Start:
    place = path_argument(path)
    names, defaults = _fields_argument(fields, True)
    return lambda queue, number: _core.start_scan(
        place, nearby, clips, names, defaults, queue, number
    )


def scan(
    path: PathLike,
    *,
    nearby: bool = False,
    clips: bool = True,
    fields: FieldNames = None,
    timeout: Optional[float] = None,
) -> Scan:
    """Finds all cards at and below a path: yields each Card, followed by its Clips, or by a Problem if
    it can't be listed.

    With `nearby`, only the known places around the path are searched. Raises NotACard at the end if
    there is no card.
    """
    return Scan(_requests.events(_start_scan(path, nearby, clips, fields), timeout))


async def ascan(
    path: PathLike, *, nearby: bool = False, clips: bool = True, fields: FieldNames = None
) -> AsyncGenerator[Found, None]:
    """The same as `scan` for `async for`. Cancelling the task aborts the search."""
    reader = _ScanReader()
    events = _requests.async_events(_start_scan(path, nearby, clips, fields))
    async with contextlib.aclosing(events):
        async for event in events:
            for found in reader.read(event):
                yield found


def cards(path: PathLike, *, nearby: bool = False, timeout: Optional[float] = None) -> list[Card]:
    """Returns all cards at and below a path; an empty list if there is none."""
    try:
        with scan(path, nearby=nearby, clips=False, timeout=timeout) as found:
            return [card for card in found if isinstance(card, Card)]
    except NotACard:
        return []


def _start_owner(path: PathLike) -> _requests.Start:
    file = path_argument(path)
    return lambda queue, number: _core.start_find_owner(file, queue, number)


def _owner_of(listing: _core.Listing) -> Owner:
    key, values = listing.at(0)
    return Owner(
        path=path_of(listing.path),
        provider=listing.provider,
        key=key,
        fields=Fields(values, Labels(listing=listing), listing),
    )


def owner(path: PathLike, *, timeout: Optional[float] = None) -> Optional[Owner]:
    """Returns the clip that a file belongs to, or None. Outside of cards, it is the file itself as an
    item of its plain folder."""
    try:
        return _owner_of(_requests.result(_start_owner(path), timeout))
    except NotACard:
        return None


async def aowner(path: PathLike) -> Optional[Owner]:
    """The same as `owner` in an asyncio event loop."""
    try:
        return _owner_of(await _requests.async_result(_start_owner(path)))
    except NotACard:
        return None
