"""clang-tidy over every source file of the native, the Windows, the shared, the fuzzing and the thread build.

A unit that has been found clean is not read again until it, a file that it includes, its command or
the checks change; with CI set, everything is read."""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
OUT = ROOT / "build" / "lint"
CLEAN = OUT / "clean.json"
BUILDS = ("native", "windows", "linux", "fuzz", "thread")


def output_of(*words):
    return subprocess.run(words, check=True, text=True, capture_output=True).stdout


class Unit:
    """What one compiler call reads: a file, or those of a room in one."""

    def __init__(self, build, entry):
        self.file = pathlib.Path(entry["file"])
        text = self.file.read_text(encoding="utf-8")
        included = re.findall(r'^#include "(/.*\.(?:cpp|cc))"$', text, re.MULTILINE)
        self.sources = [pathlib.Path(path) for path in included] or [self.file]
        self.folder = ROOT / "build" / build
        words = shlex.split(entry["command"])
        # Without the compiler's name, and what may stand before it.
        while not words[0].startswith("-"):
            words.pop(0)
        words = [word for word in words if not word.startswith("-specs=")]
        # Options that only GCC knows are no finding.
        self.words = words + ["-Wno-unknown-warning-option", "-Wno-unused-command-line-argument"]
        if build == "windows":
            self.words += windows_words()
        if self.file.suffix == ".c":
            self.words += ["-xc"]

    def keep(self, sources):
        """The rest of its room is not read again: another build has it as well."""
        if sources != self.sources:
            self.sources = sources
            self.file = OUT / self.folder.name / self.file.relative_to(self.folder)
            self.file.parent.mkdir(parents=True, exist_ok=True)
            self.file.write_text("// NOLINTBEGIN(bugprone-suspicious-include)\n" +
                                 "".join(f'#include "{source}"\n' for source in sources) +
                                 "// NOLINTEND(bugprone-suspicious-include)\n", encoding="utf-8")

    def name(self):
        first = self.sources[0].relative_to(ROOT)
        rest = len(self.sources) - 1
        return f"{first} and {rest} more" if rest else str(first)

    def key(self, version):
        """Of all that the findings depend on."""
        digest = hashlib.sha256(f"{version}\0{self.words}\0{self.checks()}".encode())
        for path in sorted(set().union(*map(closure_of, self.sources))):
            digest.update(str(path).encode() + b"\0" + path.read_bytes())
        return digest.hexdigest()

    def checks(self):
        """The settings for the first source's folder: the unit itself lies in the build folder."""
        return checks_of(self.sources[0].parent)

    def findings(self):
        call = subprocess.run(
            ["clang-tidy", "--quiet", f"--config={self.checks()}", str(self.file), "--", *self.words],
            cwd=self.folder, text=True, capture_output=True, check=False)
        # Its count of the warnings in system headers says nothing.
        noise = re.compile(r"^(\d+ warnings?( and \d+ errors?)? generated\.|Suppressed .*|)$")
        lines = [line for line in (call.stdout + call.stderr).splitlines() if not noise.match(line)]
        if call.returncode == 0 and not lines:
            return ""
        return "\n".join(lines) or f"clang-tidy ended with {call.returncode}"


_remembered = {}


def remembered(name, make):
    if name not in _remembered:
        _remembered[name] = make()
    return _remembered[name]


def checks_of(folder):
    return remembered(folder, lambda: output_of("clang-tidy", "--dump-config", str(folder / "any.cpp")))


def windows_words():
    """Clang does not look by itself where MinGW's GCC keeps its C++ library."""
    def search():
        lines = subprocess.run(["x86_64-w64-mingw32-g++-win32", "-E", "-v", "-x", "c++", "/dev/null"],
                               check=True, text=True, capture_output=True).stderr.splitlines()
        # MinGW's headers declare some methods of COM interfaces as not throwing, and others not; its
        # own compiler does not ask the same of those who implement them.
        words = ["--target=x86_64-w64-windows-gnu", "-Wno-microsoft-exception-spec"]
        for line in lines:
            if line.startswith(" /") and "/c++" in line:
                words += ["-isystem", line.strip()]
        return words
    return remembered("windows", search)


def closure_of(source):
    """A source and what it includes of the project, whose includes all begin at the project's root."""
    found = set()
    ahead = [source]
    while ahead:
        path = ahead.pop()
        if path not in found and path.exists():
            found.add(path)
            ahead += includes_of(path)
    return found


def includes_of(path):
    return remembered(path, lambda: [
        ROOT / name for name in re.findall(r'^#include "([^"]+)"', path.read_text(encoding="utf-8"),
                                           re.MULTILINE)])


def units_of_builds(pattern):
    """Every unit that has a source which no unit before it has, with these sources only. What asks for
    the system is another source on each."""
    seen = set()
    for build in BUILDS:
        commands = ROOT / "build" / build / "compile_commands.json"
        for entry in json.loads(commands.read_text(encoding="utf-8")):
            if not entry["file"].endswith((".cpp", ".c", ".cxx")):
                continue
            if not pathlib.Path(entry["file"]).exists():
                continue  # A build makes it, and has not yet.
            unit = Unit(build, entry)
            def kind_of(source):
                asks = re.search(r"\b(_WIN32|__linux__)\b", source.read_text(encoding="utf-8"))
                return source, bool(asks) and build == "windows"

            new = [source for source in unit.sources
                   if ROOT in source.parents and ROOT / "build" not in source.parents
                   and kind_of(source) not in seen]
            if any(re.search(pattern, str(source.relative_to(ROOT))) for source in new):
                seen.update(map(kind_of, new))
                unit.keep(new)
                yield unit


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("pattern", nargs="?", default="", help="of the sources' paths")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    OUT.mkdir(parents=True, exist_ok=True)
    everything = bool(os.environ.get("CI"))
    clean = json.loads(CLEAN.read_text()) if CLEAN.exists() and not everything else []
    version = output_of("clang-tidy", "--version")
    units = [(unit, unit.key(version)) for unit in units_of_builds(arguments.pattern)]
    due = [(unit, key) for unit, key in units if key not in clean]
    # The longest first, by the size of what they hold.
    due.sort(key=lambda pair: -sum(source.stat().st_size for source in pair[0].sources))
    bad = 0
    kept = [key for _, key in units if key in clean]

    def read(pair):
        start = time.monotonic()
        return *pair, pair[0].findings(), time.monotonic() - start

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for unit, key, findings, seconds in pool.map(read, due):
            if findings:
                bad += 1
                print(f"{unit.name()}:\n{findings}")
            else:
                kept.append(key)
                print(f"{unit.name()}: clean, {seconds:.0f} s")
            CLEAN.write_text(json.dumps(kept))
    print(f"{len(due)} of {len(units)} units read, {bad} with findings")
    return 1 if bad else 0


sys.exit(main())
