"""Where the library is looked for."""

from __future__ import annotations

import ctypes
import pathlib
import subprocess

import pytest

import zemuvc
from zemuvc import _library

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture
def package(tmp_path, monkeypatch):
    """The package in a folder of its own, and no library loaded."""
    folder = tmp_path / "package"
    folder.mkdir()
    monkeypatch.setattr(_library, "__file__", str(folder / "_library.py"))
    monkeypatch.setattr(_library, "_exports", None)
    return folder


def test_beside_the_package_first_then_by_the_variable_then_the_system(package, tmp_path, monkeypatch):
    monkeypatch.delenv("ZEM_LIBRARY")
    assert _library.candidates("name") == ["name"]
    said = tmp_path / "said"
    said.mkdir()
    (said / "name").touch()
    monkeypatch.setenv("ZEM_LIBRARY", str(said))
    assert _library.candidates("name") == [str(said / "name"), "name"]
    (package / "name").touch()
    assert _library.candidates("name") == [str(package / "name"), str(said / "name"), "name"]


def test_the_variable_may_name_the_file(package, tmp_path, monkeypatch):
    other = tmp_path / "libOther.so"
    other.touch()
    (tmp_path / _library.SIMULATOR).touch()
    monkeypatch.setenv("ZEM_LIBRARY", str(other))
    assert _library.candidates(_library.LIBRARY) == [str(other), _library.LIBRARY]
    assert _library.candidates(_library.SIMULATOR) == [str(tmp_path / _library.SIMULATOR),
                                                       _library.SIMULATOR]


def test_a_library_that_is_nowhere(package, monkeypatch):
    monkeypatch.delenv("ZEM_LIBRARY")
    monkeypatch.setattr(_library, "LIBRARY", "libNowhere.so.1")
    with pytest.raises(zemuvc.LibraryNotFoundError, match="libNowhere.so.1.*ZEM_LIBRARY"):
        zemuvc.exports()
    with pytest.raises(OSError):
        zemuvc.open()


def test_a_library_without_an_export_is_refused():
    with pytest.raises(AttributeError):
        _library.use(ctypes.CDLL(None))


def test_the_simulator_of_linux_has_the_exports_of_the_other():
    text = (ROOT / "simulator/windows/ZemSimulator.def").read_text("utf-8").partition("EXPORTS")[2]
    wanted = sorted(line.strip() for line in text.splitlines() if line and "PRIVATE" not in line)
    told = subprocess.run(["nm", "-D", "--defined-only", ROOT / "build/linux" / _library.SIMULATOR],
                          check=True, text=True, capture_output=True).stdout
    assert sorted(line.split()[-1] for line in told.splitlines()) == wanted
    assert len(wanted) == 6


def test_the_systems_list_is_windows_own():
    simulator = ctypes.CDLL(str(ROOT / "build/linux" / _library.SIMULATOR))
    simulator.ZemSimulatorLastError.restype = ctypes.c_char_p
    assert simulator.ZemSimulatorStart(None) == 0x80004005 - 0x100000000
    assert b"Windows' own" in simulator.ZemSimulatorLastError()
