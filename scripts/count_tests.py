"""Prints "PASSED FAILED" of a GoogleTest report: count_tests.py REPORT EXIT_STATUS."""

import json
import sys

report_path, status = sys.argv[1], int(sys.argv[2])
with open(report_path, encoding="utf-8") as file:
    report = json.load(file)
failed = report["failures"] + report.get("errors", 0)
passed = report["tests"] - failed - report.get("disabled", 0)
# A program may also fail behind its last test, for instance by a leak.
if status != 0 and failed == 0:
    failed = 1
print(passed, failed)
