# SPDX-License-Identifier: MIT
"""Threads, aborts, timeouts, asyncio, and wrong use."""

import asyncio
import multiprocessing
import os
import signal
import subprocess
import sys
import threading
import time

import pytest

import sorvik

# An abort takes 100 ms; the rest is for a busy machine.
ABORT_SECONDS = 3.0


def test_timeout_while_a_share_does_not_answer(stopped_share):
    begun = time.monotonic()
    with pytest.raises(sorvik.TimedOut):
        sorvik.open(stopped_share / "folder", timeout=0.2)
    assert time.monotonic() - begun < ABORT_SECONDS


def test_interrupt_while_a_share_does_not_answer(stopped_share):
    threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
    begun = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        sorvik.open(stopped_share / "folder")
    assert time.monotonic() - begun < ABORT_SECONDS


def test_cancelled_task_aborts_while_a_share_does_not_answer(stopped_share, sample):
    async def main():
        stuck = asyncio.create_task(sorvik.aopen(stopped_share / "folder"))
        await asyncio.sleep(0.2)
        # Other requests of the loop are answered meanwhile.
        assert (await sorvik.aopen(sample)).score == 100
        stuck.cancel()
        begun = time.monotonic()
        with pytest.raises(asyncio.CancelledError):
            await stuck
        assert time.monotonic() - begun < ABORT_SECONDS
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(sorvik.aopen(stopped_share / "folder"), 0.2)

    asyncio.run(main())


def test_process_ends_while_a_share_does_not_answer(stopped_share):
    code = (
        "import sorvik, sys, threading, time\n"
        "t = threading.Thread(target=sorvik.open, args=(sys.argv[1],), daemon=True)\n"
        "t.start(); time.sleep(0.3)\n"
    )
    subprocess.run(
        [sys.executable, "-c", code, stopped_share / "folder"], check=True, timeout=20
    )


def test_asyncio_gives_the_same_answers(sample):
    async def main():
        card = await sorvik.aopen(sample)
        assert card == sorvik.open(sample)
        clips = [clip async for clip in card]
        assert clips == list(card)
        assert await card.averdict() == card.verdict()
        assert await card.afiles() == card.files()
        pictures = await asyncio.gather(*(clip.athumbnail(32, 18) for clip in clips))
        assert pictures == [clip.thumbnail(32, 18) for clip in clips]
        assert await clips[0].apicture() == clips[0].picture()
        assert await sorvik.aowner(clips[0].path) == sorvik.owner(clips[0].path)
        assert [found async for found in sorvik.ascan(sample)] == list(sorvik.scan(sample))
        async for _ in sorvik.ascan(sample):
            break
        with pytest.raises(sorvik.Gone):
            await sorvik.aopen("/no/such/path")

    for _ in range(2):  # each in a new event loop
        asyncio.run(main())


def test_streams_are_closed_early(sample):
    card = sorvik.open(sample)
    with card.clips() as clips:
        first = next(clips)
    assert next(clips, None) is None
    with sorvik.scan(sample) as scan:
        assert next(scan) == card
    assert next(scan, None) is None
    assert first == next(iter(card))


def test_catalogues_end_early(sample, stopped_share):
    with sorvik.catalogue(sample) as lines:
        assert next(lines)["type"] == "card"
    assert next(lines, None) is None
    stuck = sorvik.catalogue(stopped_share / "folder")
    threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
    begun = time.monotonic()
    with pytest.raises(KeyboardInterrupt), stuck:
        next(stuck)
    assert time.monotonic() - begun < ABORT_SECONDS
    with pytest.raises(sorvik.Gone):
        list(sorvik.catalogue("/no/such"))
    with pytest.raises(ValueError):
        sorvik.catalogue()
    # A process may end with a catalogue that wasn't read to its end.
    code = "import sorvik, sys; lines = sorvik.catalogue(sys.argv[1]); next(lines)"
    subprocess.run([sys.executable, "-c", code, sample], check=True, timeout=20)


