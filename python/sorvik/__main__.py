# SPDX-License-Identifier: MIT
"""`python3 -m sorvik` runs the program sorvik."""

import os
import sys

from ._errors import Error
from ._program import find


def main() -> int:
    try:
        program = find()
    except Error as error:
        print(f"sorvik: {error}", file=sys.stderr)
        return 1
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    sys.exit(main())
