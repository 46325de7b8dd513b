"""What is opened, used and closed on one thread."""

from __future__ import annotations

import ctypes
import threading
import warnings
from types import TracebackType
from typing import TypeVar

from . import errors

_Self = TypeVar("_Self", bound="Owned")


class Owned:
    """Something of the library's that is to be closed.

    Open it, use it and close it on one thread: a command and its reply are two transfers, and on
    Windows COM is initialised for the thread that opened it. Another thread gets WrongThreadError.
    """

    def __init__(self, pointer: int) -> None:
        self._pointer: ctypes.c_void_p | None = ctypes.c_void_p(pointer)
        self._thread = threading.get_ident()

    def _close(self, pointer: ctypes.c_void_p) -> None:
        raise NotImplementedError

    @property
    def handle(self) -> ctypes.c_void_p:
        """The library's own pointer, for zemuvc.exports(); it stays this object's."""
        if self._pointer is None:
            raise errors.ClosedError(f"this {type(self).__name__} is closed")
        if threading.get_ident() != self._thread:
            raise errors.WrongThreadError(
                f"this {type(self).__name__} belongs to the thread that opened it")
        return self._pointer

    @property
    def closed(self) -> bool:
        return self._pointer is None

    def close(self) -> None:
        """Closes it, on the thread that opened it. A second time does nothing."""
        if self._pointer is not None:
            pointer = self.handle
            self._pointer = None
            self._close(pointer)

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __del__(self) -> None:
        # Which thread this runs on is nobody's choice, so nothing is closed here.
        if getattr(self, "_pointer", None) is not None:
            warnings.warn(f"a {type(self).__name__} was never closed", ResourceWarning, source=self)
