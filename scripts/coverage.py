"""Prints what tests missed of the library: coverage.py COUNTS [--write], with llvm-cov's export.

docs/coverage.md names what may be missed, a row of a table for each: | file | text of the line | why |.
Its table by room has the same numbers, and beside them the share of the mutants that are killed, from
docs/mutation.md; --write puts them there.

The last line is "lines X %, branches Y %". Fails when something is missed that the page does not name,
when the page names what is not missed, or when it has other numbers."""

import collections
import json
import os
import pathlib
import re
import sys

from rooms import ROOMS, files_of, read_rows, with_rows

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "coverage.md"
MUTATION_PAGE = ROOT / "docs" / "mutation.md"
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
    for row in page.splitlines():
        # Within a cell a bar is written as a table has to.
        cells = [cell.strip().replace(r"\|", "|") for cell in row.strip().strip("|").split(" | ")]
        if len(cells) == 3 and cells[0].startswith("`"):
            named[(cells[0].strip("`"), cells[1].strip("`"))] = cells[2]
    return named


def main():
    counts = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    page = PAGE.read_text(encoding="utf-8")
    named = reasons_in(page)
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
        return f"{100 * part / whole:.2f}"

    def cells(counts):
        lines, ran, branches, taken = counts
        return [str(lines), percent(ran, lines), str(branches), percent(taken, branches)]

    mutants = {room: row[-1] for room, row in read_rows(MUTATION_PAGE.read_text(encoding="utf-8")).items()}
    rows = {room: [*cells(totals[room]), mutants.get(room, "-")] for room in ROOMS}
    print(f"{'room':<15}{'lines':>8}{'%':>9}{'branches':>10}{'%':>9}{'mutants killed':>17}")
    for room, (lines, ran, branches, taken, killed) in rows.items():
        print(f"{room:<15}{lines:>8}{ran:>9}{branches:>10}{taken:>9}{killed:>17}")
    print(f"missed and named: {len(used & set(named))} places")
    for line in unnamed:
        print(f"missed: {line}")
    stale = sorted(set(named) - used)
    for source, text in stale:
        print(f"named, but not missed: {source}: {text}")
    _, ran, _, taken = cells([sum(column) for column in zip(*totals.values())])
    result = f"lines {ran} %, branches {taken} %"
    measured = re.sub(r"lines [0-9.]+ %, branches [0-9.]+ %", result, with_rows(page, rows))
    if "--write" in sys.argv:
        PAGE.write_text(measured, encoding="utf-8")
    elif measured != page:
        print("docs/coverage.md has other numbers: scripts/coverage.sh --write puts these there")
    print(result)
    return 1 if unnamed or stale or PAGE.read_text(encoding="utf-8") != measured else 0


sys.exit(main())
