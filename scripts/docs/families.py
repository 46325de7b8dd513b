#!/usr/bin/env python3
"""Doxygen's input filter for the headers: the comment at the top is the file's, and each banner begins a
group, up to the next one."""
import re
import sys

TOP = re.compile(r"\A(/\* SPDX[^\n]*\n)?/\*\n")
BANNER = re.compile(r"/\* -{80,}\n \* (.+)\n((?: \*.*\n)*?) \* -{80,} \*/\n")

# Doxygen does not find its way back from what stands in another namespace, behind the library's.
FOREIGN = re.compile(r"(?<=^}  // namespace zemuvc\n).*", re.M | re.S)


def grouped(text):
    begun = False

    def begin(match):
        nonlocal begun
        end = "/** @} */" if begun else ""
        begun = True
        label = re.sub(r"\W+", "-", match[1].lower()).strip("-")
        return f"{end}/** \\defgroup {label} {match[1]}\n{match[2]} * @{{ */\n"

    text = BANNER.sub(begin, TOP.sub("\\1/** \\\\file\n", FOREIGN.sub("", text), count=1))
    return text + ("/** @} */\n" if begun else "")


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as file:
        sys.stdout.write(grouped(file.read()))
