# SPDX-License-Identifier: MIT
"""Made cards, the program to compare with, and a network share that can be stopped."""

import json
import os
import pathlib
import signal
import subprocess

import pytest

import sorvik

BINARIES = pathlib.Path(os.environ["SORVIK_BINARY_DIR"])
SOURCES = pathlib.Path(os.environ["SORVIK_SOURCE_DIR"])


@pytest.fixture(scope="session")
def made_cards():
    """A list of (provider, path) of cards that exist until the end of the tests."""
    with subprocess.Popen(
        [BINARIES / "sorvik-test-cards"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
    ) as maker:
        lines = iter(maker.stdout.readline, "\n")
        yield [line.rstrip("\n").split(" ", 1) for line in lines]
        maker.stdin.close()


@pytest.fixture(scope="session")
def sample(tmp_path_factory):
    """A small P2 card with pictures."""
    card = tmp_path_factory.mktemp("sample") / "CARD"
    subprocess.run(["bash", SOURCES / "tools/make-sample-card", card], check=True)
    return card


def _run(*arguments):
    return subprocess.run(
        [BINARIES / "sorvik", *arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL
    ).stdout


@pytest.fixture(scope="session")
def program():
    """Runs the program and returns its JSON."""
    return lambda *arguments: json.loads(_run(*arguments, "--json"))


@pytest.fixture
def stopped_share(tmp_path):
    """A mounted share with a folder, whose server doesn't answer."""
    server = BINARIES / "sorvik-test-share"
    mount_point = tmp_path / "share"
    (tmp_path / "server" / "folder").mkdir(parents=True)
    mount_point.mkdir()
    if not server.exists():
        pytest.skip("the tests were built without libfuse3")
    with subprocess.Popen(
        [server, tmp_path / "server", mount_point, "sshfs"], stdout=subprocess.PIPE
    ) as process:
        try:
            if not process.stdout.read(1):
                pytest.skip("this machine doesn't allow a FUSE mount")
            process.send_signal(signal.SIGSTOP)
            yield mount_point
        finally:
            subprocess.run(["umount", "-l", mount_point], stderr=subprocess.DEVNULL)
            process.kill()


def open_exact(provider, path):
    return sorvik.open(path, provider=provider)
