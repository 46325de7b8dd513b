#!/usr/bin/env python3
"""A test station: updates a camera's firmware, reads it back, compares, and writes a report as JSON.

    station.py firmware.bin report.json
    station.py firmware.bin report.json --verify-at 0      where the firmware can be read back
    station.py firmware.bin report.json --simulate         without a camera

Ends with 0 only if everything that was asked for was done and is proven.
"""

from __future__ import annotations

import argparse
import contextlib
import json
import pathlib
import sys
from typing import Any

import zemuvc


def show(phase: str, percent: int) -> None:
    print(f"\r{phase}: {percent} %  ", end="", file=sys.stderr)


def update(image: pathlib.Path, verify_at: int | None) -> dict[str, Any]:
    """Updates the only camera that there is. Whatever goes wrong stands in the report."""
    report: dict[str, Any] = {"file": image.name, "done": False, "verified": None}
    try:
        with zemuvc.open() as camera:
            report["serial_number"] = camera.sensor_serial_number.hex()
            report["chip"] = camera.chip
            report["version_before"] = camera.firmware_version.hex(" ")
            camera.update_firmware(image, progress=show)
            report["check_sum_right"] = camera.firmware_check_sum_right
            if verify_at is not None:
                report["verified"] = camera.flash.verify(verify_at, image, progress=show)
            report["done"] = report["check_sum_right"]
    except (zemuvc.Error, OSError, ValueError) as error:
        report["error"] = type(error).__name__
        report["message"] = str(error)
    return report


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0] if __doc__ else None)
    parser.add_argument("image", type=pathlib.Path)
    parser.add_argument("report", type=pathlib.Path)
    parser.add_argument("--verify-at", type=lambda text: int(text, 0), metavar="ADDRESS")
    parser.add_argument("--simulate", action="store_true", help="use a simulated camera")
    arguments = parser.parse_args()
    with contextlib.ExitStack() as stack:
        if arguments.simulate:
            stack.enter_context(zemuvc.simulate())
        report = update(arguments.image, arguments.verify_at)
    arguments.report.write_text(json.dumps(report, indent=2) + "\n", "utf-8")
    print(file=sys.stderr)
    return 0 if report["done"] else 1


if __name__ == "__main__":
    sys.exit(main())
