"""The command lines of the pages, and what the pages show of their output.

In a block of a page, a line that begins with "zemctl " is a command line, up to two blanks. One that
begins with "$ zemctl " is a session: the lines up to the next "$ " or the end of the block are what it
prints, standard output and standard error. "..." in a line stands for any text, on a line of its own for
any lines; "[y/N] y" is a question and its answer. "$ echo $?" shows the exit code of the line before.
A file `NAME.json` that a page says "holds `{...}`" is there; so are those of FILES.

Command lines run in bash and, on Windows, in cmd.exe, sessions in bash.

The examples in docs/wire-protocol.json are bytes that a command line makes pass; its trace is looked at.

pages.py write WORK TOOL SHELL...   writes WORK/run.SHELL for each shell, and folders with the files they need
pages.py compare WORK PATH DEVICE_PATH SHELL...
                                    compares what they printed with each other and with the pages, which
                                    show the paths that a camera has on Windows
"""
import glob
import json
import os
import re
import shutil
import struct
import sys

# What the pages name the simulated camera by.
PATH = r"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0"
DEVICE_PATH = r"\\?\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0"
PROGRESS = re.compile(r"^[a-z-]+: +\d+ %.*\n", re.M)


WIRE = "docs/wire-protocol.json"


def pages():
    return ["README.md", *sorted(glob.glob("docs/*.md")), WIRE]


def wire_steps():
    """The examples of the wire protocol: a command line each, and the transfer that it makes."""
    with open(WIRE, encoding="utf-8") as file:
        blocks = json.load(file)["blocks"]
    return [{"page": WIRE, "line": name, "arguments": f"--trace {name}.jsonl {block['run']}", "shown": None,
             "wire": [block["transfer"], block["bytes"]]} for name, block in blocks.items()]


def passed(step, trace):
    """Whether a trace has the transfer of an example."""
    (direction, where), shown = step["wire"][0].split(), step["wire"][1]
    return any(line.get("direction") == direction and shown == (
        line.get("cdb") if where == "cdb" else str(line.get("selector")) == where and line.get("data"))
        for line in map(json.loads, trace.splitlines()))


def steps_of(page):
    """Command lines of a page: line number, arguments, what is shown of it (or None), the exit code."""
    if page == WIRE:
        return wire_steps()
    with open(page, encoding="utf-8") as file:
        lines = file.read().split("\n")
    steps, inside, session = [], False, None
    for number, text in enumerate(lines, 1):
        if text.startswith("```"):
            inside, session = not inside, None
        elif inside and text == "$ echo $?":
            session, code_of = None, steps[-1]
            code_of["code"] = int(lines[number])
        elif inside and text.startswith("$ "):
            session = None
            if text.startswith("$ zemctl "):
                session = {"page": page, "line": number, "arguments": text[len("$ zemctl "):], "shown": [], "code": None}
                steps.append(session)
        elif inside and session is not None:
            session["shown"].append(text)
        elif inside and text.startswith("zemctl "):
            arguments = re.split(r"  +", text[len("zemctl "):])[0]
            steps.append({"page": page, "line": number, "arguments": arguments, "shown": None, "code": None})
    return steps


def files_of(work):
    """What the command lines read, by name."""
    units = ("h264Unit", "skypeUnit", "orvaUnit", "encodingUnit", "streamProbeUnit", "tirellaUnit")
    storages = [{"type": name, "size": 262144} for name in ("sf", "dram", "emmc", "spi-nand")]
    header = b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + struct.pack("<HI", 9980 * 97 & 0xFFFF, 10000)
    files = {
        "camera.options": json.dumps({"cameras": [{unit: True for unit in units}]}).encode(),
        "rom.options": json.dumps({"bootLoader": {"storages": storages}}).encode(),
        "enter.options": json.dumps({"bootLoader": {"start": "camera"}}).encode(),
        "firmware.bin": header + b"a" * 9980,
        "calibration.bin": b"a" * 1500,
        "block.bin": b"a" * 500,
        "in.raw": bytes(640 * 480 * 2),
    }
    for name, source in (("FILE", "image.bin"), ("image.bin", "image.bin"), ("code.bin", "code.bin"),
                         ("PACKAGE", "both.bin")):
        with open(f"{work}/{source}", "rb") as file:
            files[name] = file.read()
    return files


def strange_code():
    """The C and C++ of the pages that stands in no example; the examples are built."""
    examples = []
    for path in glob.glob("examples/**/*.c*", recursive=True):
        with open(path, encoding="utf-8") as file:
            examples.append(file.read())
    strange = []
    for page in pages():
        with open(page, encoding="utf-8") as file:
            blocks = re.findall(r"^```(?:c|cpp|c\+\+)\n(.*?)^```", file.read(), re.M | re.S)
        strange += [f"{page}: no example has this:\n{block}" for block in blocks
                    if not any(block in example for example in examples)]
    return strange


def with_camera(step):
    """Lines for a real camera get a simulated one; questions that no session answers are answered."""
    line = step["arguments"]
    yes = "" if step["shown"] is not None else "--yes "
    if any(option in line for option in ("--simulator", "--replay")) or line.startswith("trace "):
        return yes + line
    start = "enter" if line.startswith("rom enter") else "rom" if re.search(r"(^|jsonl |--yes )rom ", line) else "camera"
    return f"{yes}--simulator --simulator-options {start}.options {line}"


