"""The rooms of the library, as the tables of docs/coverage.md and docs/mutation.md have them."""

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
