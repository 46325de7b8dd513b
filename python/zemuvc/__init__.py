"""USB video-class cameras built on the vendor's camera processors: registers, firmware, tables, ROM boot.

    import zemuvc

    with zemuvc.open() as camera:
        print(camera.firmware_version.hex(" "))
        camera.registers.isp[0x123456] = 0xABCD

Threads: open a camera, use it and close it on one thread, one command at a time; another thread gets
WrongThreadError. Different cameras may be used on different threads.

Failures are exceptions with names, all of them zemuvc.Error (zemuvc.errors has the list). A value that
does not fit, or bytes of a wrong length, are ValueError, and nothing has been sent then.
"""

from __future__ import annotations

import ctypes as _ctypes
from ctypes import byref as _byref

from . import media
from ._exports import (GUID, VERSION as __version__, ZEM_ENCODING_UNIT_XU, ZEM_H264_XU, ZEM_ORVA_XU,
                       ZEM_SKYPE_XU, ZEM_STREAM_PROBE_XU, ZEM_TIRELLA_XU, ZEM_VENDOR_XU)
from ._library import call_search as _call, exports, integer as _integer
from ._camera import Camera, Control, H264Format, Range, Setting
from ._encoding import EncodingUnit, open_encoding_unit
from .errors import (BufferTooSmallError, CameraGoneError, CameraRefusedError, ClosedError, Error,
                     FailedError, IncompleteError, LibraryNotFoundError, NoCameraError,
                     NoDeviceError, NoSuchControlError, NoVendorUnitError, PlatformError, RefusedError, ResultError,
                     SimulatorError, TransferFailedError, VerifyError, WrongThreadError)
from ._listing import CameraInfo, list_cameras
from ._rom_boot import RomBoot, rom_boot
from ._simulator import Simulation, Transfer, simulate

__all__ = [
    "BufferTooSmallError", "Camera", "CameraGoneError", "CameraInfo", "CameraRefusedError",
    "ClosedError", "Control", "EncodingUnit", "Error", "FailedError", "GUID", "H264Format",
    "IncompleteError", "LibraryNotFoundError", "NoCameraError", "NoDeviceError", "NoSuchControlError",
    "NoVendorUnitError", "PlatformError", "Range", "RefusedError", "ResultError", "RomBoot", "Setting",
    "SimulatorError", "Simulation", "Transfer", "TransferFailedError", "VerifyError",
    "WrongThreadError", "ZEM_ENCODING_UNIT_XU", "ZEM_H264_XU", "ZEM_ORVA_XU", "ZEM_SKYPE_XU",
    "ZEM_STREAM_PROBE_XU", "ZEM_TIRELLA_XU", "ZEM_VENDOR_XU", "__version__", "exports",
    "list_cameras", "media", "open", "open_encoding_unit", "rom_boot", "simulate",
]


def open(camera: CameraInfo | str | None = None, *, index: int = 0, vendor_id: int | None = None,
         product_id: int | None = None) -> Camera:
    """Opens a camera: one that list_cameras() tells, or its display name or device path; else the
    index-th with the USB ids that are given, or with those of zem_setting.ini beside the host program
    (beside python itself, that is), or with the vendor's.

    Raises NoCameraError when there is none, NoVendorUnitError for a device that was named and is not
    one of these cameras, CameraGoneError and the like for what the system says.
    """
    pointer = _ctypes.c_void_p()
    if camera is not None:
        if index or vendor_id is not None or product_id is not None:
            raise ValueError("a camera is told by its name, or by ids and index")
        _open_named(camera, pointer)
    elif (vendor_id is None) != (product_id is None):
        raise ValueError("the vendor's id and the product's go together")
    elif vendor_id is None or product_id is None:
        _call("ZEMAPI_OpenDevice", _integer("the index", index, 0xFFFFFFFF), _byref(pointer))
    else:
        _call("ZEMAPI_OpenDeviceEx", _integer("the index", index, 0xFFFFFFFF), _byref(pointer),
              _integer("the vendor's id", vendor_id, 0xFFFF),
              _integer("the product's id", product_id, 0xFFFF))
    assert pointer.value is not None
    return Camera(pointer.value)


def _open_named(camera: CameraInfo | str, pointer: _ctypes.c_void_p) -> None:
    if isinstance(camera, CameraInfo):
        function, name = "ZEMAPI_OpenDeviceByPath", camera.display_name
    elif camera.startswith(("\\\\?\\", "/")):
        function, name = "ZEMAPI_OpenDeviceByDevPath", camera
    else:
        function, name = "ZEMAPI_OpenDeviceByPath", camera
    result = _call(function, name, _byref(pointer))
    if result == 1:
        raise NoVendorUnitError(function, result)
