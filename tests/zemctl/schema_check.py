"""Runs zemctl's commands and holds what they print with --json against the schema.

A new command gets two lines in RUNS: one that ends with 0, one that does not.
"""

import concurrent.futures
import json
import re
import subprocess
import sys

import jsonschema

schema_path, zemctl, work = sys.argv[1:]

SIMULATED = ["--simulator"]


def camera(**options):
    return ["--simulator", "--simulator-options", json.dumps({"cameras": [options]})]


def boot(start="bootLoader", **more):
    loader = {"start": start, "storages": [{"type": "sf", "size": 262144}, {"type": "dram", "size": 65536},
                                           {"type": "emmc", "size": 512}], **more}
    return ["--simulator", "--simulator-options", json.dumps({"bootLoader": loader})]


ALL_UNITS = camera(h264Unit=True, skypeUnit=True, orvaUnit=True, encodingUnit=True, streamProbeUnit=True,
                   tirellaUnit=True)
CHIP_516X = camera(chip="516x", burnPolls=2)
GONE = SIMULATED + ["--simulator-fault", "unplug@1"]
DATA = f"{work}/data.bin"
IMAGE = f"{work}/image.bin"
FIRMWARE = f"{work}/firmware.bin"
BACK = f"{work}/back"

# Exit code, arguments.
RUNS = [
    (0, SIMULATED + ["list"]),
    (0, camera(vendorUnit=False) + ["list"]),
    (7, SIMULATED + ["--simulator-fault", "fail@1", "list"]),
    (3, ["list"]),
    (0, ALL_UNITS + ["info"]),
    (7, SIMULATED + ["--simulator-fault", "fail@2", "info"]),
    (8, camera(vendorUnit=False) + ["info"]),
    (0, SIMULATED + ["reg", "get", "isp", "0"]),
    (7, GONE + ["reg", "get", "isp", "0"]),
    (0, SIMULATED + ["reg", "set", "sensor", "0", "1"]),
    (2, SIMULATED + ["reg", "set", "sensor", "0", "256"]),
    *[(0, SIMULATED + ["tune", *words.split()]) for words in (
        "af 1", "ae 1", "manual-gain 1", "awb-gain", "awb-gain 1 2 3", "shading 1", "effect 1", "misc",
        "misc 1 2 3 4 5 6", "mjpg-quality", "max-qp 1", "min-qp 1", "video-rec-mode 1", "focus-values",
        "build-date", "sensor-sn")],
    (0, ALL_UNITS + ["tune", "skype-version"]),
    *[(7, GONE + ["tune", *words.split()]) for words in (
        "af 1", "ae 1", "manual-gain 1", "awb-gain", "shading 1", "effect 1", "misc", "mjpg-quality", "max-qp 1",
        "min-qp 1", "video-rec-mode 1", "focus-values", "build-date", "sensor-sn")],
    (8, SIMULATED + ["tune", "skype-version"]),
    (0, SIMULATED + ["control", "list"]),
    (7, SIMULATED + ["--simulator-fault", "fail@3", "control", "list"]),
    (0, SIMULATED + ["control", "get", "exposure"]),
    (7, SIMULATED + ["control", "get", "roll"]),
    (0, SIMULATED + ["control", "set", "exposure", "auto"]),
    (2, SIMULATED + ["control", "set", "exposure", "5"]),
    (0, SIMULATED + ["audio", "list"]),
    (3, ["audio", "list"]),
    (0, SIMULATED + ["audio", "volume", "50"]),
    (3, SIMULATED + ["audio", "volume", "50", "--microphone", "nothing"]),
    (0, ALL_UNITS + ["encoding", "get", "rate-control"]),
    (0, ALL_UNITS + ["encoding", "get", "priority-id"]),
    (8, SIMULATED + ["encoding", "get", "priority-id"]),
    (0, ALL_UNITS + ["encoding", "set", "priority-id", "1"]),
    (0, ALL_UNITS + ["encoding", "set", "rate-control", "dwAverageBitRate=1"]),
    (2, ALL_UNITS + ["encoding", "set", "rate-control", "nothing=1"]),
    (0, ALL_UNITS + ["encoding", "probe"]),
    (8, SIMULATED + ["encoding", "probe"]),
    (0, ALL_UNITS + ["encoding", "commit", "wIndex=1"]),
    (3, ["encoding", "commit"]),
    (0, SIMULATED + ["command", "isp", "0b"]),
    (7, GONE + ["command", "isp", "0b"]),
    (0, SIMULATED + ["xu", "get", "vendor", "10", "8"]),
    (7, SIMULATED + ["xu", "get", "vendor", "99", "8"]),
    (0, SIMULATED + ["xu", "set", "vendor", "1", "0a 00 00 00 00 00 00 00"]),
    (8, SIMULATED + ["xu", "set", "skype", "1", "0a"]),
    (0, SIMULATED + ["xu", "check", "vendor"]),
    (8, SIMULATED + ["xu", "check", "h264"]),
    (0, SIMULATED + ["h264", "list"]),
    (0, camera(h264Formats=[{"index": 1, "width": 640, "height": 480}]) + ["h264", "list"]),
    (7, SIMULATED + ["--simulator-fault", "fail@1", "h264", "list"]),
    (0, SIMULATED + ["h264", "start", "23"]),
    (0, SIMULATED + ["h264", "start", "640x480"]),
    (2, SIMULATED + ["h264", "start", "99"]),
    *[(0, SIMULATED + ["h264", *words.split()]) for words in ("stop", "fps 30", "bitrate 100", "keyframe")],
    *[(7, GONE + ["h264", *words.split()]) for words in ("stop", "fps 30", "bitrate 100", "keyframe")],
    *[(0, ALL_UNITS + ["stream", *words.split()]) for words in (
        "version", "select 1", "probe", "probe --stream 1 --width 640", "commit", "layer 1")],
    *[(8, SIMULATED + ["stream", *words.split()]) for words in (
        "version", "select 1", "probe", "commit", "layer 1")],
    *[(0, SIMULATED + ["multicast", *words.split()]) for words in ("select 1", "layer 1", "commit 1 2 3")],
    *[(7, GONE + ["multicast", *words.split()]) for words in ("select 1", "layer 1", "commit 1 2 3")],
    (0, ["bmp", "yuy2", "--width", "4", "--height", "2", f"{work}/picture.raw", f"{work}/picture.bmp"]),
    (9, ["bmp", "yuy2", "--width", "4", "--height", "4", f"{work}/picture.raw", f"{work}/none.bmp"]),
    (0, ["wav", f"{work}/picture.raw", f"{work}/sound.wav", "--rate", "8000"]),
    (9, ["wav", f"{work}/nothing", f"{work}/sound.wav", "--rate", "8000"]),
    (0, SIMULATED + ["nvmem", "read", "0", "4"]),
    (0, SIMULATED + ["nvmem", "read", "0", "4", "--output", f"{BACK}-nvmem"]),
    (7, GONE + ["nvmem", "read", "0", "4"]),
    (0, SIMULATED + ["nvmem", "write", "0", "00", "--dry-run"]),
    (0, SIMULATED + ["--yes", "nvmem", "write", "0x1000", "00"]),
    (11, SIMULATED + ["nvmem", "write", "0x1000", "00"]),
    (0, ALL_UNITS + ["led", "1"]),
    (0, ["led", "1", "--dry-run"]),
    (8, SIMULATED + ["led", "1"]),
    (0, SIMULATED + ["table", "list"]),
    (4, camera(nvmem=[238, 0, 8, 0, 0, 2, 2, 0]) + ["table", "list"]),
    (0, SIMULATED + ["table", "read", "1"]),
    (0, SIMULATED + ["table", "read", "1", "--output", f"{BACK}-table"]),
    (4, SIMULATED + ["table", "read", "7"]),
    (0, SIMULATED + ["table", "write", "1", "1 2 3 4 5 6 7 8", "--dry-run"]),
    (0, SIMULATED + ["--yes", "table", "write", "1", "1 2 3 4 5 6 7 8"]),
    (9, SIMULATED + ["--yes", "table", "write", "1", "1"]),
    (0, SIMULATED + ["table", "dump"]),
    (0, SIMULATED + ["table", "dump", "--output", f"{BACK}-tables"]),
    (7, GONE + ["table", "dump"]),
    (0, SIMULATED + ["table", "init", f"{work}/store.bin", "--dry-run"]),
    (0, SIMULATED + ["--yes", "table", "init", f"{work}/store.bin"]),
    (9, SIMULATED + ["--yes", "table", "init", DATA]),
    (0, CHIP_516X + ["--yes", "update", "firmware", "--chip", "516x", DATA, "--dry-run"]),
    (10, CHIP_516X + ["--yes", "update", "firmware", "--chip", "516x", DATA]),
    (0, CHIP_516X + ["--yes", "update", "firmware", "--chip", "516x", FIRMWARE]),
    (0, CHIP_516X + ["--yes", "update", "firmware", "--chip", "516x", FIRMWARE, "--all"]),
    (2, CHIP_516X + ["--yes", "update", "firmware", "--chip", "517x", FIRMWARE]),
    (0, CHIP_516X + ["--yes", "update", "calibration", DATA]),
    (0, CHIP_516X + ["--yes", "update", "calibration", DATA, "--all"]),
    (3, ["--yes", "update", "calibration", DATA, "--all"]),
    (13, CHIP_516X + ["--simulator-fault", "fail@5", "--yes", "update", "calibration", DATA, "--all"]),
    (0, CHIP_516X + ["--yes", "update", "calibration", DATA, "--dry-run"]),
    (7, CHIP_516X + ["--simulator-fault", "fail@5", "--yes", "update", "calibration", DATA]),
    (0, CHIP_516X + ["--yes", "update", "flash", "--param2", "2", "--param3", "0", "--verify-at", "0xC0000", DATA]),
    (0, ["update", "flash", "--param2", "2", "--param3", "0", DATA, "--dry-run"]),
    (5, camera(chip="516x", busy=True) + ["--yes", "update", "flash", "--param2", "2", "--param3", "0", DATA]),
    (0, CHIP_516X + ["--yes", "update", "handle-less", "plain", FIRMWARE]),
    *[(0, ["update", "handle-less", way, FIRMWARE, "--dry-run"]) for way in ("plain", "ex", "vision")],
    *[(2, SIMULATED + ["update", "handle-less", way, FIRMWARE, "--index", "0"]) for way in ("plain", "ex", "vision")],
    (0, SIMULATED + ["data", "send", DATA]),
    (0, ["data", "send", DATA, "--dry-run"]),
    (7, SIMULATED + ["--simulator-fault", "fail@20+6", "data", "send", DATA]),
    (0, SIMULATED + ["--yes", "data", "read", f"{BACK}-data"]),
    (7, SIMULATED + ["--simulator-fault", "fail@3", "--yes", "data", "read", f"{BACK}-data2"]),
    (0, SIMULATED + ["--yes", "flash", "read", "0", "64", f"{BACK}-flash"]),
    (0, SIMULATED + ["--yes", "flash", "read", "0", "64", f"{BACK}-flash2", "--verify"]),
    (0, ["flash", "read", "0", "64", BACK, "--dry-run"]),
    (7, GONE + ["--yes", "flash", "read", "0", "64", f"{BACK}-flash3"]),
    (0, SIMULATED + ["--trace", f"{work}/trace", "reg", "get", "isp", "0"]),
    (0, ["trace", "show", f"{work}/one.trace"]),
    (0, ["trace", "show", f"{work}/one.trace", "--all"]),
    (9, ["trace", "show", DATA]),
    (0, ["trace", "diff", f"{work}/one.trace", f"{work}/one.trace"]),
    (10, ["trace", "diff", f"{work}/one.trace", f"{work}/other.trace"]),
    (0, ["completion", "bash"]),
    (2, ["completion", "bash", "more"]),
    (0, ["completion", "powershell"]),
    (2, ["completion", "powershell", "more"]),
    # A camera in ROM boot.
    (0, boot("camera") + ["rom", "enter"]),
    (3, SIMULATED + ["rom", "enter", "--boot-wait", "0"]),
    (0, boot() + ["rom", "info"]),
    (0, boot("storage") + ["rom", "info"]),
    (3, SIMULATED + ["rom", "info"]),
    (0, boot() + ["rom", "reset"]),
    (3, SIMULATED + ["rom", "reset"]),
    (0, boot() + ["rom", "reg", "get", "0"]),
    (3, ["rom", "reg", "get", "0"]),
    (0, boot() + ["rom", "reg", "set", "0", "1"]),
    (2, boot() + ["rom", "reg", "set", "0", "256"]),
    (0, boot() + ["rom", "command", "fa 55 66 01", "--in", "16"]),
    (0, boot() + ["--yes", "rom", "command", "fa 55 66 21"]),
    (7, boot() + ["--yes", "rom", "command", "fa 55 66 7f"]),
    (0, boot() + ["rom", "load-updater", f"{work}/code.bin"]),
    (9, boot() + ["rom", "load-updater", f"{work}/tiny.bin"]),
    (0, boot(afterJump="camera") + ["rom", "load-mini-uvc", f"{work}/code.bin"]),
    (9, boot() + ["rom", "load-mini-uvc", f"{work}/tiny.bin"]),
    (0, boot() + ["--yes", "rom", "load-memory", f"{work}/partial.bin", "--address", "0x1000"]),
    (0, ["rom", "load-memory", f"{work}/partial.bin", "--address", "0x1000", "--jump", "--dry-run"]),
    (7, boot() + ["--yes", "rom", "load-memory", f"{work}/partial.bin", "--jump"]),
    (0, ["rom", "unpack", f"{work}/both.bin", "--into", f"{work}/unpacked"]),
    (9, ["rom", "unpack", f"{work}/tiny.bin"]),
    (0, boot() + ["--yes", "rom", "burn", "--storage", "sf", IMAGE]),
    (0, ["rom", "burn", "--storage", "sf", IMAGE, "--dry-run"]),
    (11, boot() + ["rom", "burn", "--storage", "sf", IMAGE]),
    (0, boot() + ["--yes", "rom", "burn-package", "--storage", "sf", f"{work}/package.bin"]),
    (9, boot() + ["--yes", "rom", "burn-package", "--storage", "sf", f"{work}/tiny.bin"]),
    (0, boot() + ["--yes", "rom", "update-linux", "--storage", "sf", "--header-address", "0x2000",
                  f"{work}/linux.bin"]),
    (9, boot() + ["--yes", "rom", "update-linux", "--storage", "sf", "--header-address", "0", f"{work}/tiny.bin"]),
    (0, boot() + ["--yes", "rom", "update-partial", "--storage", "sf", "--address", "0", f"{work}/partial.bin"]),
    (9, boot() + ["--yes", "rom", "update-partial", "--storage", "sf", "--address", "0", f"{work}/nothing"]),
    (0, boot() + ["--yes", "rom", "erase", "--storage", "sf", "0", "512"]),
    (0, ["rom", "erase", "--storage", "sf", "0", "512", "--dry-run"]),
    (11, boot() + ["rom", "erase", "--storage", "sf", "0", "512"]),
    (0, boot() + ["--yes", "rom", "read", "--storage", "sf", "--size", "512", f"{BACK}-rom"]),
    (7, boot() + ["rom", "read", "--storage", "spi-nand", "--size", "512", f"{BACK}-rom2"]),
    (0, boot(storages=[{"type": "sf", "size": 262144, "file": f"{work}/flash.img"}]) +
     ["rom", "verify", "--storage", "sf", "--as", "partial", f"{work}/blank.bin"]),
    (10, boot() + ["rom", "verify", "--storage", "sf", "--as", "partial", f"{work}/partial.bin"]),
    (0, boot() + ["--yes", "rom", "make-enhanced-area", "0", "0x2000"]),
    (0, ["rom", "make-enhanced-area", "0", "0x2000", "--dry-run"]),
    (11, boot() + ["rom", "make-enhanced-area", "0", "0x2000"]),
    (0, boot() + ["--yes", "recover", "--storage", "sf", IMAGE, "--updater", f"{work}/code.bin"]),
    (0, boot("storage") + ["--yes", "recover", "--storage", "sf", IMAGE, "--no-reset"]),
    (0, ["recover", "--storage", "sf", IMAGE, "--updater", f"{work}/code.bin", "--dry-run"]),
    (0, boot("camera") + ["--yes", "recover", "--storage", "sf", IMAGE, "--updater", f"{work}/code.bin", "--enter"]),
    (3, SIMULATED + ["--yes", "recover", "--storage", "sf", IMAGE, "--boot-wait", "0"]),
    (3, boot() + ["--yes", "recover", "--storage", "sf", IMAGE, "--address", "0x10000", "--wait", "0"]),
    (7, boot(faults=["unplug@8"]) + ["--yes", "recover", "--storage", "sf", IMAGE]),
    # No command, or a part of one.
    (0, ["--version"]),
    (0, ["--help"]),
    (0, ["rom", "reg", "--help"]),
    (0, ["nvmem", "read", "--help"]),
    (2, []),
    (2, ["nothing"]),
    (2, ["rom", "reg"]),
    (2, SIMULATED + ["--simulator-options", "nonsense", "list"]),
]


