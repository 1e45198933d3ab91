# SPDX-License-Identifier: MIT
"""Searches a folder for cards and checks them, with progress: scan_progress.py PATH

Ctrl-C aborts it at once, even if a share doesn't answer."""

import asyncio
import sys

import sorvik


async def main(path: str) -> None:
    clips = 0
    checks: list[asyncio.Task[sorvik.Verdict]] = []
    async for found in sorvik.ascan(path):
        if isinstance(found, sorvik.Clip):
            clips += 1
        elif isinstance(found, sorvik.Card):
            checks.append(asyncio.create_task(found.averdict()))
        else:
            print(found, file=sys.stderr)
        print(f"\r{len(checks)} cards, {clips} clips", end="", file=sys.stderr)
    print(file=sys.stderr)
    for verdict in await asyncio.gather(*checks):
        print("complete  " if verdict else "INCOMPLETE", verdict.path)


if __name__ == "__main__":
    try:
        asyncio.run(main(sys.argv[1]))
    except sorvik.Error as error:
        sys.exit(str(error))
