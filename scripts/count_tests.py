"""Prints "N passed, N failed" of a run: count_tests.py FOLDER, with CTest's checks.xml and a
GoogleTest report NAME.json for each of its suites. Fails unless something passed and nothing failed.

A check counts once, a suite by its tests, what only prepares others not at all unless it fails.
Skipped tests count as neither."""

import json
import pathlib
import sys
import xml.etree.ElementTree as xml


def count_suite(report):
    passed = failed = 0
    for suite in json.loads(report.read_text(encoding="utf-8"))["testsuites"]:
        for test in suite["testsuite"]:
            if "failures" in test:
                failed += 1
            elif test.get("result") == "COMPLETED":
                passed += 1
    return passed, failed


def main():
    folder = pathlib.Path(sys.argv[1])
    passed = failed = 0
    for case in xml.parse(folder / "checks.xml").getroot().iter("testcase"):
        name = case.get("name")
        succeeded = case.get("status") == "run"
        report = folder / f"{name}.json"
        if report.exists():
            suite_passed, suite_failed = count_suite(report)
            passed += suite_passed
            # A program may also fail behind its last test, for instance by a leak.
            failed += suite_failed or (0 if succeeded else 1)
        elif not succeeded:
            failed += 1
        elif not name.startswith(("build-", "wine-folder")):
            passed += 1
    print(f"{passed} passed, {failed} failed")
    return 0 if passed > 0 and failed == 0 else 1


sys.exit(main())
