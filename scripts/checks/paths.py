# SPDX-License-Identifier: Apache-2.0
"""Every path that a document or a comment names exists.

Looks in documents, and in the comments of sources and scripts, for
- paths that begin with one of the tree's folders. Names of subsystems are also plain words ("logging/tracing"), so
  below those a path counts only with a file's ending or in backticks;
- public headers, as a host includes them;
- file names in backticks or quotes that look like ours: `Queue.h`;
- links within documents.
"""

import re

from tree import CPP, comments, files, finding, is_script

FOLDERS = ("include", "platform", "tests", "benchmarks", "fuzz", "examples", "tools", "cmake", "scripts", "docs", ".ci")
WORDS = ("execution", "observation", "logging", "keychain", "reachability", "persistence", "extensions", "testing")

_ENDING = r"\.(?:h|cpp|md|py|sh|cmake|txt|json|in|png|svg)\b"
_BEFORE = r"(?<![\w/.<>$}~:-])"
_PATTERNS = (
    re.compile(_BEFORE + r"(?:\./)?((?:" + "|".join(map(re.escape, FOLDERS)) + r")/[\w./+-]*)"),
    re.compile(_BEFORE + r"((?:" + "|".join(WORDS) + r")/[\w./+-]*" + _ENDING + ")"),
    re.compile(r"`((?:" + "|".join(WORDS) + r")/[\w./+-]*)`"),
    re.compile(r"(?<![\w/.])(VorlanFoundation/[\w/]+\.h)\b"),
    re.compile(r"[`\"]([A-Z]\w*\.(?:h|cpp|md|cmake))[`\"]"),
)
_LINK = re.compile(r"\]\(([^)\s#]+)(?:#[^)]*)?\)")


def cleaned(path, behind):
    """A path without the prose around it: no closing full stop, and of a pattern only the folder it is in."""
    if behind and behind in "*<${[":
        return path.rpartition("/")[0]
    return re.sub(r"(?:\.{2,}|[.,-])+$", "", path)


def named_paths(line, is_document):
    """The paths that a line names."""
    for pattern in _PATTERNS:
        for match in pattern.finditer(line):
            yield cleaned(match[1], line[match.end():match.end() + 1])
    if is_document:
        for match in _LINK.finditer(line):
            if not re.match(r"\w+:", match[1]):
                yield match[1]


def exists(root, beside, name, names):
    if "/" not in name and name in names:
        return True
    return any((place / name).exists() for place in (root, root / "include", beside))


def check(root):
    everything = files(root)
    names = {path.name for path in everything}
    looked_at, findings = 0, []
    for path in everything:
        if path.suffix not in (*CPP, ".md") and not is_script(path):
            continue
        for number, line in comments(path):
            for name in sorted(set(named_paths(line, path.suffix == ".md"))):
                looked_at += 1
                if not exists(root, path.parent, name, names):
                    findings.append(finding(root, path, number, f"names {name}, which does not exist"))
    return looked_at, findings
