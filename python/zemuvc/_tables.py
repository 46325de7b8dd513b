"""The camera's table store."""

from __future__ import annotations

import contextlib
import ctypes
from ctypes import byref
from typing import TYPE_CHECKING, Any, Iterator

from . import errors
from ._library import buffer_of, call, integer, room_of

if TYPE_CHECKING:
    from ._camera import Camera

# The library keeps that much of a store, and no table is longer.
_STORE = 8192
_HEADER = 4


class Tables:
    """The tables in the camera's non-volatile memory, by their ids. A table's size never changes."""

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def list(self) -> dict[int, int]:
        """The sizes of the tables by their ids. Where an id stands twice, the first one counts."""
        image = self.dump()
        tables: dict[int, int] = {}
        at = _HEADER
        while at + _HEADER <= len(image):
            size = int.from_bytes(image[at + 2:at + 4], "little")
            if size < _HEADER:
                break
            tables.setdefault(image[at + 1], size - _HEADER)
            at += size
        return tables

    def size(self, table: int) -> int:
        """Bytes of a table. Raises RefusedError when there is none."""
        with self._opened() as store:
            return self._size(store, table)

    def read(self, table: int) -> bytes:
        """A table. Raises RefusedError when there is none."""
        with self._opened() as store:
            size = self._size(store, table)
            # The export does not look at the buffer's size, so it gets one that holds every table.
            data = room_of(_STORE)
            call("ZEMAPI_ReadTableEx", self._camera.handle, store, table, data, _STORE, None)
            return bytes(data)[:size]

    def write(self, table: int, data: bytes) -> None:
        """Replaces a table by one of the same size; ValueError for any other size."""
        size = self.size(table)
        if len(data) != size:
            raise ValueError(f"table {table} has {size} bytes, and the data {len(data)}")
        written = ctypes.c_uint32()
        call("ZEMAPI_WriteTable", self._camera.handle, table, buffer_of(data, _STORE), len(data),
             byref(written))

    def dump(self) -> bytes:
        """The whole image, with its header."""
        with self._opened() as store:
            data = room_of(_STORE)
            size = ctypes.c_uint32()
            call("ZEMAPI_DumpWholeTable", self._camera.handle, store, data, _STORE, byref(size))
            return bytes(data)[:size.value]

    def initialize(self, image: bytes) -> None:
        """Replaces the whole store. The camera goes on writing after this has returned."""
        if not image or len(image) > _STORE:
            raise ValueError(f"an image has 1 to {_STORE} bytes, and this one {len(image)}")
        call("ZEMAPI_WriteInitialTable", self._camera.handle, buffer_of(image, _STORE), len(image))

    def _size(self, store: Any, table: int) -> int:
        size = ctypes.c_uint16()
        call("ZEMAPI_GetTableSize", self._camera.handle, store, integer("the id", table, 0xFF),
             byref(size))
        return size.value

    @contextlib.contextmanager
    def _opened(self) -> Iterator[Any]:
        store = ctypes.POINTER(ctypes.c_ubyte)()
        result = call("ZEMAPI_OpenTableHandle", self._camera.handle, byref(store))
        if not store:
            raise errors.error_of("ZEMAPI_OpenTableHandle", result)
        try:
            yield store
        finally:
            call("ZEMAPI_CloseTableHandle", self._camera.handle, byref(store))
