# SPDX-License-Identifier: MIT
"""mypy --strict accepts the package and the examples, and the stub is that of the module."""

import inspect
import os
import re
import subprocess
import sys

from conftest import SOURCES

import sorvik._core


def mypy(*arguments, cache):
    run = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--cache-dir", cache, *arguments],
        stdout=subprocess.PIPE,
        env={**os.environ, "MYPYPATH": str(SOURCES / "python")},
        text=True,
    )
    assert run.returncode == 0, run.stdout


def test_mypy_accepts_package_and_examples(tmp_path):
    mypy("-p", "sorvik", cache=tmp_path)
    for example in sorted((SOURCES / "examples/python").glob("*.py")):
        mypy("--ignore-missing-imports", example, cache=tmp_path)


def test_stub_declares_the_module():
    stub = (SOURCES / "python/sorvik/_core.pyi").read_text()
    declared = set(re.findall(r"^(?:def|class) (\w+)", stub, re.M))
    real = {name for name in dir(sorvik._core) if not name.startswith("_")}
    assert declared == real
    for name in ("Listing", "Picture", "Queue", "Request"):
        members = {
            member
            for member in vars(getattr(sorvik._core, name))
            if not member.startswith("_") or member == "__len__"
        }
        body = re.search(rf"^class {name}:\n((?:    .*\n)+)", stub, re.M)[1]
        assert members <= set(re.findall(r"def (\w+)", body)), name


def test_everything_public_has_a_docstring():
    for name in sorvik.__all__:
        value = getattr(sorvik, name)
        if inspect.isclass(value) or inspect.isfunction(value):
            assert inspect.getdoc(value), name
