"""The shared library: where it is, and calls of it that raise."""

from __future__ import annotations

import ctypes
import os
import pathlib
from typing import Any, Callable

from . import errors
from ._exports import Exports, ProgressCallback

# What is told how far a transfer has come: a phase, "send", "burn" or "read", and its percentage.
Progress = Callable[[str, int], None]

_WINDOWS = os.name == "nt"
LIBRARY = "ZemUVCExtApi.dll" if _WINDOWS else "libZemUVCExtApi.so.1"
SIMULATOR = "ZemSimulator.dll" if _WINDOWS else "libZemSimulator.so"

_exports: Exports | None = None


def candidates(name: str) -> list[str]:
    """Where a library is looked for, in this order: beside this package, where the environment
    variable ZEM_LIBRARY says (the file or its folder), on the system's own path."""
    places = [pathlib.Path(__file__).resolve().parent]
    said = os.environ.get("ZEM_LIBRARY")
    if said:
        place = pathlib.Path(said).resolve()
        if place.is_file() and name == LIBRARY:
            return [str(path) for path in (places[0] / name, place) if path.exists()] + [name]
        places.append(place.parent if place.is_file() else place)
    return [str(place / name) for place in places if (place / name).exists()] + [name]


def load_shared(name: str) -> ctypes.CDLL:
    """Loads a library of this project. Raises LibraryNotFoundError."""
    said = []
    for path in candidates(name):
        try:
            # On Windows also what the library itself needs is looked for beside it.
            return ctypes.CDLL(path)
        except OSError as error:
            said.append(f"{path}: {error}")
    raise errors.LibraryNotFoundError(
        f"{name} was not found beside the package, by ZEM_LIBRARY or on the system's path "
        f"({'; '.join(said)})")


def use(library: Any) -> None:
    """Makes every call go to `library`, which is a ctypes.CDLL or looks like one; None forgets it."""
    global _exports
    _exports = Exports(library) if library is not None else None


def exports() -> Exports:
    """Every function of the library with its types, for what the friendly layer does not have.

    These are the bare exports: nobody looks at the lengths of buffers. ZEMAPI_GetSerialNumber ends
    the process (Camera.sensor_serial_number asks the camera), and ConvertRGBtoBMP frees the pixels
    (zemuvc.media.save_rgb does not mind). The library is loaded by the first call.
    """
    if _exports is None:
        use(load_shared(LIBRARY))
    assert _exports is not None
    return _exports


def call(function: str, *arguments: Any) -> int:
    """Calls an export. Returns its result, which is not negative; raises a ResultError otherwise."""
    result: int = getattr(exports(), function)(*arguments)
    if result < 0:
        raise errors.error_of(function, result)
    return result


def call_search(function: str, *arguments: Any) -> int:
    """Calls an export that looks for a device. Raises NoCameraError when there is none."""
    try:
        return call(function, *arguments)
    except errors.FailedError as error:
        raise errors.NoCameraError(function, error.result) from None


def buffer_of(data: bytes, room: int = 0) -> Any:
    """The bytes as an array of C, with zeros up to `room` bytes behind them."""
    return (ctypes.c_ubyte * max(len(data), room, 1)).from_buffer_copy(
        data.ljust(max(room, 1), b"\0"))


def room_of(size: int) -> Any:
    """An array of C for `size` bytes."""
    return (ctypes.c_ubyte * max(size, 1))()


def round_up(length: int, step: int) -> int:
    return (length + step - 1) // step * step


def integer(what: str, value: int, most: int, least: int = 0) -> int:
    """`value` if it lies in its range: ctypes would cut it to its lowest bits. Raises ValueError."""
    if not least <= value <= most:
        raise ValueError(f"{what} is {value}, and goes from {least} to {most}")
    return value


def read_image(image: bytes | bytearray | memoryview | str | os.PathLike[str]) -> bytes:
    """The bytes of what is either a file's path or bytes already."""
    if isinstance(image, (bytes, bytearray, memoryview)):
        return bytes(image)
    return pathlib.Path(image).read_bytes()


class Callback:
    """A callback for one call: what `tell` raises ends up at the caller, once the call has ended.

    No transfer is cut short by it; it is not told anything more.
    """

    def __init__(self, tell: Callable[[int], None] | None) -> None:
        self._tell = tell
        self._error: BaseException | None = None
        # Kept here: the library calls it as long as the call lasts.
        self.pointer = ProgressCallback(self._on_progress)

    def _on_progress(self, value: int, _user: int) -> None:
        if self._tell is None or self._error is not None:
            return
        try:
            self._tell(value)
        except BaseException as error:  # also KeyboardInterrupt: there is no way up through C
            self._error = error

    def call(self, function: str, *arguments: Any) -> int:
        """Calls an export, then raises what was raised meanwhile."""
        try:
            return call(function, *arguments)
        finally:
            if self._error is not None:
                raise self._error


def image_progress(progress: Progress | None) -> Callback:
    """For the procedures that send an image: they tell the percentage that is left to send, and the
    one that waits a fixed time then counts 10, 9, ... 1."""
    last = 100
    burning = False

    def tell(value: int) -> None:
        nonlocal last, burning
        burning = burning or value > last
        last = value
        if progress is not None:
            progress(*(("burn", 100 - 10 * value) if burning else ("send", 100 - value)))

    return Callback(tell)