def test_threads_share_the_library(sample):
    expected = list(sorvik.open(sample))
    failures = []

    def work():
        try:
            for _ in range(20):
                assert list(sorvik.open(sample)) == expected
                with pytest.raises(sorvik.Gone):
                    sorvik.open(sample / "gone", nearby=False)
        except BaseException as error:
            failures.append(error)

    threads = [threading.Thread(target=work) for _ in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures


def test_other_threads_run_while_one_waits(stopped_share):
    def wait():
        with pytest.raises(sorvik.TimedOut):
            sorvik.open(stopped_share / "folder", timeout=0.5)

    waiting = threading.Thread(target=wait)
    waiting.start()
    steps = 0
    while waiting.is_alive():
        time.sleep(0.001)
        steps += 1
    assert steps > 20


def resident_kilobytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") // 1024


def test_opens_do_not_leak(sample):
    """SORVIK_TEST_OPENS sets the number of opens, such as 100000."""

    def use():
        card = sorvik.open(sample, nearby=False)
        with pytest.raises(sorvik.Gone):
            sorvik.open("/no/such/path")
        return card

    for _ in range(200):
        list(use())
    before = resident_kilobytes()
    for number in range(int(os.environ.get("SORVIK_TEST_OPENS", "1000"))):
        card = use()
        if number % 10 == 0:
            for clip in card:
                clip.thumbnail(64, 36)
    assert resident_kilobytes() - before < 4096
    assert len(os.listdir("/proc/self/fd")) < 50


def use_after_fork(path, results):
    try:
        sorvik.open(path)
    except sorvik.Error as error:
        results.put(str(error))


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes(sample, method):
    card = sorvik.open(sample)
    context = multiprocessing.get_context(method)
    if method == "spawn":
        with context.Pool(1) as pool:
            assert pool.map(list, [card]) == [list(card)]
        return
    results = context.Queue()
    process = context.Process(target=use_after_fork, args=(sample, results))
    process.start()
    assert "after fork" in results.get(timeout=10)
    process.join()
    assert process.exitcode == 0


@pytest.mark.parametrize(
    "use, error, text",
    [
        (lambda card: sorvik.open(""), ValueError, "path must not be empty"),
        (lambda card: sorvik.open("/a\0b"), ValueError, "null byte"),
        (lambda card: sorvik.open(None), TypeError, "NoneType"),
        (lambda card: sorvik.open("/" + 5000 * "x"), ValueError, "path is too long"),
        (lambda card: sorvik.open("/no/such"), FileNotFoundError, "/no/such: No such file"),
        (lambda card: sorvik.open("/etc/hosts"), sorvik.NotACard, "no provider for this path"),
        (lambda card: sorvik.open("/", provider="X"), ValueError, "unknown provider 'X'"),
        (lambda card: sorvik.open("/", provider="ProviderP2"), sorvik.NotACard, "not supported"),
        (lambda card: sorvik.open("/", provider=7), TypeError, "provider must be a str, not int"),
        (lambda card: card.clip("nothing"), LookupError, "no entry 'nothing'"),
        (lambda card: card.clip(""), ValueError, "key must be"),
        (lambda card: card.clip("a\0"), ValueError, "key must be"),
        (lambda card: card.clips("Name"), TypeError, "iterable of names"),
        (lambda card: card.clips([1]), TypeError, "name of a field must be a str"),
        (lambda card: card.verdict("deep"), ValueError, "depth must be"),
        (lambda card: next(iter(card)).thumbnail(0, 5), ValueError, "1 to 16384"),
        (lambda card: next(iter(card)).picture(5, -1), ValueError, "1 to 16384"),
        (lambda card: list(sorvik.scan("/no/such")), sorvik.Gone, "No such file"),
        (lambda card: sorvik.owner("/no/such"), sorvik.Gone, "No such file"),
    ],
)
def test_wrong_use_raises(sample, use, error, text):
    with pytest.raises(error) as raised:
        use(sorvik.open(sample))
    assert text in str(raised.value)


def test_places_without_cards(tmp_path):
    assert sorvik.cards(tmp_path) == []
    with pytest.raises(sorvik.NotACard):
        list(sorvik.scan(tmp_path))
    assert list(sorvik.open(tmp_path)) == []
    gone = tmp_path / "gone"
    gone.mkdir()
    card = sorvik.open(gone, nearby=False)
    gone.rmdir()
    with pytest.raises(sorvik.Gone) as raised:
        list(card)
    assert raised.value.filename == str(gone) and raised.value.errno == 2


def test_import_is_fast():
    code = "import sorvik, sys; sys.exit('asyncio' in sys.modules)"
    subprocess.run([sys.executable, "-c", code], check=True)
