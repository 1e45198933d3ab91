# SPDX-License-Identifier: MIT
"""Lists camera cards as clips.

    import sorvik

    card = sorvik.open("/media/CARD")
    for clip in card:
        print(clip.name, clip.start, clip.duration, clip.created)

Everything that reads a disk runs on the worker threads of the library with the GIL released: other threads
go on, Ctrl-C works while a share doesn't answer, and `timeout` limits the wait. The functions whose names
begin with `a` are for asyncio. Values are frozen, comparable, hashable and picklable. Fork only with the
start method "spawn" of multiprocessing.
"""

from . import _core
from ._cards import (
    Card,
    Clip,
    Clips,
    Found,
    Owner,
    Scan,
    aopen,
    aowner,
    ascan,
    cards,
    open,
    owner,
    scan,
)
from ._catalogue import Catalogue, catalogue
from ._errors import (
    Aborted,
    Error,
    Gone,
    InvalidArgument,
    JoinWarning,
    NoEntry,
    NoPicture,
    NotACard,
    TimedOut,
    Unreadable,
)
from ._requests import set_language, stalled_workers
from ._typed import Frames, FrameSize, Timecode, Value
from ._values import Field, Fields, File, Part, Picture, Problem, Source, Verdict

__version__ = _core.version()

__all__ = [
    "Aborted",
    "Card",
    "Catalogue",
    "Clip",
    "Clips",
    "Error",
    "Field",
    "Fields",
    "File",
    "Found",
    "FrameSize",
    "Frames",
    "Gone",
    "InvalidArgument",
    "JoinWarning",
    "NoEntry",
    "NoPicture",
    "NotACard",
    "Owner",
    "Part",
    "Picture",
    "Problem",
    "Scan",
    "Source",
    "TimedOut",
    "Timecode",
    "Unreadable",
    "Value",
    "Verdict",
    "aopen",
    "aowner",
    "ascan",
    "cards",
    "catalogue",
    "open",
    "owner",
    "scan",
    "set_language",
    "stalled_workers",
]
