# SPDX-License-Identifier: MIT
"""`python3 -m sorvik` runs the program sorvik."""

import os
import shutil
import sys
from pathlib import Path
from typing import Optional


def _find() -> Optional[str]:
    # In a build tree the program is next to the folder python.
    built = Path(__file__).resolve().parents[2] / "sorvik"
    return str(built) if built.is_file() else shutil.which("sorvik")


def main() -> int:
    program = _find()
    if program is None:
        print("sorvik: the program sorvik is not installed", file=sys.stderr)
        return 1
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    sys.exit(main())
