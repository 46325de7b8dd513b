"""The ground of the tests: the built library and its simulator, and a library that only takes notes."""

from __future__ import annotations

import ctypes
import os
import pathlib
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("ZEM_LIBRARY", str(ROOT / "build/linux"))
sys.path.insert(0, str(ROOT / "python"))

from zemuvc import _exports, _library  # noqa: E402


class FakeFunction:
    """An export that writes its arguments down, and answers as it is told."""

    def __init__(self, library: FakeLibrary, name: str) -> None:
        self.library = library
        self.name = name
        self.answer = lambda *arguments: 0
        self.restype = self.argtypes = None

    def __call__(self, *arguments):
        self.library.calls.append((self.name, *map(plain, arguments)))
        # As ctypes does it: an argument that does not fit raises.
        for kind, argument in zip(self.argtypes, arguments, strict=True):
            kind.from_param(argument)
        return self.answer(*arguments)


def plain(argument):
    if isinstance(argument, ctypes.Array):
        return bytes(argument) if argument._type_ is ctypes.c_ubyte else "array"
    if isinstance(argument, ctypes.c_void_p):
        return argument.value
    return argument if isinstance(argument, (int, str, type(None))) else "address"


class FakeLibrary:
    """Every export of the table, none of which does anything."""

    def __init__(self) -> None:
        self.calls: list[tuple] = []
        self._functions = {export.symbol: FakeFunction(self, export.name)
                           for export in _exports.EXPORTS}
        self["ZEMAPI_OpenDevice"].answer = self.give_handle
        self["ZEMROMAPI_OpenDevice"].answer = lambda mode: 0x77
        self["WREN_OpenDevice"].answer = self.give_handle

    def __getitem__(self, symbol: str) -> FakeFunction:
        return self._functions[symbol]

    @staticmethod
    def give_handle(index, handle) -> int:
        handle._obj.value = 0x55
        return 0


@pytest.fixture
def fake():
    library = FakeLibrary()
    before = _library._exports
    _library.use(library)
    yield library
    _library._exports = before