def write(work, tool, *shells):
    steps = [step for page in pages() for step in steps_of(page)]
    json.dump(steps, open(f"{work}/steps.json", "w"))
    files = files_of(work)
    for shell in shells:
        program = tool if shell == "bash" else "Z:" + tool.removeprefix("wine ").replace("/", "\\")
        shutil.rmtree(f"{work}/{shell}", ignore_errors=True)
        with open(os.path.join(work, f"run.{shell}"), "w", newline="\r\n" if shell == "cmd" else "\n") as script:
            script.write("@echo off\n" if shell == "cmd" else "")
            for number, page in enumerate(pages()):
                folder = f"{work}/{shell}/{number}"
                os.makedirs(f"{folder}/FOLDER")
                with open(page, encoding="utf-8") as file:
                    named = re.findall(r"`([\w-]+\.json)`\s+holds\s+`(\{[^`]*\})`", file.read())
                for name, data in [*files.items(), *((name, text.encode()) for name, text in named)]:
                    with open(f"{folder}/{name}", "wb") as file:
                        file.write(data)
                # Pages side by side: most of the time something waits for a camera.
                script.write(f"(cd {number}\n" if shell == "bash" else f"cd {number}\n")
                for at, step in enumerate(steps):
                    if step["page"] != page or (
                            shell == "cmd" and (step["shown"] is not None or "wire" in step)):
                        continue
                    asks = any("[y/N] y" in line for line in step["shown"] or ())
                    with open(f"{folder}/{at}.in", "w") as file:
                        file.write("y\n" if asks else "")
                    script.write(f"{program} {with_camera(step)} >{at}.out 2>&1 <{at}.in\n"
                                 + ("echo %errorlevel% >" if shell == "cmd" else "echo $? >") + f"{at}.code\n")
                script.write(") &\n" if shell == "bash" else "cd ..\n")
            script.write("wait\n" if shell == "bash" else "exit /b 0\n")


def pattern_of(shown):
    """What a session shows, as a regular expression for what is printed."""
    while shown and not shown[-1].strip():
        shown = shown[:-1]
    out = []
    for line in shown:
        if line.strip() == "...":
            out.append(r"(?:.*\n)*")
        elif line.endswith("[y/N] y"):
            out.append(re.escape(line[:-1]))
        else:
            out.append(".*".join(re.escape(part) for part in line.rstrip().split("...")) + r"[ ]*\n")
    return "".join(out) + r"\s*"


def comparable(step, text):
    """What is the same in every run: not when progress is told, and not the times in a trace, its second column."""
    text = PROGRESS.sub("", text)
    if not step["arguments"].startswith("trace show"):
        return text
    rows = [re.split(r"  +", row.strip()) for row in text.split("\n")]
    return [row[:1] + row[2:] if row[0].isdigit() else row for row in rows]


def compare(work, path, device_path, *shells):
    steps = json.load(open(f"{work}/steps.json"))
    numbers = {page: number for number, page in enumerate(pages())}
    failed, sessions, examples = 0, 0, 0
    for at, step in enumerate(steps):
        def read(shell, kind):
            name = step["line"] if kind == "jsonl" else at
            with open(f"{work}/{shell}/{numbers[step['page']]}/{name}.{kind}", encoding="utf-8", newline="") as file:
                return file.read().replace("\r", "")
        printed, code = read("bash", "out"), int(read("bash", "code"))
        printed = printed.replace(device_path, DEVICE_PATH).replace(f" {path}\n", f" {PATH}\n")
        wrong = []
        shown = step["shown"]
        if shown is not None:
            sessions += 1
            text = "\n" + "\n".join(shown)
            fails = any(sign in text for sign in ("\nzemctl: ", '"error": {'))
            if step["code"] is not None and code != step["code"]:
                wrong.append(f"exit code {code}, the page says {step['code']}")
            elif step["code"] is None and (code in (0, 1) if fails else code != 0):
                wrong.append(f"exit code {code}")
            if not re.fullmatch(pattern_of(shown), printed):
                wrong.append("the page shows something else")
        elif "wire" in step:
            examples += 1
            if not passed(step, read("bash", "jsonl")):
                wrong.append(f"no transfer {' '.join(step['wire'])}")
        else:
            # What a list of command lines cannot name is filled in by one kind of file.
            takes_any = any(word in step["arguments"] for word in ("FILE", "PACKAGE"))
            if code != 0 and not (takes_any and code in (9, 10)):
                wrong.append(f"exit code {code}")
            for shell in shells[1:]:
                if code != int(read(shell, "code")) or comparable(step, printed) != comparable(step, read(shell, "out")):
                    wrong.append(f"{shell} does something else:\n{read(shell, 'out')}bash:")
        if wrong:
            failed += 1
            print(f"{step['page']}:{step['line']}: zemctl {step['arguments']}: {', '.join(wrong)}\n{printed}")
    if not sessions or len(steps) < 80:
        sys.exit(f"only {len(steps)} command lines found, {sessions} of them in sessions")
    if strange := strange_code():
        sys.exit("\n".join(strange))
    if failed:
        sys.exit(f"{failed} of {len(steps)} command lines failed")
    print(f"{len(steps) - sessions - examples} command lines do the same in {' and '.join(shells)}, {sessions} sessions "
          f"print what the pages show, {examples} examples of the wire protocol are what passes")


if __name__ == "__main__":
    {"write": write, "compare": compare}[sys.argv[1]](*sys.argv[2:])
