# SPDX-License-Identifier: Apache-2.0
"""A source stays under 400 lines: a longer one is two things."""

from tree import CPP, files, finding

LIMIT = 400


def check(root):
    sources = files(root, *CPP)
    lengths = [(path, path.read_text(encoding="utf-8").count("\n")) for path in sources]
    return len(sources), [
        finding(root, path, LIMIT, f"has {length} lines; a file stays under {LIMIT}")
        for path, length in lengths if length >= LIMIT
    ]
