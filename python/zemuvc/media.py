"""Files of pictures and sound. No camera is touched, and any thread may call."""

from __future__ import annotations

import ctypes
import os
from typing import Any, Union

from ._library import _WINDOWS, buffer_of, exports, integer, room_of

Path = Union[str, "os.PathLike[str]"]

_MOST = 0xFFFFFFFF


def planes_to_rgb(frame: bytes, width: int, height: int) -> bytes:
    """Converts a frame of three planes (Y, U, V; a quarter of the pixels in each of the last two) to
    pixels of three bytes, blue first."""
    _check(frame, _planes(width, height), width, height)
    pixels = room_of(width * height * 3)
    exports().NV12_to_RGB(buffer_of(frame), pixels, width, height)
    return bytes(pixels)[:width * height * 3]


def save_yuy2(path: Path, frame: bytes, width: int, height: int) -> None:
    """Writes a YUY2 frame as a BMP file. Raises OSError when it could not be written."""
    _check(frame, width * height * 2, width, height)
    _written(exports().ConvertYUY2toBMP(str(path), buffer_of(frame), width, height), path)


def save_planes(path: Path, frame: bytes, width: int, height: int) -> None:
    """Writes a frame of three planes as a BMP file, which stands upside down in a viewer."""
    _check(frame, _planes(width, height), width, height)
    _written(exports().ConvertNV12toBMP(str(path), buffer_of(frame), width, height), path)


def save_rgb(path: Path, pixels: bytes, width: int, height: int) -> None:
    """Writes pixels of three bytes, blue first, as a BMP file in the order in which they lie.

    The export frees the pixels that it has written with the C runtime's free: it gets a copy from
    that runtime's malloc.
    """
    size = width * height * 3
    _check(pixels, size, width, height)
    runtime: Any = ctypes.CDLL("ucrtbase" if _WINDOWS else None)
    runtime.malloc.restype = ctypes.c_void_p
    runtime.malloc.argtypes = [ctypes.c_size_t]
    runtime.free.argtypes = [ctypes.c_void_p]
    copy = runtime.malloc(max(size, 1))
    if not copy:
        raise MemoryError
    ctypes.memmove(copy, pixels, size)
    result = exports().ConvertRGBtoBMP(str(path), ctypes.cast(copy, ctypes.POINTER(ctypes.c_ubyte)),
                                       width, height)
    if result != 1:
        runtime.free(copy)
    _written(result, path)


def save_wav(raw_path: Path, wav_path: Path, *, channels: int, sample_rate: int,
             bits_per_sample: int) -> None:
    """Puts a WAV header in front of a file of PCM samples. Raises OSError when it could not be done,
    and for a file without samples."""
    _written(exports().PackWavFile(str(raw_path), str(wav_path), integer("channels", channels, 0xFF),
                                   integer("the rate", sample_rate, 0x7FFFFFFF),
                                   integer("the bits", bits_per_sample, 0xFF)), wav_path)


def _planes(width: int, height: int) -> int:
    return width * height + 2 * (width * height // 4)


def _check(data: bytes, size: int, width: int, height: int) -> None:
    integer("the width", width, _MOST)
    integer("the height", height, _MOST)
    if len(data) != size:
        raise ValueError(f"a frame of {width}x{height} has {size} bytes, and this one {len(data)}")


def _written(result: int, path: Path) -> None:
    if result != 1:
        raise OSError(f"{path} could not be written")