def leaves(completion):
    """The commands of the tool, told by the tool."""
    table = re.search(r"_zemctl_names\(\) {(.*?)\n}", completion, re.S)[1]
    names = {key: words.split() for key, words in re.findall(r"'(.*?)'\) REPLY='(.*?)' ;;", table)}
    below = {f"{command} {name}".strip() for command in names for name in names[command]}
    return below - set(names)


def run(line):
    code, arguments = line
    result = subprocess.run([*zemctl.split(), "--json", *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                            timeout=120, check=False)
    return code, arguments, result


def fail(arguments, result, why):
    print(f"zemctl {' '.join(arguments)}: {why}")
    print(result.stdout.decode("utf-8", "replace"), result.stderr.decode("utf-8", "replace"))
    sys.exit(1)


with open(schema_path, encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
whole = jsonschema.Draft202012Validator(schema)

succeeded, failed = set(), set()
with concurrent.futures.ThreadPoolExecutor(2) as pool:
    for code, arguments, result in pool.map(run, RUNS):
        if result.returncode != code:
            fail(arguments, result, f"status {result.returncode}, wanted {code}")
        try:
            document = json.loads(result.stdout)
        except ValueError as error:
            fail(arguments, result, error)
        command = document["command"]
        name = re.sub("[ -]", "_", command or "")
        part = whole
        if name in schema["$defs"] and "help" not in document:
            # The command's own definition: what is wrong is told by its name.
            part = whole.evolve(schema={"$ref": f"#/$defs/{name}", "$defs": schema["$defs"]})
        for error in part.iter_errors(document):
            fail(arguments, result, f"{error.json_path}: {error.message}")
        if not whole.is_valid(document):
            fail(arguments, result, "no document of the schema")
        if (code == 0) != ("error" not in document) or document.get("error", {}).get("code", 0) != code:
            fail(arguments, result, "the error is another than the exit code")
        if "help" not in document:
            (failed if code else succeeded).add(command)

with open(f"{work}/completion", encoding="utf-8") as file:
    commands = leaves(file.read())
for command in sorted(commands):
    if re.sub("[ -]", "_", command) not in schema["$defs"]:
        sys.exit(f'the schema does not define "{command}"')
for what, covered in (("done", succeeded), ("failing", failed)):
    if missing := sorted(commands - covered):
        sys.exit(f"no run shows {what}: {', '.join(missing)}")
print(f"{len(RUNS)} documents of {len(commands)} commands are as the schema says")
