#!/usr/bin/env bash
# Every command line of the README, as it stands there, in bash and, on Windows, in cmd.exe: both do the
# same, and what fails is what the README shows failing.
source "$(dirname "$0")/rom_support.sh"

shells=(bash)
[ $system = linux ] || shells+=(cmd)
for shell in "${shells[@]}"; do
  rm -rf $work/$shell
  mkdir -p $work/$shell
done

python3 - $work "${zemctl/build/$PWD/build}" "${shells[@]}" <<'PYTHON'
import json, os, re, struct, sys
work, zemctl, *shells = sys.argv[1:]

# The command lines: at the beginning of a line of a block, some behind a prompt, some with words on
# them behind two blanks; and whether the block shows that they fail.
lines = []
inside = False
readme = open("README.md", encoding="utf-8").read().split("\n")
for number, text in enumerate(readme):
    shown = "\n".join(readme[number + 1:]).split("\n```")[0].split("\n$ ")[0]
    if text.startswith("```"):
        inside = not inside
    elif inside and text.startswith("$ zemctl "):
        lines.append((text[len("$ zemctl "):], any(word in "\n" + shown for word in ("\nzemctl: ", '"error": {'))))
    elif inside and text.startswith("zemctl "):
        lines.append((re.split(r"  +", text[len("zemctl "):])[0], False))
if len(lines) < 40:
    sys.exit(f"only {len(lines)} command lines found")

units = ("h264Unit", "skypeUnit", "orvaUnit", "encodingUnit", "streamProbeUnit", "tirellaUnit")
camera = {"cameras": [{unit: True for unit in units}]}
storages = [{"type": name, "size": 262144} for name in ("sf", "dram", "emmc", "spi-nand")]
header = lambda size, total: b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + struct.pack("<HI", total, size)
files = {
    "camera.options": json.dumps(camera).encode(),
    "rom.options": json.dumps({"bootLoader": {"storages": storages}}).encode(),
    "enter.options": json.dumps({"bootLoader": {"start": "camera"}}).encode(),
    "boot.json": json.dumps({"bootLoader": {}}).encode(),
    "unplugged.json": json.dumps({"bootLoader": {"faults": ["unplug@18"]}}).encode(),
    "firmware.bin": header(10000, 9980 * 97 & 0xFFFF) + b"a" * 9980,
    "calibration.bin": b"a" * 1500,
    "block.bin": b"a" * 500,
    "in.raw": bytes(640 * 480 * 2),
}
for name, source in (("FILE", "image.bin"), ("image.bin", "image.bin"), ("code.bin", "code.bin"),
                     ("PACKAGE", "both.bin")):
    files[name] = open(f"{work}/{source}", "rb").read()

for shell in shells:
    os.mkdir(f"{work}/{shell}/FOLDER")
    for name, data in files.items():
        with open(f"{work}/{shell}/{name}", "wb") as file:
            file.write(data)

# Lines for a real camera get a simulated one; the questions are answered.
def with_camera(line):
    if line.startswith("--simulator"):
        return f"--yes {line}"
    start = "enter" if line.startswith("rom enter") else "rom" if line.startswith("rom ") else "camera"
    return f"--yes --simulator --simulator-options {start}.options {line}"

with open(f"{work}/bash/run.sh", "w") as bash:
    for number, (line, _) in enumerate(lines):
        bash.write(f"{zemctl} {with_camera(line)} >{number}.out 2>{number}.err </dev/null\n"
                   f"echo $? >{number}.code\n")
if "cmd" in shells:
    program = "Z:" + zemctl.removeprefix("wine ").replace("/", "\\")
    with open(f"{work}/cmd/run.bat", "w", newline="\r\n") as cmd:
        cmd.write("@echo off\n")
        for number, (line, _) in enumerate(lines):
            cmd.write(f"{program} {with_camera(line)} >{number}.out 2>{number}.err <nul\n"
                      f"echo %errorlevel% >{number}.code\n")
json.dump(lines, open(f"{work}/lines.json", "w"))
PYTHON

(cd $work/bash && bash run.sh) &
[ $system = linux ] || (cd $work/cmd && wine cmd /c run.bat)
wait $!

python3 - $work "${shells[@]}" <<'PYTHON'
import json, re, sys
work, *shells = sys.argv[1:]
failed = 0

# The times in a trace, its second column, are those of the one run.
def without_times(line, text):
    rows = [re.split(r"  +", row.strip()) for row in text.split("\n")]
    return [row[:1] + row[2:] if row[0].isdigit() else row for row in rows] if line.startswith("trace show") else text

lines = json.load(open(f"{work}/lines.json"))
for number, (line, shown_failing) in enumerate(lines):
    def read(shell, kind):
        return open(f"{work}/{shell}/{number}.{kind}", encoding="utf-8").read().strip()
    codes = [int(read(shell, "code")) for shell in shells]
    outputs = [without_times(line, read(shell, "out")) for shell in shells]
    # What the README cannot name is filled in by one kind of file.
    takes_any = any(word in line for word in ("FILE", "PACKAGE")) and codes[0] in (0, 9, 10)
    fine = len(set(codes)) == 1 and all(output == outputs[0] for output in outputs) and (
        takes_any or (codes[0] not in (0, 1, 2) if shown_failing else codes[0] == 0))
    if not fine:
        failed += 1
        print(f"zemctl {line}: status {codes} in {shells}")
        for shell in shells:
            print(read(shell, "out"), read(shell, "err"))
if failed:
    sys.exit(1)
print(f"{len(lines)} command lines do in {shells} what the README says")
PYTHON
