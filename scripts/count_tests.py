"""Prints "N passed, N failed" of a run: count_tests.py FOLDER, with CTest's checks.xml and for each of
its suites a report: GoogleTest's NAME.json or pytest's NAME.xml. Fails unless something passed and nothing failed.

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


def count_pytest_suite(report):
    passed = failed = 0
    for test in xml.parse(report).getroot().iter("testcase"):
        if test.find("failure") is not None or test.find("error") is not None:
            failed += 1
        elif test.find("skipped") is None:
            passed += 1
    return passed, failed


def main():
    folder = pathlib.Path(sys.argv[1])
    passed = failed = 0
    for case in xml.parse(folder / "checks.xml").getroot().iter("testcase"):
        name = case.get("name")
        succeeded = case.get("status") == "run"
        report, pytest_report = folder / f"{name}.json", folder / f"{name}.xml"
        if report.exists() or pytest_report.exists():
            suite_passed, suite_failed = (count_suite(report) if report.exists() else
                                          count_pytest_suite(pytest_report))
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
