# SPDX-License-Identifier: Apache-2.0
"""Includes point one way: host -> subsystem -> platform -> third party.

- A public header includes the standard library and public headers.
- A subsystem includes the standard library, the platform's headers, its own, and those of the one subsystem that
  it builds on; none of these may bring a third-party or system header with it.
- The platform includes no subsystem. Only it, the benchmarks, the examples, the fuzz targets and the tests include
  third-party and system headers.
- The test kit, the examples and the tools see our public headers only, as a host does.
"""

import re

from tree import CPP, cpp_code, files, finding

SUBSYSTEMS = ("execution", "observation", "logging", "keychain", "reachability", "persistence", "extensions")
BUILDS_ON = {"observation": "execution", "reachability": "observation", "persistence": "logging"}
STANDARD = frozenset("""
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef
    cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem forward_list
    fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale
    map memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex
    scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
    string string_view syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map
    unordered_set utility valarray variant vector version
""".split())

_INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"]', re.MULTILINE)


def area(parts):
    """Where a file of ours stands: a pair of its kind ("public" or "private") and its part of the house."""
    if parts[0] == "include":
        parts = parts[2:]
        return "public", "everything" if parts[0] == "VorlanFoundation.h" else parts[0].removesuffix(".h").lower()
    return "private", parts[0]


def target(style, name):
    """What an include names: the area of a file of ours, or "standard" or "foreign"."""
    if name.startswith("VorlanFoundation/"):
        return area(("include", *name.split("/")))
    if style == '"':
        return "private", name.split("/")[0]
    return ("standard" if name in STANDARD else "foreign"), name


def allowed(source, wanted):
    """Whether a file in one area may include one in another; None if nothing is known about the first."""
    (kind, part), (wanted_kind, wanted_part) = source, wanted
    if wanted_kind == "standard" or part in ("tests", "fuzz", "benchmarks"):
        return True
    if wanted_kind == "foreign":
        return kind == "private" and part in ("platform", "examples")
    if part in ("everything", "testing", "examples", "tools"):
        return wanted_kind == "public" or (kind == "private" and wanted_part == part)
    if part not in (*SUBSYSTEMS, "platform"):
        return None
    if kind == "public" and wanted_kind == "private":
        return False
    return wanted_part in (part, BUILDS_ON.get(part)) or (wanted_part == "platform" and part in SUBSYSTEMS)


def includes(path):
    text = cpp_code(path.read_text(encoding="utf-8"), keep_strings=True)
    for match in _INCLUDE.finditer(text):
        yield text.count("\n", 0, match.start()) + 1, match[1], match[2]


def foreign_through(root, name, seen):
    """The third-party header that one of our headers brings along, if any."""
    path = root / "include" / name if name.startswith("VorlanFoundation/") else root / name
    if name in seen or not path.is_file():
        return None
    seen.add(name)
    for _, style, inner in includes(path):
        if target(style, inner)[0] == "foreign":
            return inner
        if found := foreign_through(root, inner, seen):
            return found
    return None


def problem(root, source, style, name):
    wanted = target(style, name)
    verdict = allowed(source, wanted)
    if verdict is None:
        return "no rule says what this folder may include; add one to scripts/checks/includes.py"
    if not verdict:
        return f"{' '.join(source)} may not include {name}"
    ours = wanted[0] in ("public", "private")
    if ours and source[1] in (*SUBSYSTEMS, "testing") and (found := foreign_through(root, name, set())):
        return f"{name} brings {found} along, which {' '.join(source)} may not see"
    return None


def check(root):
    looked_at, findings = 0, []
    for path in files(root, *CPP):
        source = area(path.relative_to(root).parts)
        for line, style, name in includes(path):
            looked_at += 1
            if message := problem(root, source, style, name):
                findings.append(finding(root, path, line, message))
    return looked_at, findings
