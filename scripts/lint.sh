#!/usr/bin/env bash
# clang-tidy over every source file of the native and the Windows build, with their compile commands.
# Arguments go to run-clang-tidy, such as a pattern that the files' paths match.
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build/lint
python3 - <<'PYTHON'
import json
import subprocess


def commands(build):
    """Each source file's command. Options that only GCC knows are no finding."""
    with open(f"build/{build}/compile_commands.json", encoding="utf-8") as file:
        entries = json.load(file)
    return {entry["file"]: entry | {"command": entry["command"] + " -Wno-unknown-warning-option"}
            for entry in entries if not entry["file"].endswith(".rc")}


windows = commands("windows")
# Clang does not look by itself where MinGW's GCC keeps its C++ library.
search = subprocess.run(["x86_64-w64-mingw32-g++-win32", "-E", "-v", "-x", "c++", "/dev/null"],
                        check=True, text=True, capture_output=True).stderr.splitlines()
folders = [line.strip() for line in search if line.startswith(" /") and "/c++" in line]
for entry in windows.values():
    words = [word for word in entry["command"].split() if not word.startswith("-specs=")]
    entry["command"] = " ".join(words + ["--target=x86_64-w64-windows-gnu"] +
                                [f"-isystem {folder}" for folder in folders])

with open("build/lint/compile_commands.json", "w", encoding="utf-8") as file:
    json.dump(list((windows | commands("native")).values()), file)
PYTHON
# Its count of the warnings in system headers says nothing.
run-clang-tidy -quiet -p build/lint -j "$(nproc)" "$@" 2>&1 |
  grep -vE '[0-9]+ warnings generated\.$|clang-tidy.* -quiet ' || [ "${PIPESTATUS[0]}" -eq 0 ]
