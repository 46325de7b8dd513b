#!/usr/bin/env bash
# clang-tidy over every source file of the native build. Uses its compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."

# GCC's options that Clang does not know; the sanitizers are not needed to read the code.
mkdir -p build/lint
python3 - <<'PYTHON'
import json
with open("build/native/compile_commands.json", encoding="utf-8") as file:
    commands = json.load(file)
for entry in commands:
    entry["command"] = entry["command"].replace("-Wno-restrict", "")
with open("build/lint/compile_commands.json", "w", encoding="utf-8") as file:
    json.dump(commands, file)
PYTHON
run-clang-tidy -quiet -p build/lint -j "$(nproc)" "$@"
