"""Prints what tests missed of the library: coverage.py COUNTS PAGE, with llvm-cov's export and the page
that names what may be missed, a row of a table for each: | file | text of the line | why |.

The last line is "lines X %, branches Y %". Fails when something is missed that the page does not name,
or when the page names what is not missed."""

import collections
import json
import os
import pathlib
import sys

from rooms import ROOMS, files_of

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOM_OF = {source: room for room in ROOMS for source in files_of(room, ROOT)}


def source_of(filename):
    """As a path below the project's root; the compiler has named it from where it builds."""
    return os.path.normpath(filename).removeprefix("build/coverage/")


def missed_lines(segments):
    """The numbers of lines with a stretch that was never run; a stretch that ends at a line's beginning
    has nothing of that line."""
    lines = set()
    for start, end in zip(segments, segments[1:]):
        counted, runs, is_gap = start[3], start[2], start[5]
        if counted and runs == 0 and not is_gap:
            lines.update(range(start[0], end[0] + (1 if end[1] > 1 else 0)))
    return lines


def half_taken(branches):
    """The numbers of lines with a condition that was always true or always false. An instance of a
    template may be so as long as another is not."""
    ways = collections.defaultdict(lambda: [0, 0])
    for line, column, end_line, end_column, taken, passed, *_ in branches:
        place = (line, column, end_line, end_column)
        ways[place][0] += taken
        ways[place][1] += passed
    return {place[0] for place, both in ways.items() if 0 in both}


def reasons_in(page):
    named = {}
    for row in page.read_text(encoding="utf-8").splitlines():
        # Within a cell a bar is written as a table has to.
        cells = [cell.strip().replace(r"\|", "|") for cell in row.strip().strip("|").split(" | ")]
        if len(cells) == 3 and cells[0].startswith("`"):
            named[(cells[0].strip("`"), cells[1].strip("`"))] = cells[2]
    return named


def main():
    counts = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    named = reasons_in(pathlib.Path(sys.argv[2]))
    totals = collections.defaultdict(lambda: [0, 0, 0, 0])
    unnamed = []
    used = set()
    for entry in counts["data"][0]["files"]:
        source = source_of(entry["filename"])
        room = ROOM_OF.get(source)
        if not room:
            continue
        summary = entry["summary"]
        for index, (what, which) in enumerate((("lines", "count"), ("lines", "covered"),
                                               ("branches", "count"), ("branches", "covered"))):
            totals[room][index] += summary[what][which]
        text = (ROOT / source).read_text(encoding="utf-8").splitlines()
        missed = missed_lines(entry["segments"]) | half_taken(entry.get("branches", []))
        # Lines one behind the other are one place, which the first of them names.
        for number in sorted(number for number in missed if number - 1 not in missed):
            key = (source, text[number - 1].strip())
            used.add(key)
            if key not in named:
                unnamed.append(f"{source}:{number}: {text[number - 1].strip()}")

    def percent(part, whole):
        return f"{100 * part / whole:.2f}" if whole else "-"

    print(f"{'room':<20}{'lines':>8}{'%':>9}{'branches':>10}{'%':>9}")
    for room in ROOMS:
        lines, ran, branches, taken = totals[room]
        print(f"{room:<20}{lines:>8}{percent(ran, lines):>9}{branches:>10}{percent(taken, branches):>9}")
    print(f"missed and named: {len(used & set(named))} places")
    for line in unnamed:
        print(f"missed: {line}")
    stale = sorted(set(named) - used)
    for source, text in stale:
        print(f"named, but not missed: {source}: {text}")
    lines, ran, branches, taken = (sum(column) for column in zip(*totals.values()))
    print(f"lines {percent(ran, lines)} %, branches {percent(taken, branches)} %")
    return 1 if unnamed or stale else 0


sys.exit(main())
