# SPDX-License-Identifier: MIT
"""`python3 -m sorvik` runs the program sorvik."""

import os
import shutil
import sys
from pathlib import Path


def _program() -> str:
    # In a build tree the program is next to the folder python.
    built = Path(__file__).resolve().parents[2] / "sorvik"
    return str(built) if built.is_file() else shutil.which("sorvik") or ""


def main() -> int:
    program = _program()
    if not program:
        print("sorvik: program not found", file=sys.stderr)
        return 1
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    sys.exit(main())
