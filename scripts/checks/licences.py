# SPDX-License-Identifier: Apache-2.0
"""Every source and script names its licence in its first lines."""

from tree import CPP, files, finding, is_script

LINE = "SPDX-License-Identifier: Apache-2.0"


def check(root):
    looked_at, findings = 0, []
    for path in files(root):
        if path.suffix not in CPP and not is_script(path):
            continue
        looked_at += 1
        with path.open(encoding="utf-8") as file:
            first = [file.readline().rstrip("\n") for _ in range(2)]
        wanted = ("// " if path.suffix in CPP else "# ") + LINE
        if wanted != first[1 if first[0].startswith("#!") else 0]:
            findings.append(finding(root, path, 1, f"does not begin with `{wanted}`"))
    return looked_at, findings
