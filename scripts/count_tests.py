"""Prints "PASSED FAILED" of a GoogleTest report: count_tests.py REPORT EXIT_STATUS.

Skipped tests count as neither."""

import json
import sys

report_path, status = sys.argv[1], int(sys.argv[2])
with open(report_path, encoding="utf-8") as file:
    report = json.load(file)

passed = failed = 0
for suite in report["testsuites"]:
    for test in suite["testsuite"]:
        if "failures" in test:
            failed += 1
        elif test.get("result") == "COMPLETED":
            passed += 1
# A program may also fail behind its last test, for instance by a leak.
if status != 0 and failed == 0:
    failed = 1
print(passed, failed)
