"""What can go wrong, each with a name of its own."""

from __future__ import annotations

from . import _exports

# What ZEMAPI_OpenDeviceByPath and its like return for a device without the vendor extension unit.
_NO_VENDOR_UNIT = 1


class Error(Exception):
    """Everything that this package raises beside wrong arguments (ValueError, TypeError)."""


class LibraryNotFoundError(Error, OSError):
    """The shared library is not where it is looked for."""


class WrongThreadError(Error):
    """A camera or session was used on another thread than the one that opened it."""


class ClosedError(Error):
    """A camera or session was used after it was closed."""


class SimulatorError(Error):
    """The simulator did not start or stop; the text is its own."""


class VerifyError(Error):
    """What was read back is not what was written.

    `address` is that of the first byte that differs.
    """

    def __init__(self, message: str, address: int) -> None:
        super().__init__(message)
        self.address = address


class IncompleteError(Error):
    """Fewer bytes were moved than there were."""


class ResultError(Error):
    """A function of the library failed.

    `function` is the export's name, `result` its result as an unsigned number, `name` what that is
    called ("ZEM_E_REFUSED"; "platform failure" for what has no name), `text` what it means.
    """

    def __init__(self, function: str, result: int, text: str | None = None) -> None:
        self.function = function
        self.result = result & 0xFFFFFFFF
        self.name, meaning = describe(result)
        self.text = text or meaning
        super().__init__(f"{function}: {self.text} ({self.name}, 0x{self.result:08X})")


class RefusedError(ResultError):
    """ZEM_E_REFUSED: a bad argument, or a table image or entry that is missing."""


class CameraRefusedError(ResultError):
    """ZEM_E_DEVICE_REFUSED: the camera refused the command or reported an error."""


class BufferTooSmallError(ResultError):
    """ZEM_E_BUFFER_TOO_SMALL: there is more data than room was given for."""


class NoDeviceError(ResultError):
    """ZEM_E_NO_DEVICE: the command could not be written to the camera."""


class FailedError(ResultError):
    """ZEM_E_FAIL: no matching device, corrupt data, or a failure in ROM boot."""


class NoCameraError(FailedError):
    """ZEM_E_FAIL where a camera was looked for: there is none that matches."""

    def __init__(self, function: str, result: int) -> None:
        super().__init__(function, result, "no camera matches")


class NoVendorUnitError(ResultError):
    """The device that was found lacks the vendor extension unit."""


class PlatformError(ResultError):
    """A failure of the system, as it came."""


class TransferFailedError(PlatformError):
    """The camera did not carry a transfer out."""


class CameraGoneError(PlatformError):
    """The camera is gone."""


class NoSuchControlError(PlatformError):
    """The camera has no such control."""


_BY_RESULT: dict[int, type[ResultError]] = {
    _exports.ZEM_E_REFUSED: RefusedError,
    _exports.ZEM_E_DEVICE_REFUSED: CameraRefusedError,
    _exports.ZEM_E_BUFFER_TOO_SMALL: BufferTooSmallError,
    _exports.ZEM_E_NO_DEVICE: NoDeviceError,
    _exports.ZEM_E_FAIL: FailedError,
    _NO_VENDOR_UNIT: NoVendorUnitError,
}

_BY_TRANSFER_FAILURE: dict[str, type[PlatformError]] = {
    "the camera did not carry it out": TransferFailedError,
    "the camera is gone": CameraGoneError,
    "the camera has no such control": NoSuchControlError,
}


def describe(result: int) -> tuple[str, str]:
    """The name of a result, with or without its sign, and a clause that says what it means."""
    signed = result - 0x100000000 if result >= 0x80000000 else result
    if signed == _NO_VENDOR_UNIT:
        return "positive result", "the camera has no vendor extension unit"
    if signed in _exports.RESULTS:
        return _exports.RESULTS[signed]
    if signed > 0:
        return "positive result", "done"
    return "platform failure", _exports.TRANSFER_FAILURES.get(
        signed, "the platform reported a failure")


def error_of(function: str, result: int) -> ResultError:
    """The exception for a failed result of `function`."""
    kind = _BY_RESULT.get(result)
    if kind is None:
        text = _exports.TRANSFER_FAILURES.get(result)
        kind = _BY_TRANSFER_FAILURE[text] if text is not None else PlatformError
    return kind(function, result)
