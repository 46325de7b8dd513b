"""The mutants that are known to change nothing that anyone could observe.

The list is a text file. An entry is one line, as a survivor is printed but without the line's
number. The reason for it, or for several entries, is indented below:

    room/file.cpp: ULONG moved = 0; => ULONG moved = {number};
        The transport sets it before anyone looks at it.

{number} stands for any number, {anything} for anything. A line that begins with # is a remark."""

import re
from dataclasses import dataclass

_PLACEHOLDERS = {"{number}": r"-?(?:0[xX][0-9A-Fa-f]+|[0-9.]+)[uUlLfF]*", "{anything}": ".*"}


@dataclass(frozen=True)
class Entry:
    path: str
    before: str
    after: str
    reason: str

    def matches(self, mutant):
        return (mutant.path == self.path and mutant.before == self.before
                and re.fullmatch(self._pattern(), mutant.after) is not None)

    def _pattern(self):
        return "".join(_PLACEHOLDERS.get(part, re.escape(part))
                       for part in re.split(r"(\{number\}|\{anything\})", self.after))

    def __str__(self):
        return f"{self.path}: {self.before} => {self.after}"


def parse(text):
    entries = []
    heads, reason = [], []

    def close():
        if heads and not reason:
            raise ValueError(f"no reason is given for: {heads[-1]}")
        entries.extend(_entry(head, " ".join(reason)) for head in heads)

    for line in text.splitlines():
        if line.startswith("#") or not line.strip():
            continue
        if line[0].isspace():
            reason.append(line.strip())
            continue
        if reason:
            close()
            heads, reason = [], []
        heads.append(line.rstrip())
    close()
    return entries


def _entry(head, reason):
    path, _, change = head.partition(": ")
    before, arrow, after = change.partition(" => ")
    if not arrow:
        raise ValueError(f"not an entry: {head}")
    return Entry(path, before, after, reason)


def stale(entries, mutants):
    """Entries that none of the mutants matches: the code has changed below them."""
    return [entry for entry in entries if not any(entry.matches(mutant) for mutant in mutants)]
