"""A manual page from what a program says of itself with --help: manual.py PROGRAM >PAGE

Of a program with commands, each command has its part; options that stand among the program's own are only named
there.
"""
import os
import re
import subprocess
import sys


def said(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def roff(text):
    """Text that is to be read as it stands."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return f"\\&{text}" if text.startswith((".", "'")) else text


class Help:
    """What a program, or a command of one, says: a summary, a usage, and entries by heading."""

    def __init__(self, *command):
        before, _, rest = said(*command, "--help").partition("Usage: ")
        self.summary = " ".join(before.split())
        self.usage, _, rest = rest.partition("\n")
        self.entries = {}
        for line in rest.splitlines():
            indent = len(line) - len(line.lstrip())
            line = line.strip()
            if heading := re.fullmatch(r"\[Option Group: (.*)\]|(?!-)(\S.*):", line):
                # The options of a group stand below its own heading.
                if heading[1] or indent == 0:
                    entries = self.entries.setdefault(heading[1] or heading[2], [])
            elif indent >= 30:
                entries[-1][1].append(line)
            elif line:
                name, *text = re.split(r"  +", line, maxsplit=1)
                entries.append((name, text))

    def options(self, heading):
        return [name.split()[0].split(",")[-1] for name, _ in self.entries.get(heading, ())]


def entry(name, text):
    # A note of the program's stands in brackets and has no text; a number takes no line of its own.
    if name.startswith("["):
        return [roff(name)]
    if code := re.fullmatch(r"(\d+) (.*)", name):
        name, text = code[1], [code[2]]
    word, *values = name.split(" ", 1)
    return [".TP", f"\\fB{roff(word)}\\fR" + "".join(f" {roff(value)}" for value in values), roff(" ".join(text))]


def part(path, program):
    """The lines of a command and of those below it."""
    own = Help(*path)
    usage = own.usage.split(" ", len(path))
    lines = [f'.SS "{roff(" ".join(usage[:len(path)]))}"', roff(own.summary) + ".", ".PP",
             f"\\fB{roff(' '.join(usage[:len(path)]))}\\fR {roff(usage[-1])}"]
    shared = []
    for heading, entries in own.entries.items():
        if heading == "Options of every command":
            shared += own.options(heading)
        elif heading in program.entries and heading not in ("Options", "Subcommands"):
            shared += [f"those of \"{heading}\""] if heading != "Exit codes" else []
        elif heading != "Subcommands":
            for name, text in entries:
                lines += entry(name, text) if not name.startswith("-h,") else []
    if shared:
        lines += [".PP", "Options above: " + roff(", ".join(shared)) + "."]
    for name, _ in own.entries.get("Subcommands", ()):
        lines += part([*path, name], program)
    return lines


def page(path):
    name = os.path.basename(path)
    program = Help(path)
    version = said(path, "--version").split()[-1]
    what = program.summary.split(":")[0].rstrip(".")
    lines = [f'.TH {name.upper()} 1 "" "{name} {version}" "User Commands"', ".SH NAME",
             f"{roff(name)} \\- {roff(what[0].lower() + what[1:])}", ".SH SYNOPSIS", f"\\fB{roff(name)}\\fR " +
             roff(program.usage.split(" ", 1)[1]), ".SH DESCRIPTION", roff(program.summary)]
    for heading, entries in program.entries.items():
        if heading != "Subcommands":
            lines += [f'.SH "{"Exit status" if heading == "Exit codes" else heading}"'.upper()]
            lines += [line for name_and_text in entries for line in entry(*name_and_text)]
    if commands := program.entries.get("Subcommands"):
        lines.append(".SH COMMANDS")
        for command, _ in commands:
            lines += part([path, command], program)
    return "\n".join(lines)


if __name__ == "__main__":
    print(page(sys.argv[1]))
