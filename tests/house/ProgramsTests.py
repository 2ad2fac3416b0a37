# SPDX-License-Identifier: Apache-2.0
"""Each test program given has cases: one that lost them would pass for ever."""

import subprocess
import sys


def cases(program):
    listing = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True).stdout
    return [line.strip() for line in listing.split("\n") if line.startswith("  ")]


if __name__ == "__main__":
    counts = {program: len(cases(program)) for program in sys.argv[1:]}
    for program, count in counts.items():
        print(f"{program}: {count} cases")
    sys.exit(0 if counts and all(counts.values()) else 1)
