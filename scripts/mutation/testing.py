"""Runs a test program that may hang, grow or crash."""

import json
import os
import re
import resource
import shutil
import signal
import subprocess
import time
from collections import defaultdict
from pathlib import Path

# On the disk: tests make sparse files of terabytes.
_MOST_WRITTEN = 1 << 29
_MOST_MEMORY_MB = 1500
# Waiting that takes no processor time is cut off behind this many times the processor's limit.
_PATIENCE = 6
_POLL_SECONDS = 0.05
# Of a hundred tests 97 take less; together they take a fifth of the time.
_QUICK_SECONDS = 0.05


class Tests:
    """The tests of a program by the room they belong to, from the report of a run."""

    def __init__(self, report):
        self._suites = defaultdict(list)
        self._slow = defaultdict(list)
        for suite in json.loads(report.read_text(encoding="utf-8"))["testsuites"]:
            found = re.search(r"tests/(\w+)/", suite["testsuite"][0]["file"])
            room = found.group(1) if found else ""
            self._suites[room].append(suite["name"])
            self._slow[room] += [f"{suite['name']}.{test['name']}" for test in suite["testsuite"]
                                 if float(test["time"].rstrip("s")) > _QUICK_SECONDS]

    def filters(self, rooms):
        """Filters that go through all tests: the quick ones of these rooms and of the others, then the
        slow ones. Most mutants are killed by a quick one."""
        own = [f"{suite}.*" for room in rooms for suite in self._suites.get(room, ())]
        own_slow = [name for room in rooms for name in self._slow.get(room, ())]
        other_slow = [name for room, names in self._slow.items() if room not in rooms for name in names]
        slow = own_slow + other_slow
        steps = ((own, own_slow), (["*"], own + slow), (own_slow, []), (other_slow, []))
        return [":".join(wanted) + ("-" + ":".join(unwanted) if unwanted else "")
                for wanted, unwanted in steps if wanted]


class Run:
    """What became of one run: `failure` is None if all tests passed."""

    def __init__(self, failure, seconds):
        self.failure = failure
        self.seconds = seconds  # of the processor


def run_tests(program, test_filter, folder, limit_seconds, report=None):
    """Runs the tests up to the first that fails."""
    scratch = folder / "scratch"
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir()
    output = folder / "output.txt"
    environment = {
        **os.environ,
        "LC_ALL": "C.UTF-8",
        "TMPDIR": str(scratch),
        "ASAN_OPTIONS": f"symbolize=0:hard_rss_limit_mb={_MOST_MEMORY_MB}",
        "UBSAN_OPTIONS": "symbolize=0",
    }

    def set_limits():
        resource.setrlimit(resource.RLIMIT_CPU, (limit_seconds, limit_seconds + 1))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    with open(output, "wb") as file:
        process = subprocess.Popen(
            [str(program), f"--gtest_filter={test_filter}", "--gtest_fail_fast", "--gtest_brief=1",
             *([f"--gtest_output=json:{report}"] if report else [])],
            cwd=scratch, env=environment, stdin=subprocess.DEVNULL, stdout=file,
            stderr=subprocess.STDOUT, preexec_fn=set_limits, start_new_session=True)
    cut_off, usage = _wait(process, (scratch, output), limit_seconds * _PATIENCE)
    shutil.rmtree(scratch, ignore_errors=True)
    seconds = usage.ru_utime + usage.ru_stime
    if cut_off is None and process.returncode == 0:
        return Run(None, seconds)
    return Run(cut_off or _failure(output, process.returncode), seconds)


def _wait(process, written, patience):
    """Waits for the end, or brings it about. Returns why, if it does, and what the process used."""
    deadline = time.monotonic() + patience
    cut_off = None
    while True:
        ended, status, usage = os.wait4(process.pid, os.WNOHANG if cut_off is None else 0)
        if ended:
            process.returncode = os.waitstatus_to_exitcode(status)
            return cut_off, usage
        if time.monotonic() > deadline:
            cut_off = "too much time"
        elif sum(map(_disk_usage, written)) > _MOST_WRITTEN:
            cut_off = "too much written"
        if cut_off is not None:
            os.killpg(process.pid, signal.SIGKILL)
        else:
            time.sleep(_POLL_SECONDS)


def _disk_usage(path):
    try:
        size = path.lstat().st_blocks * 512
        return size + sum(map(_disk_usage, path.iterdir())) if path.is_dir() else size
    except FileNotFoundError:  # removed meanwhile
        return 0


def _failure(output, status):
    """The test that failed, as far as the output says."""
    with open(output, "rb") as file:
        text = file.read(1 << 20).decode(errors="replace")
    failed = re.search(r"^\[  FAILED  \] (\S+)", text, re.MULTILINE)
    if failed:
        return failed.group(1).rstrip(",")
    if status == -signal.SIGXCPU or status == -signal.SIGKILL:
        return "too much processor time"
    report = re.search(r"(ERROR: \w+Sanitizer: [\w-]+|runtime error: [^\n]{0,60}|hard rss limit)", text)
    return report.group(1) if report else f"status {status}"
