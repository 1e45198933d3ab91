# SPDX-License-Identifier: MIT
from typing import Any, Callable, Optional, Sequence, Union

_RawValue = Union[str, tuple[Any, ...], int, None]

class Failure(Exception): ...

class Listing:
    @property
    def path(self) -> str: ...
    @property
    def provider(self) -> str: ...
    def __len__(self) -> int: ...
    def at(self, index: int) -> tuple[str, dict[str, _RawValue]]: ...
    def typed(self, index: int, field: str) -> Any: ...
    def label(self, field: str) -> str: ...

class Picture:
    def __init__(self, *arguments: Any) -> None: ...
    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...

class Queue:
    def __init__(self) -> None: ...
    def descriptor(self) -> int: ...
    def dispatch(self, max_events: int) -> list[tuple[int, int, Any]]: ...

class Request:
    def next(self, milliseconds: int) -> Optional[tuple[int, Any]]: ...
    def abort(self) -> None: ...

def version() -> str: ...
def initialize() -> None: ...
def shutdown() -> None: ...
def stalled_workers() -> int: ...
def set_language(tag: str) -> None: ...
def start_open(
    path: bytes, provider: Optional[bytes], nearby: bool, queue: Optional[Queue], id: int
) -> Request: ...
def start_list(
    path: bytes,
    provider: bytes,
    names: Optional[Sequence[str]],
    with_defaults: bool,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def start_read_entry(
    path: bytes,
    provider: bytes,
    key: bytes,
    names: Optional[Sequence[str]],
    with_defaults: bool,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def start_list_files(
    path: bytes, provider: bytes, key: Optional[bytes], queue: Optional[Queue], id: int
) -> Request: ...
def start_read_sources(
    path: bytes, provider: bytes, key: bytes, queue: Optional[Queue], id: int
) -> Request: ...
def start_list_parts(
    path: bytes, provider: bytes, key: bytes, queue: Optional[Queue], id: int
) -> Request: ...
def start_join(
    path: bytes,
    provider: bytes,
    key: Optional[bytes],
    format: str,
    output: Optional[bytes],
    allow_gaps: bool,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def start_check(
    path: bytes, provider: bytes, names_only: bool, queue: Optional[Queue], id: int
) -> Request: ...
def start_find_owner(path: bytes, queue: Optional[Queue], id: int) -> Request: ...
def start_render_thumbnail(
    path: bytes,
    provider: bytes,
    key: bytes,
    width: int,
    height: int,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def start_render_picture(
    path: bytes,
    provider: bytes,
    key: bytes,
    width: int,
    height: int,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def start_scan(
    path: bytes,
    nearby: bool,
    with_entries: bool,
    names: Optional[Sequence[str]],
    with_defaults: bool,
    queue: Optional[Queue],
    id: int,
) -> Request: ...
def write_catalogue(
    paths: Sequence[bytes], receive: Callable[[bytes], bool], is_stopped: Callable[[], bool]
) -> None: ...
