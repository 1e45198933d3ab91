# SPDX-License-Identifier: MIT
"""Catalogues of cards."""

from __future__ import annotations

import json
import queue
import threading
from collections.abc import Iterator
from types import TracebackType
from typing import Any, Optional

from . import _core, _requests
from ._cards import PathLike, path_argument
from ._errors import error_of

_TICK_SECONDS = 0.05
_MAX_WAITING_LINES = 1024


class Catalogue(Iterator[dict[str, Any]]):
    """The lines of a catalogue as they are made. Leaving its `with` block ends the run."""

    def __init__(self, paths: list[bytes]) -> None:
        self._paths = paths
        # None follows the last line.
        self._lines: queue.Queue[Optional[bytes]] = queue.Queue(_MAX_WAITING_LINES)
        self._stopped = threading.Event()
        self._failure: Optional[BaseException] = None
        self._thread: Optional[threading.Thread] = None

    def __enter__(self) -> Catalogue:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def __next__(self) -> dict[str, Any]:
        if self._stopped.is_set():
            raise StopIteration
        if self._thread is None:
            _requests.initialize()
            self._thread = threading.Thread(target=self._run)
            self._thread.start()
        line = self._take()
        if line is None:
            self.close()
            if self._failure is not None:
                raise self._failure
            raise StopIteration
        document: dict[str, Any] = json.loads(line)
        return document

    def close(self) -> None:
        """Ends the run if it goes on."""
        self._stopped.set()
        if self._thread is not None:
            self._thread.join()

    def __del__(self) -> None:
        self._stopped.set()

    def _take(self) -> Optional[bytes]:
        while True:  # wakes up for signals
            try:
                return self._lines.get(timeout=_TICK_SECONDS)
            except queue.Empty:
                pass

    def _put(self, line: Optional[bytes]) -> bool:
        while not self._is_stopped():
            try:
                self._lines.put(line, timeout=_TICK_SECONDS)
                return True
            except queue.Full:
                pass
        return False

    def _is_stopped(self) -> bool:
        # At the end of the process `close` may never be called.
        return self._stopped.is_set() or not threading.main_thread().is_alive()

    def _run(self) -> None:
        try:
            _core.write_catalogue(self._paths, self._put, self._is_stopped)
        except _core.Failure as failure:
            self._failure = error_of(*failure.args)
        finally:
            self._put(None)


def catalogue(*paths: PathLike) -> Catalogue:
    """Makes the catalogue of all cards at, around and below the paths: yields the documents that
    `sorvik catalog` prints, for each card, clip, file and problem, and one that says how it ended.

    Raises NotACard at the end if there is no card.
    """
    if not paths:
        raise ValueError("catalogue needs a path")
    return Catalogue([path_argument(path) for path in paths])
