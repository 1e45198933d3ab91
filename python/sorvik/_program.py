# SPDX-License-Identifier: MIT
"""Runs the program sorvik."""

import os
import shutil
import subprocess
from pathlib import Path

from ._errors import Error


def find() -> str:
    """Returns the path of the program."""
    # In a build tree the program is next to the folder python.
    built = Path(__file__).resolve().parents[2] / "sorvik"
    program = str(built) if built.is_file() else shutil.which("sorvik")
    if program is None:
        raise Error("the program sorvik is not installed")
    return program


def output(*arguments: str) -> str:
    """Runs the program and returns what it prints."""
    done = subprocess.run(
        [find(), *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False
    )
    if done.returncode != 0:
        raise Error(os.fsdecode(done.stderr).strip().removeprefix("sorvik: "))
    return done.stdout.decode("utf-8", "surrogateescape")
