"""The rooms of the library, and the tables by room that docs/coverage.md and docs/mutation.md have."""

import re

# A room's folders. Of platform/ what native tests run: platform/windows runs under Wine only, and
# platform/simulated belongs to the tests.
ROOMS = {
    "device": ("device",),
    "commands": ("commands",),
    "transfer": ("transfer",),
    "romboot": ("romboot",),
    "encoding": ("encoding",),
    "media": ("media",),
    "exports": ("exports",),
    "platform": ("platform", "platform/portable"),
    "platform/linux": ("platform/linux",),
}


def files_of(room, tree):
    """The sources of a room, relative to the tree that they are in."""
    return sorted(str(path.relative_to(tree)) for folder in ROOMS[room]
                  for path in (tree / folder).iterdir() if path.suffix in (".cpp", ".h"))


_TABLE = re.compile(r"(\| Room \|.*\n\|[-:| ]+\n)((?:\|.*\n)+)")


def read_rows(page):
    """The cells behind each room in the table of a page's text."""
    rows = {}
    for line in _TABLE.search(page).group(2).splitlines():
        room, *cells = (cell.strip() for cell in line.strip("|").split("|"))
        rows[room] = cells
    return rows


def with_rows(page, rows):
    """The text of a page with these rows in its table, in the rooms' order."""
    lines = "".join(f"| {' | '.join([room, *rows[room]])} |\n" for room in ROOMS if room in rows)
    return _TABLE.sub(lambda table: table.group(1) + lines, page, count=1)
