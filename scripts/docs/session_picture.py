#!/usr/bin/env python3
"""Draws the README's picture of a session from sessions of docs/zemctl.md, which a test compares with what
zemctl prints. session_picture.py FILE"""
import html
import re
import sys

SESSIONS = ["--simulator info", "--simulator reg get isp 0"]
ROW, COLUMN, EDGE = 19, 8.43, 18


def shown(command):
    """A session of the page: its command line and what it prints."""
    with open("docs/zemctl.md", encoding="utf-8") as page:
        match = re.search(rf"^\$ zemctl {re.escape(command)}\n(.*?)(?=\n\n\$ |\n```)", page.read(), re.M | re.S)
    if not match:
        sys.exit(f"docs/zemctl.md shows no session of: zemctl {command}")
    return [f"$ zemctl {command}", *match[1].split("\n"), ""]


def picture():
    lines = [line for command in SESSIONS for line in shown(command)] + ["$ "]
    width = round(max(map(len, lines)) * COLUMN + 2 * EDGE)
    height = len(lines) * ROW + 2 * EDGE + 8
    rows = []
    for number, line in enumerate(lines):
        kind = ' class="typed"' if line.startswith("$ ") else ""
        rows.append(f'<text x="{EDGE}" y="{EDGE + 16 + number * ROW}"{kind} xml:space="preserve">'
                    f"{html.escape(line)}</text>")
    return f"""<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">
<style>text {{ font: 14px ui-monospace, Consolas, "DejaVu Sans Mono", monospace; fill: #d5dbe3; }}
.typed {{ fill: #8fd0ff; font-weight: bold; }}</style>
<rect width="{width}" height="{height}" rx="8" fill="#171c22"/>
""" + "\n".join(rows) + "\n</svg>\n"


if __name__ == "__main__":
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        file.write(picture())
