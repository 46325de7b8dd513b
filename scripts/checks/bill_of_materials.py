"""Whether the bills of materials of unpacked packages say what is there: bill_of_materials.py FOLDER...

What the loader wants, and traces that contained libraries leave, are looked for in the binaries themselves.
"""
import glob
import hashlib
import json
import os
import re
import subprocess
import sys

import jsonschema

# What a binary has in it of a source package.
TRACES = {
    "cli11": b"N3CLI",
    "gcc-12": b"GCC: (Debian",
    "gcc-mingw-w64": b"GCC: (GNU)",
    "mingw-w64": b"Mingw-w64 runtime failure",
    "nlohmann-json3": b"nlohmann",
}


def wanted_by_loader(path, content):
    if content.startswith(b"MZ"):
        command, line = ["x86_64-w64-mingw32-objdump", "-p", path], r"^\s*DLL Name: (.*)$"
    else:
        command, line = ["readelf", "-dW", path], r"\(NEEDED\).*\[(.*)\]$"
    return set(re.findall(line, subprocess.run(command, check=True, capture_output=True, text=True).stdout,
                          re.MULTILINE))


def facts(folder):
    """Of each binary in a folder: its check sum, what the loader wants, the sources that left traces."""
    found = {}
    for path in glob.glob(f"{glob.escape(folder)}/**", recursive=True):
        if os.path.isfile(path) and not os.path.islink(path):
            with open(path, "rb") as file:
                content = file.read()
            if content.startswith((b"\x7fELF", b"MZ", b"!<arch>\n")):
                is_archive = content.startswith(b"!")
                found[os.path.relpath(path, folder)] = (
                    hashlib.sha256(content).hexdigest(),
                    set() if is_archive else wanted_by_loader(path, content),
                    set() if is_archive else {source for source, trace in TRACES.items() if trace in content})
    return found


def complaints(bill, binaries, licences):
    """What a bill lacks of the facts, and what it has besides."""
    found = []
    packages = {package["SPDXID"]: package for package in bill["packages"]}
    if len(packages) != len(bill["packages"]):
        found.append("an identifier stands twice")
    by_kind = {}
    for relation in bill["relationships"]:
        one, how, other = (relation[key] for key in ("spdxElementId", "relationshipType", "relatedSpdxElement"))
        if other not in packages or one not in packages and one != bill["SPDXID"]:
            found.append(f"{one} {how} {other}: no such package")
            return found
        by_kind.setdefault((one, how), []).append((other, relation.get("comment", "")))
    roots = [root for root, _ in by_kind.get((bill["SPDXID"], "DESCRIBES"), ())]
    if len(roots) != 1:
        return found + [f"{len(roots)} packages are described"]
    named = {packages[key].get("packageFileName"): key for key, _ in by_kind.get((roots[0], "CONTAINS"), ())}
    if set(named) != set(binaries):
        return found + [f"one side alone has {sorted(set(named) ^ set(binaries), key=str)}"]
    contained = set()
    for path, (check_sum, wanted, traces) in binaries.items():
        key = named[path]
        if packages[key].get("checksums") != [{"algorithm": "SHA256", "checksumValue": check_sum}]:
            found.append(f"{path}: another check sum")
        loaded = {comment.removeprefix("loads: ") for _, comment in by_kind.get((key, "DYNAMIC_LINK"), ())}
        if loaded != wanted:
            found.append(f"{path}: one side alone loads {sorted(loaded ^ wanted)}")
        inside = {packages[other]["name"]: packages[other]["sourceInfo"] for how in ("STATIC_LINK", "CONTAINS")
                  for other, _ in by_kind.get((key, how), ())}
        contained |= set(inside)
        for source in traces:
            if not any(f"source package {source} " in info for info in inside.values()):
                found.append(f"{path}: has something of {source} in it")
    if licences != {f"{name}.txt" for name in contained}:
        found.append(f"third-party has {sorted(licences)}")
    return found


def without(bill, kind, index):
    return {**bill, kind: bill[kind][:index] + bill[kind][index + 1:]}


def main(folders):
    with open("packaging/sbom.schema.json", encoding="utf-8") as file:
        schema = json.load(file)
    status = 0
    for folder in folders:
        [path] = glob.glob(f"{glob.escape(folder)}/**/*.spdx.json", recursive=True)
        with open(path, encoding="utf-8") as file:
            bill = json.load(file)
        jsonschema.validate(bill, schema)
        binaries = facts(folder)
        licences = set(os.listdir(os.path.join(os.path.dirname(path), "third-party")))
        traces = set().union(*(traces for _, _, traces in binaries.values()))
        for complaint in complaints(bill, binaries, licences):
            print(f"{path}: {complaint}", file=sys.stderr)
            status = 1
        # Each thing that a bill says is looked at: without it there is a complaint.
        for index, package in enumerate(bill["packages"]):
            if not complaints(without(bill, "packages", index), binaries, licences):
                sys.exit(f"{path}: nobody would miss the package {package['name']}")
        for index, relation in enumerate(bill["relationships"]):
            if relation["relationshipType"] in ("DESCRIBES", "DYNAMIC_LINK") and not complaints(
                    without(bill, "relationships", index), binaries, licences):
                sys.exit(f"{path}: nobody would miss {relation}")
        print(f"{path}: {len(binaries)} binaries, {len(bill['packages'])} packages, traces of {sorted(traces)}")
    sys.exit(status)


if __name__ == "__main__":
    main(sys.argv[1:])
