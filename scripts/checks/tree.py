# SPDX-License-Identifier: Apache-2.0
"""What the checks share: finding files and reading them as code and comments."""

import re
from pathlib import Path

CPP = (".h", ".cpp")
SCRIPTS = (".py", ".sh", ".cmake", ".txt", ".in", ".supp")

# A literal, which may hold what looks like a comment, or a comment.
_CPP_PARTS = re.compile(
    r'R"(?P<tag>[^(\s]*)\(.*?\)(?P=tag)"|"(?:\\.|[^"\\\n])*"|(?<![\w])\'(?:\\.|[^\'\\\n])+\'|//[^\n]*|/\*.*?\*/',
    re.DOTALL,
)


def files(root, *suffixes, under=None):
    """The files of the tree with one of the suffixes, in a stable order; build folders are no part of it."""
    places = [root / folder for folder in under] if under else [root]
    found = (path for place in places for path in place.rglob("*") if path.is_file())
    return sorted(
        path for path in found
        if path.relative_to(root).parts[0] not in ("build", ".git", ".deps", ".cache")
        and "__pycache__" not in path.parts
        and (not suffixes or path.name.endswith(suffixes))
    )


def is_script(path):
    """Whether a file is a script or says how something is built, by its name or its first line."""
    if path.suffix in SCRIPTS or path.name in (".clang-format", ".clang-tidy", ".gitignore"):
        return True
    with path.open("rb") as file:
        return not path.suffix and file.read(2) == b"#!"


def _blank(text):
    return re.sub(r"[^\n]", " ", text)


def cpp_code(text, keep_strings=False):
    """C++ text with its comments blanked out, and its literals too; the lines keep their numbers."""
    def replace(match):
        part = match.group()
        return part if keep_strings and not part.startswith(("//", "/*")) else _blank(part)
    return _CPP_PARTS.sub(replace, text)


def cpp_comments(text):
    """The comments of C++ text, as pairs of line number and text."""
    for match in _CPP_PARTS.finditer(text):
        if match.group().startswith(("//", "/*")):
            first = text.count("\n", 0, match.start()) + 1
            yield from enumerate(match.group().split("\n"), first)


def comments(path):
    """The lines of a file that are written for people: comments, or everything in a document."""
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".md":
        return list(enumerate(text.split("\n"), 1))
    if path.suffix in CPP:
        return list(cpp_comments(text))
    lines = enumerate(text.split("\n"), 1)
    return [(number, line[line.index("#"):]) for number, line in lines if re.search(r"(^|\s)#", line)]


def finding(root, path, line, message):
    return f"{path.relative_to(root)}:{line}: {message}"
