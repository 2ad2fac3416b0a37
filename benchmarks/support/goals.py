# SPDX-License-Identifier: Apache-2.0
"""Reads the goals and judges runs by them."""

import sys


class Goal:
    """What one of our rows must reach against another row, or by itself."""

    def __init__(self, ours, against, kind, limit):
        self.ours, self.against, self.kind, self.limit = ours, against, kind, limit
        self.reached = []  # in each run

    def judge(self, rows):
        if self.kind == "allocations":
            self.reached.append(rows[self.ours]["allocations"])
            return
        ratio = rows[self.ours]["median"] / rows[self.against]["median"]
        self.reached.append(ratio if self.kind == "atMost" else 1 / ratio)

    def is_met_by(self, value):
        if self.kind == "allocations":
            return value == self.limit
        return value <= self.limit if self.kind == "atMost" else value >= self.limit

    def is_met(self):
        return any(self.is_met_by(value) for value in self.reached)

    def verdict(self):
        """What was reached in each run until it was enough, and what was wanted."""
        verdict = "met" if self.is_met() else "**missed**"
        reached = ", then ".join(f"{value:.2f}" for value in self.shown())
        if self.kind == "allocations":
            return f"{reached} allocations, wanted {self.limit}: {verdict}"
        words = ("at most", "as long") if self.kind == "atMost" else ("at least", "faster")
        return f"ours {reached}x {words[1]}, wanted {words[0]} {self.limit}: {verdict}"

    def shown(self):
        return self.reached[:1] if self.is_met_by(self.reached[0]) else self.reached


def _goals(data):
    for one in data["goal"]:
        kind = "atMost" if "atMost" in one else "atLeast"
        for n in one.get("numbers", [0]):
            yield Goal(one["ours"].format(n=n), one["against"].format(n=n), kind, one[kind])
    for one in data["allocations"]:
        for ours in one["ours"]:
            yield Goal(ours, ours, "allocations", one["exactly"])


class Goals:
    """All goals, with the topics."""

    def __init__(self, data):
        self.topics = data["topic"]
        self._goals = list(_goals(data))

    def _of(self, rows):
        """The goals of the topic that the rows are of."""
        return [goal for goal in self._goals if goal.ours in rows]

    def judge(self, rows):
        for goal in self._of(rows):
            if goal.against not in rows:
                sys.exit(f"goals.toml speaks of a row that there is not: {goal.against}")
            goal.judge(rows)

    def check_all_judged(self):
        """To be called when all topics were run: a goal that is still unjudged is of a row that there is not."""
        for goal in self._goals:
            if not goal.reached:
                sys.exit(f"goals.toml speaks of a row that there is not: {goal.ours}")

    def missed(self, rows):
        return [goal for goal in self._of(rows) if not goal.is_met()]

    def compared_with(self, names):
        """The rows that ours among these names are compared with, each once."""
        return list(dict.fromkeys(goal.against for goal in self._goals if goal.ours in names))

    def verdicts(self, name, names):
        """The verdicts on ours among `names` against the row called `name`."""
        several = sum("/ours: " in one for one in names) > 1
        for goal in self._goals:
            if goal.against == name and goal.ours in names:
                which = goal.ours.partition("/ours: ")[2] + ": " if several else ""
                yield which + goal.verdict()
