"""Whether Windows unpacks a zip as it was packed: zip_for_windows.py ZIP SECONDS. Names that it can have, the time
that the files were given, and rights that fit the kind of file elsewhere.
"""
import re
import sys
import time
import zipfile

RESERVED = re.compile(r"(con|prn|aux|nul|com\d|lpt\d)(\..*)?", re.IGNORECASE)
# Of the 260 characters that a path may have, some are for the folder that it is unpacked in.
LONGEST = 160

archive, seconds = sys.argv[1:]
# A zip counts in steps of two seconds.
expected = time.gmtime((int(seconds) + 1) // 2 * 2)[:6]
bad = []
seen = set()
with zipfile.ZipFile(archive) as file:
    for entry in file.infolist():
        name = entry.filename
        for part in name.rstrip("/").split("/"):
            if not re.fullmatch(r"[A-Za-z0-9_+.-]+", part) or RESERVED.fullmatch(part) or part.endswith("."):
                bad.append(f"{name}: no name for Windows")
        if len(name) > LONGEST:
            bad.append(f"{name}: {len(name)} characters")
        if name.lower() in seen:
            bad.append(f"{name}: stands there in other letters")
        seen.add(name.lower())
        if entry.date_time != expected:
            bad.append(f"{name}: its time is {entry.date_time}, not {expected}")
        is_program = name.endswith((".exe", ".dll"))
        mode = 0o40755 if entry.is_dir() else 0o100755 if is_program else 0o100644
        if entry.external_attr >> 16 != mode:
            bad.append(f"{name}: mode {entry.external_attr >> 16:o}, not {mode:o}")
        if entry.compress_type not in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED) or entry.flag_bits & ~0x0006:
            bad.append(f"{name}: a kind of packing that not every program knows")
    folders = {name.split("/")[0] for name in file.namelist()}
if len(folders) != 1:
    bad.append(f"unpacks to {sorted(folders)}")
print("\n".join(bad), file=sys.stderr)
sys.exit(bool(bad))
