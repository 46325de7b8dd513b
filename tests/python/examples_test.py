"""The examples, what the README shows, and the package as somebody installs it."""

from __future__ import annotations

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

import zemuvc

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples/python"


def run(*words, **variables):
    return subprocess.run([str(word) for word in words], text=True, capture_output=True,
                          env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1", **variables})


@pytest.fixture(scope="session")
def installed(tmp_path_factory):
    """The package, installed from a copy of the tree without a network, with the libraries in it."""
    tree = tmp_path_factory.mktemp("tree") / "python"
    shutil.copytree(ROOT / "python", tree)
    for library in ("libZemUVCExtApi.so.1", "libZemSimulator.so"):
        shutil.copy(ROOT / "build/linux" / library, tree / "zemuvc")
    target = tmp_path_factory.mktemp("site")
    done = run(sys.executable, "-m", "pip", "install", "--no-index", "--no-build-isolation", "--no-deps",
               "--target", target, tree)
    assert done.returncode == 0, done.stderr
    return target


def test_installed_package_brings_its_library_along(installed, tmp_path):
    program = ("import zemuvc, importlib.metadata\n"
               "assert importlib.metadata.version('zemuvc') == zemuvc.__version__\n"
               "with zemuvc.simulate(), zemuvc.open() as camera: print(camera.firmware_version.hex())")
    done = run(sys.executable, "-c", program, PYTHONPATH=str(installed), ZEM_LIBRARY="")
    assert (done.returncode, done.stdout, done.stderr) == (0, "010203040506\n", "")
    assert (installed / "zemuvc/py.typed").exists()


def test_station_updates_verifies_and_reports(installed, tmp_path):
    image = tmp_path / "firmware.bin"
    body = bytes(1000)
    image.write_bytes(b"ZEMFWIMG" + bytes(8) + (20 + len(body)).to_bytes(4, "little") + body)
    report = tmp_path / "report.json"
    done = run(sys.executable, EXAMPLES / "station.py", image, report, "--verify-at", "0", "--simulate",
               PYTHONPATH=str(installed))
    assert done.returncode == 0, done.stderr
    assert json.loads(report.read_text("utf-8")) == {
        "file": "firmware.bin", "done": True, "verified": 1020,
        "serial_number": "a0a1a2a3a4a5a6a7a8a9aaabacadaeafb0b1b2b3b4b5b6b7b8b9babbbcbdbebf",
        "chip": "517x", "version_before": "01 02 03 04 05 06", "check_sum_right": True}


def test_station_fails_where_there_is_nothing_to_update(installed, tmp_path):
    done = run(sys.executable, EXAMPLES / "station.py", tmp_path / "none", tmp_path / "report",
               "--simulate", PYTHONPATH=str(installed))
    assert done.returncode == 1
    assert json.loads((tmp_path / "report").read_text("utf-8"))["error"] == "FileNotFoundError"


def test_example_of_a_test_passes(installed):
    done = run(sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", EXAMPLES,
               PYTHONPATH=str(installed))
    assert done.returncode == 0, done.stdout
    assert "4 passed" in done.stdout


def shown():
    """The programs of the README, each with what it prints."""
    text = (ROOT / "python/README.md").read_text("utf-8")
    found = re.findall(r"```python\n(.*?)```\n\n?```\n(.*?)```", text, re.DOTALL)
    assert len(found) == text.count("```python") == 3
    return found


@pytest.mark.parametrize("program, output", shown())
def test_programs_of_the_readme_print_what_it_shows(program, output, capsys):
    with zemuvc.simulate():
        exec(program, {})
    assert capsys.readouterr().out == output
