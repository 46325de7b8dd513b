"""The encoding unit of a camera."""

from __future__ import annotations

import ctypes
from ctypes import byref

from ._library import buffer_of, call, call_search, exports, integer, room_of
from ._owned import Owned

_BLOCK = 51  # bytes of a probe or commit block


class EncodingUnit(Owned):
    """The encoding unit, as zemuvc.open_encoding_unit() gives it. Use it on one thread; another one
    gets WrongThreadError. Every transfer is appended to the library's command log."""

    def _close(self, pointer: ctypes.c_void_p) -> None:
        exports().WREN_CloseDevice(byref(pointer))

    def get(self, selector: int, length: int) -> bytes:
        """Reads a control of `length` bytes."""
        data = room_of(integer("the length", length, 0xFFFF))
        call("WREN_EuGet", self.handle, integer("the selector", selector, 0xFFFF), data, length)
        return bytes(data)[:length]

    def set(self, selector: int, data: bytes) -> None:
        """Writes a control, as long as it is."""
        integer("the length", len(data), 0xFFFF)
        call("WREN_EuSet", self.handle, integer("the selector", selector, 0xFFFF), buffer_of(data),
             len(data))

    def get_probe(self) -> bytes:
        """The probe block, 51 bytes."""
        return self._get("WREN_ProbeGet")

    def set_probe(self, block: bytes) -> None:
        self._set("WREN_ProbeSet", block)

    def get_commit(self) -> bytes:
        """The commit block, 51 bytes."""
        return self._get("WREN_CommitGet")

    def set_commit(self, block: bytes) -> None:
        self._set("WREN_CommitSet", block)

    def _get(self, function: str) -> bytes:
        block = room_of(_BLOCK)
        call(function, self.handle, block)
        return bytes(block)

    def _set(self, function: str, block: bytes) -> None:
        if len(block) != _BLOCK:
            raise ValueError(f"a block has {_BLOCK} bytes, and this one {len(block)}")
        call(function, self.handle, buffer_of(block))


def open_encoding_unit(index: int = 0) -> EncodingUnit:
    """Opens the encoding unit of the index-th default camera, see zemuvc.open()."""
    pointer = ctypes.c_void_p()
    call_search("WREN_OpenDevice", integer("the index", index, 0xFFFFFFFF), byref(pointer))
    assert pointer.value is not None
    return EncodingUnit(pointer.value)
