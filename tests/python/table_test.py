"""The generated table against the list of exported names, the built library and the C compiler."""

from __future__ import annotations

import ctypes
import pathlib
import re
import subprocess
import sys

import pytest

from zemuvc import _exports

ROOT = pathlib.Path(__file__).resolve().parents[2]


def test_names_every_export_of_the_module_definition_file():
    text = (ROOT / "exports/ZemUVCExtApi.def").read_text("utf-8")
    names = {line.strip().strip('"') for line in text.splitlines() if re.match(r"  [^;]", line)}
    assert len(names) == 173
    assert {(export.decorated or [export.name])[0] for export in _exports.EXPORTS} == names
    assert len(_exports.EXPORTS) == 173


def test_finds_every_export_in_the_built_library():
    library = ctypes.CDLL(str(ROOT / "build/linux/libZemUVCExtApi.so.1"))
    functions = _exports.Exports(library)
    for export in _exports.EXPORTS:
        assert getattr(functions, export.name).argtypes == [kind for _, kind in export.arguments]


def test_decorated_symbols():
    decorated = {export.name: export.decorated for export in _exports.EXPORTS if export.decorated}
    assert decorated == {
        "ZEMAPI_GetFWVersion_cpp": ("?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z",
                                    "_Z19ZEMAPI_GetFWVersionPvPc"),
        "WREN_EuGet": ("?WREN_EuGet@@YAJPEAXI0G@Z", "_Z10WREN_EuGetPvjS_t"),
        "ZEMROMAPI_SwitchModePCAM_DRAM": ("?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z",
                                          "_Z29ZEMROMAPI_SwitchModePCAM_DRAMPv"),
    }


@pytest.mark.parametrize("name, result, arguments", [
    ("ZEMAPI_GetRegister", ctypes.c_int32,
     [ctypes.c_void_p, ctypes.c_uint32, ctypes.POINTER(ctypes.c_uint16)]),
    ("ZEMAPI_CloseDevice", None, [ctypes.POINTER(ctypes.c_void_p)]),
    ("ZEMUVCEXT_SetIFrame", ctypes.c_int32, []),
    ("ZEMROMAPI_OpenDevice", ctypes.c_void_p, [ctypes.c_uint32]),
    ("ZEMAPI_OpenTableHandle", ctypes.c_int32,
     [ctypes.c_void_p, ctypes.POINTER(ctypes.POINTER(ctypes.c_ubyte))]),
    ("ZEMAPI_AudioSetVolume", ctypes.c_int32, [ctypes.c_void_p, ctypes.c_int32]),
    ("ZEMAPI_UpdateFW_516x", ctypes.c_int32,
     [ctypes.c_void_p, ctypes.POINTER(ctypes.c_ubyte), ctypes.c_uint32, _exports.ProgressCallback,
      ctypes.c_uint64, ctypes.c_ubyte]),
    ("PackWavFile", ctypes.c_int32,
     [ctypes.c_wchar_p, ctypes.c_wchar_p, ctypes.c_ubyte, ctypes.c_int32, ctypes.c_ubyte]),
])
def test_types(name, result, arguments):
    export = next(export for export in _exports.EXPORTS if export.name == name)
    assert export.result is result
    assert [kind for _, kind in export.arguments] == arguments


def test_structures_lie_in_memory_as_the_compiler_lays_them(tmp_path):
    structures = [_exports.GUID, _exports.OrvaStreamFormat, _exports.H264FrameInfo,
                  _exports.H264FrameList]
    lines = ['#include <stdio.h>', '#include "include/ZemUVCExtApi.h"', "int main(void) {"]
    expected = []
    for structure in structures:
        lines.append(f'  printf("%zu\\n", sizeof({structure.__name__}));')
        expected.append(ctypes.sizeof(structure))
        for field, *_ in structure._fields_:
            lines.append(f'  printf("%zu\\n", offsetof({structure.__name__}, {field}));')
            expected.append(getattr(structure, field).offset)
    source = tmp_path / "layout.c"
    source.write_text("\n".join([*lines, "}"]), "utf-8")
    subprocess.run(["cc", "-I", ROOT, source, "-o", tmp_path / "layout"], check=True)
    told = subprocess.run([tmp_path / "layout"], check=True, text=True, capture_output=True).stdout
    assert [int(number) for number in told.split()] == expected
    assert len(expected) == 29


def test_results_and_texts():
    assert _exports.ZEM_E_NO_DEVICE == 0x80000003 - 0x100000000
    assert _exports.RESULTS[_exports.ZEM_E_DEVICE_REFUSED] == (
        "ZEM_E_DEVICE_REFUSED", "the camera refused the command")
    assert _exports.TRANSFER_FAILURES[0x8007048F - 0x100000000] == "the camera is gone"
    assert bytes(_exports.ZEM_VENDOR_XU).hex() == "d09ee4237811314fae52d2fb8a8d3b48"


@pytest.fixture
def generator(monkeypatch):
    monkeypatch.syspath_prepend(ROOT / "scripts")
    monkeypatch.delitem(sys.modules, "generate_python", raising=False)
    import generate_python
    return generate_python


@pytest.mark.parametrize("header, names, said", [
    ("", "A", "exported and not declared: ['A']"),
    ("ZEM_API ZemResult A(void);", "", "declared and not exported: ['A']"),
    ("ZEM_API ZemResult A(void); ZEM_API ZemResult A(void);", "A", "declared twice: ['A']"),
    ("ZemResult A(void);", "A", "neither ZEM_API nor ZEM_DECORATED"),
    ("ZEM_API ZemResult A(float x);", "A", "no type of ctypes for 'float'"),
])
def test_generator_refuses_what_does_not_fit(generator, header, names, said):
    results = "#define ZEM_RESULT_TEXTS(ENTRY)\n#define ZEM_TRANSFER_FAILURE_TEXTS(ENTRY)\n"
    version = "".join(f"#define ZEM_VERSION_{part} 1\n" for part in ("MAJOR", "MINOR", "PATCH"))
    with pytest.raises(ValueError, match=re.escape(said)):
        generator.generate(version + header, results, f"EXPORTS\n  {names}\n")


def test_generator_check_fails_for_a_stale_table(generator, monkeypatch, tmp_path):
    stale = tmp_path / "_exports.py"
    stale.write_text(generator.OUTPUT.read_text("utf-8").replace("c_uint16", "c_uint32"), "utf-8")
    monkeypatch.setattr(sys, "argv", ["generate_python.py", "--check"])
    assert generator.main() == 0
    monkeypatch.setattr(generator, "ROOT", tmp_path)
    monkeypatch.setattr(generator, "OUTPUT", stale)
    assert generator.main() == 1
