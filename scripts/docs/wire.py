#!/usr/bin/env python3
"""Draws the pictures of the wire protocol from docs/wire-protocol.json. wire.py FOLDER"""
import html
import json
import os
import re
import sys
import textwrap

CELL, ROW_HEIGHT, EDGE, WIDTH = 44, 62, 2, 8 * 44 + 4
STYLE = """<style>
text { font: 12px "Segoe UI", "DejaVu Sans", sans-serif; fill: #1c2128; }
.mono { font: 11px ui-monospace, Consolas, "DejaVu Sans Mono", monospace; }
.quiet { fill: #59636e; font-size: 11px; }
.box { fill: #eaf2fb; stroke: #7f93a8; }
.box.other { fill: #f7f8fa; }
.ground { fill: #ffffff; }
.line { stroke: #7f93a8; fill: none; }
.bold { font-weight: 600; }
@media (prefers-color-scheme: dark) {
  text { fill: #dfe4ea; } .quiet { fill: #9aa5b1; } .ground { fill: #14181d; }
  .box { fill: #20344a; stroke: #5d7288; } .box.other { fill: #1d242c; } .line { stroke: #5d7288; }
}
</style>"""


def svg(height, parts, title, width=WIDTH):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
            f'role="img"><title>{html.escape(title)}</title>\n{STYLE}\n<rect class="ground" width="{width}" '
            f'height="{height}"/>\n' + "\n".join(parts) + "\n</svg>\n")


def text(x, y, words, kind="", anchor="middle"):
    return f'<text x="{x:g}" y="{y:g}" class="{kind}" text-anchor="{anchor}">{html.escape(words)}</text>'


def wrapped(x, middle, words, width, kind=""):
    lines = textwrap.wrap(words, max(4, int(width / 6.6)), break_long_words=False) or [""]
    return [text(x, middle + 4 + (number - (len(lines) - 1) / 2) * 13, line, kind)
            for number, line in enumerate(lines)]


def block(name, description):
    """Bytes in rows of eight: offsets above, fields in boxes, an example's bytes below."""
    parts = []
    example = description["bytes"].split()
    rows = (len(example) + 7) // 8
    for index, byte in enumerate(example):
        x, y = EDGE + index % 8 * CELL + CELL / 2, index // 8 * ROW_HEIGHT
        parts += [text(x, y + 11, str(index), "quiet"), text(x, y + 58, byte, "mono")]
    shade = False
    for first, size, words in description["fields"]:
        shade = not shade
        pieces, at = [], first
        while at < first + size:
            end = min(first + size, at - at % 8 + 8)
            pieces.append((at, end))
            at = end
        widest = max(pieces, key=lambda piece: piece[1] - piece[0])
        for at, end in pieces:
            x, y, width = EDGE + at % 8 * CELL, at // 8 * ROW_HEIGHT + 15, (end - at) * CELL
            parts.append(f'<rect class="box{"" if shade else " other"}" x="{x}" y="{y}" width="{width}" height="30"/>')
            if (at, end) == widest:
                parts += wrapped(x + width / 2, y + 15, words, width)
    return svg(rows * ROW_HEIGHT + 2, parts, f"{name}: {len(example)} bytes")


def states(name, steps):
    """Steps one below the other, with what happens when one does not go well beside the arrow."""
    parts, y = [], 4
    for number, (state, does, otherwise) in enumerate(steps):
        parts.append(f'<rect class="box" x="2" y="{y}" width="{WIDTH - 4}" height="40" rx="5"/>')
        parts += [text(12, y + 16, state, "bold", "start"), text(12, y + 32, does, "quiet", "start")]
        y += 40
        if number + 1 < len(steps):
            parts.append(f'<path class="line" d="M 24 {y} v 20 m -4 -6 l 4 6 l 4 -6"/>')
            parts.append(text(40, y + 14, otherwise, "quiet", "start"))
            y += 20
        elif otherwise:
            parts.append(text(12, y + 14, otherwise, "quiet", "start"))
            y += 20
    return svg(y + 4, parts, name)


