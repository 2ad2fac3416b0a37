# SPDX-License-Identifier: Apache-2.0
"""Every public type says from which threads it may be used.

Looks at the classes and structs that public headers define in namespace vorlan, directly or in a namespace within
it that is not called detail. A class, and a struct with any function of its own that is not defaulted, needs a
documentation comment with a `Threads:` line; a struct that only holds values does not. The labels of such a comment
keep one order.
"""

import re

from tree import cpp_code, files, finding

LABELS = ("Threads", "Owns", "Re-entrancy", "Time", "Errors", "Example")

_NAMESPACE = re.compile(r"\b(?:inline\s+)?namespace\s+([\w:]+)\s*$")
_TYPE = re.compile(r"(?<!enum )\b(class|struct)\s+(?:\[\[[^\]]*\]\]\s*|VORLAN_\w+(?:\([^)]*\))?\s+|alignas\([^)]*\)\s*)*"
                   r"(\w+)(<.*>)?(?:\s+final)?\s*(?::(?!:).*)?$", re.DOTALL)
_FUNCTION = re.compile(r"[\w>&*\])]\s*\([^;{}]*\)[^;{}=]*(?:=\s*(\w+)\s*;|[;{])")


def scopes(code):
    """Yields, for each brace that opens a scope: the text before it, its place, its end, and the scopes around it."""
    stack, start = [], 0
    opened = []
    for match in re.finditer(r"[{};]|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", code, re.MULTILINE):
        if match.group() == "{":
            opened.append([code[start:match.start()], match.start(), None, list(stack)])
            stack.append(opened[-1])
        elif match.group() == "}" and stack:
            stack.pop()[2] = match.start()
        start = match.end()
    return opened


def namespace_of(scope):
    """The namespace that a scope stands in directly, or None if it stands in anything else."""
    names = []
    for head, *_ in scope[3]:
        match = _NAMESPACE.search(head)
        if not match:
            return None
        names += match[1].split("::")
    return names


def has_functions(body):
    """Whether a struct's body has functions that are not defaulted. Those of types within it do not count."""
    while (flat := re.sub(r"\b(?:struct|class|union|enum)\b[^;{}()]*\{[^{}]*\}", " ", body)) != body:
        body = flat
    body = re.sub(r"\[\[.*?\]\]|\(\*\w*\)\s*\([^)]*\)", "", body)
    while (flat := re.sub(r"<[^<>;{}]*>", "", body)) != body:
        body = flat
    body = re.sub(r"=\s*[^;={}]*\([^;]*;", ";", body)
    return any(match[1] not in ("default", "delete") for match in _FUNCTION.finditer(body))


def comment_above(text, place):
    """The documentation comment that stands directly above a place in the text."""
    lines = text[:place].split("\n")[:-1]
    comment = []
    while lines and lines[-1].lstrip().startswith("///"):
        comment.insert(0, lines.pop().strip())
    return comment


def public_types(code):
    """Yields the match of _TYPE for every type that code defines in public, with the head, start and end of its body."""
    for scope in scopes(code):
        head, brace, end, _ = scope
        names = namespace_of(scope)
        match = _TYPE.search(re.sub(r"\benum\s+(?:class|struct)\b", "enum", head))
        if match and names and names[0] == "vorlan" and "detail" not in names:
            yield match, head, brace, end


def documented_types(text):
    """Yields place, name and documentation comment of every type that must say how it behaves.

    What specialises a template is another form of it, and speaks for it only if the template itself has no body;
    the comment may then also be above the template's declaration.
    """
    code = cpp_code(text)
    seen = set()
    for match, head, brace, end in public_types(code):
        name = match[2]
        if (match[3] and name in seen) or (match[1] == "struct" and not has_functions(code[brace + 1:end])):
            continue
        seen.add(name)
        place = brace - len(head.lstrip())
        comment = comment_above(text, place)
        if not comment and (declared := re.search(rf"^template <[^;{{}}]*\b{name};", code, re.MULTILINE)):
            comment = comment_above(text, declared.start())
        yield place, name, comment


def problem(name, comment):
    labels = [match[1] for line in comment if (match := re.match(r"/// ([A-Z][\w-]+):(?:\s|$)", line))]
    known = [label for label in labels if label in LABELS]
    if not any(re.match(r"/// Threads:\s+\S", line) for line in comment):
        return f"{name} does not say from which threads it may be used (a `/// Threads: ...` line above it)"
    if known != sorted(known, key=LABELS.index):
        return f"{name} has its labels out of order: {', '.join(LABELS)}"
    return None


def check(root):
    looked_at, findings = 0, []
    for path in files(root, ".h", under=["include"]):
        text = path.read_text(encoding="utf-8")
        for place, name, comment in documented_types(text):
            looked_at += 1
            if message := problem(name, comment):
                findings.append(finding(root, path, text.count("\n", 0, place) + 1, message))
    return looked_at, findings
