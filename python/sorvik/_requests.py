# SPDX-License-Identifier: MIT
"""Runs requests of the library: waiting with the GIL released, or in an asyncio event loop."""

from __future__ import annotations

import atexit
import contextlib
import itertools
import os
import threading
import time
import weakref
from collections import deque
from typing import TYPE_CHECKING, Any, AsyncGenerator, Callable, Generator, Optional

from . import _core
from ._errors import Error, TimedOut, error_of

# Imported when it is used first: it takes longer than the rest of the package.
if TYPE_CHECKING:
    import asyncio

# Kinds of events of the C interface.
END, CARD, LISTING, FILES, REPORT, PICTURE, PROBLEM, SOURCES, PARTS, JOIN_LISTS = range(10)

# How often a waiting thread checks for signals such as Ctrl-C.
_TICK_MILLISECONDS = 50

Start = Callable[[Optional[_core.Queue], int], _core.Request]
Event = tuple[int, Any]
Events = Generator[Event, None, None]

_lock = threading.Lock()
_initialized_in: Optional[int] = None  # the process


def _shutdown() -> None:
    if _initialized_in == os.getpid():
        _core.shutdown()


def initialize() -> None:
    global _initialized_in
    if _initialized_in == os.getpid():
        return
    with _lock:
        if _initialized_in is None:
            _core.initialize()
            _initialized_in = os.getpid()
            atexit.register(_shutdown)
    if _initialized_in != os.getpid():
        raise Error("the library can't be used after fork: use the start method 'spawn'")


def _start(start: Start, queue: Optional[_core.Queue], number: int) -> _core.Request:
    try:
        initialize()
        return start(queue, number)
    except _core.Failure as failure:
        raise error_of(*failure.args) from None


def events(start: Start, timeout: Optional[float] = None) -> Events:
    """Yields the events of a request up to its end; raises if it fails.

    The request is aborted when the iterator is closed, by an exception such as KeyboardInterrupt, and
    after `timeout` seconds.
    """
    request = _start(start, None, 0)
    limit = None if timeout is None else time.monotonic() + timeout
    try:
        while True:
            event = request.next(_TICK_MILLISECONDS)
            if event is None:
                if limit is not None and time.monotonic() >= limit:
                    raise TimedOut(f"no result within {timeout:g} s")
                continue
            if event[0] == END:
                _raise_failure(event[1])
                return
            yield event
            if limit is not None and time.monotonic() >= limit:
                raise TimedOut(f"not finished within {timeout:g} s")
    finally:
        request.abort()


def result(start: Start, timeout: Optional[float] = None) -> Any:
    """Waits for the one result of a request."""
    content = None
    for _, content in events(start, timeout):
        pass
    return content


def _raise_failure(end: tuple[int, str, str]) -> None:
    if end[0] != 0:
        raise error_of(*end)


class _LoopQueue:
    """The queue of an asyncio event loop. Watched only while requests run."""

    def __init__(self, loop: asyncio.AbstractEventLoop) -> None:
        self._loop = weakref.ref(loop)
        self._queue = _core.Queue()
        self._numbers = itertools.count(1)
        self._receivers: dict[int, Callable[[Event], None]] = {}

    def start(self, start: Start, receive: Callable[[Event], None]) -> tuple[int, _core.Request]:
        loop = self._loop()
        assert loop is not None
        number = next(self._numbers)
        request = _start(start, self._queue, number)
        if not self._receivers:
            loop.add_reader(self._queue.descriptor(), self._dispatch)
        self._receivers[number] = receive
        return number, request

    def finish(self, number: int) -> None:
        if self._receivers.pop(number, None) is None or self._receivers:
            return
        loop = self._loop()
        if loop is not None and not loop.is_closed():
            loop.remove_reader(self._queue.descriptor())

    def _dispatch(self) -> None:
        for number, kind, content in self._queue.dispatch(64):
            receive = self._receivers.get(number)
            if receive is not None:
                receive((kind, content))


_queues: weakref.WeakKeyDictionary[asyncio.AbstractEventLoop, _LoopQueue] = (
    weakref.WeakKeyDictionary()
)


def _queue_of_running_loop() -> _LoopQueue:
    import asyncio

    initialize()
    loop = asyncio.get_running_loop()
    queue = _queues.get(loop)
    if queue is None:
        queue = _queues[loop] = _LoopQueue(loop)
    return queue


async def async_events(start: Start) -> AsyncGenerator[Event, None]:
    """The same as `events` in the running event loop. Cancelling the task aborts the request."""
    import asyncio

    queue = _queue_of_running_loop()
    arrived: deque[Event] = deque()
    wake = asyncio.Event()

    def receive(event: Event) -> None:
        arrived.append(event)
        wake.set()

    number, request = queue.start(start, receive)
    try:
        while True:
            while not arrived:
                wake.clear()
                await wake.wait()
            event = arrived.popleft()
            if event[0] == END:
                _raise_failure(event[1])
                return
            yield event
    finally:
        request.abort()
        queue.finish(number)


async def async_result(start: Start) -> Any:
    """Waits for the one result of a request in the running event loop."""
    content = None
    async with contextlib.aclosing(async_events(start)) as arriving:
        async for _, content in arriving:
            pass
    return content


def set_language(tag: str) -> None:
    """Sets the language of labels and names of providers, such as "de-DE"; "" is that of the
    environment."""
    try:
        _core.set_language(tag)
    except _core.Failure as failure:
        raise error_of(*failure.args) from None


def stalled_workers() -> int:
    """Returns the number of aborted operations that are still stuck, such as in a share that doesn't
    answer."""
    return _core.stalled_workers()