def layout(name, fields):
    """A file from its beginning: offset, bytes, what they are. Not to scale."""
    parts, y = [text(2, 11, "offset", "quiet", "start"), text(WIDTH - 4, 11, "bytes", "quiet", "end")], 16
    for number, (offset, size, words) in enumerate(fields):
        lines = textwrap.wrap(words, 30) or [""]
        height = max(24, 10 + 14 * len(lines))
        parts.append(f'<rect class="box{" other" if not words else ""}" x="84" y="{y}" width="200" height="{height}"/>')
        parts += [text(184, y + height / 2 + 4 + (at - (len(lines) - 1) / 2) * 14, line)
                  for at, line in enumerate(lines)]
        for at, line in enumerate(textwrap.wrap(str(offset), 11)):
            parts.append(text(2, y + 15 + 12 * at, line, "mono", "start"))
        parts.append(text(WIDTH - 4, y + 15, str(size), "mono", "end"))
        y += height
    return svg(y + 2, parts, f"{name}, from its beginning")


def units(all_units):
    """Each unit with its selectors."""
    arrows = {"set": "→", "get": "←", "both": "↔"}
    parts, y = [], 2
    for unit in all_units:
        height = 42 + 17 * len(unit["selectors"])
        parts.append(f'<rect class="box other" x="2" y="{y}" width="{WIDTH - 4}" height="{height}" rx="5"/>')
        parts += [text(10, y + 16, unit["name"], "bold", "start"), text(10, y + 32, unit["guid"], "mono quiet", "start")]
        for number, (selector, size, direction, words) in enumerate(unit["selectors"]):
            line = y + 50 + number * 17
            parts += [text(28, line, str(selector), "mono", "end"), text(44, line, arrows[direction]),
                      text(56, line, words, "", "start"), text(WIDTH - 12, line, size, "mono quiet", "end")]
        y += height + 6
    return svg(y, parts, "Extension units, their selectors and lengths")


def check_units(described):
    """The units are those of the public header, with the selectors that the library uses."""
    with open("include/ZemUVCExtApi.h", encoding="utf-8") as file:
        macros = dict(re.findall(r"#define (ZEM_\w+_XU)\s*\\\n(.*?)\n\s*\}\n", file.read(), re.S))
    guids = {macro: "".join(f"{int(number, 16):0{8 if at == 0 else 4 if at < 3 else 2}X}"
                            for at, number in enumerate(re.findall(r"0x(\w+)", text))) for macro, text in macros.items()}
    if guids != {unit["macro"]: unit["guid"].replace("-", "") for unit in described}:
        sys.exit("docs/wire-protocol.json has other units than include/ZemUVCExtApi.h")
    with open("device/extension_units.h", encoding="utf-8") as file:
        spaces = re.findall(r"^namespace (\w+)_selector \{(.*?)^\}", file.read(), re.M | re.S)
    used = {space.upper(): set(map(int, re.findall(r"= (\d+);", text))) for space, text in spaces}
    shown = {unit["macro"][4:-3]: {selector[0] for selector in unit["selectors"]} for unit in described
             if unit["selectors"]}
    if used != shown:
        sys.exit(f"docs/wire-protocol.json has other selectors than device/extension_units.h: {shown}, {used}")


def main(folder):
    with open("docs/wire-protocol.json", encoding="utf-8") as file:
        description = json.load(file)
    check_units(description["units"])
    pictures = {"units": units(description["units"])}
    for kind, draw in (("blocks", block), ("states", states), ("layouts", layout)):
        pictures.update({name: draw(name, what) for name, what in description[kind].items()})
    os.makedirs(folder, exist_ok=True)
    for name, picture in pictures.items():
        with open(f"{folder}/{name}.svg", "w", encoding="utf-8") as file:
            file.write(picture)


if __name__ == "__main__":
    main(sys.argv[1])
