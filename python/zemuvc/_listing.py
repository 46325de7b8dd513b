"""The cameras that there are. The library has no export for this."""

from __future__ import annotations

import ctypes
import os
import pathlib
import re
import struct
import sys
from ctypes import POINTER, byref, c_int32, c_uint16, c_uint32, c_void_p, c_wchar_p
from typing import Any, Iterator, NamedTuple

from . import _simulator, errors
from ._exports import GUID


class CameraInfo(NamedTuple):
    """A video-input device; zemuvc.open() takes it."""

    name: str
    display_name: str
    device_path: str
    vendor_id: int | None  # of the USB ids; None for a device that has none
    product_id: int | None


def list_cameras() -> list[CameraInfo]:
    """Lists the video-input devices that the library can find, in the system's order: other makers'
    are among them. None of them is sent anything.

    While a simulation runs, these are its cameras and no others. On Linux a capture device is one of
    a USB video function.
    """
    running = _simulator.running()
    if running is not None:
        return _walk(running.enumerator())
    if sys.platform == "win32":
        return _list_windows()
    return list(_list_linux())


def _ids(name: str) -> tuple[int | None, int | None]:
    found = re.search(r"vid_([0-9a-f]{4})&pid_([0-9a-f]{4})", name, re.IGNORECASE)
    return (int(found[1], 16), int(found[2], 16)) if found else (None, None)


# ---- The system's device enumerator, whose objects are COM's ----

_VIDEO_INPUT = GUID(0x860BB310, 0x5D01, 0x11D0,
                    (ctypes.c_ubyte * 8)(0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86))
_PROPERTY_BAG = GUID(0x55272A00, 0x42CB, 0x11CE,
                     (ctypes.c_ubyte * 8)(0x81, 0x35, 0x00, 0xAA, 0x00, 0x4B, 0xB8, 0x51))
_SYSTEM_DEVICE_ENUM = GUID(0x62BE5D10, 0x60EB, 0x11D0,
                           (ctypes.c_ubyte * 8)(0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86))
_CREATE_DEV_ENUM = GUID(0x29840822, 0x5B84, 0x11D0,
                        (ctypes.c_ubyte * 8)(0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86))

# Places in the tables of the interfaces' methods.
_RELEASE = 2
_CREATE_CLASS_ENUMERATOR = 3
_NEXT = 3
_READ = 3
_BIND_TO_STORAGE = 9
_GET_DISPLAY_NAME = 20


class _Variant(ctypes.Structure):
    _fields_ = [("vt", c_uint16), ("reserved", c_uint16 * 3), ("text", c_void_p), ("rest", c_void_p)]


def _invoke(this: c_void_p, slot: int, kinds: list[Any], *arguments: Any) -> int:
    methods = ctypes.cast(this, POINTER(POINTER(c_void_p)))[0]
    # x86-64 has one calling convention on each system.
    method = ctypes.CFUNCTYPE(c_int32, c_void_p, *kinds)(methods[slot] or 0)
    return int(method(this, *arguments))


def _release(this: c_void_p) -> None:
    if this:
        _invoke(this, _RELEASE, [])


def _take_text(pointer: c_void_p, *, from_task: bool) -> str:
    """A text that is the caller's to free."""
    if not pointer.value:
        return ""
    text = ctypes.wstring_at(pointer.value)
    free: Any
    if sys.platform == "win32":
        free = (ctypes.WinDLL("ole32").CoTaskMemFree if from_task
                else ctypes.WinDLL("oleaut32").SysFreeString)
    else:
        free = ctypes.CDLL(None).free
    free.argtypes = [c_void_p]
    free.restype = None
    free(pointer)
    return text


def _property(bag: c_void_p, name: str) -> str:
    value = _Variant()
    result = _invoke(bag, _READ, [c_wchar_p, POINTER(_Variant), c_void_p], name, byref(value), None)
    text_type = 8
    if result < 0 or value.vt != text_type:
        return ""
    return _take_text(c_void_p(value.text), from_task=False)


def _describe(moniker: c_void_p) -> CameraInfo:
    text = c_void_p()
    _invoke(moniker, _GET_DISPLAY_NAME, [c_void_p, c_void_p, POINTER(c_void_p)], None, None,
            byref(text))
    display_name = _take_text(text, from_task=True)
    bag = c_void_p()
    _invoke(moniker, _BIND_TO_STORAGE, [c_void_p, c_void_p, POINTER(GUID), POINTER(c_void_p)], None,
            None, byref(_PROPERTY_BAG), byref(bag))
    try:
        name = _property(bag, "FriendlyName") if bag else ""
        device_path = _property(bag, "DevicePath") if bag else ""
    finally:
        _release(bag)
    return CameraInfo(name, display_name, device_path, *_ids(display_name))


def _walk(enumerator: c_void_p) -> list[CameraInfo]:
    """The cameras of a device enumerator, which is released."""
    monikers, moniker = c_void_p(), c_void_p()
    cameras = []
    try:
        # A category without devices has no enumerator of its own.
        result = _invoke(enumerator, _CREATE_CLASS_ENUMERATOR,
                         [POINTER(GUID), POINTER(c_void_p), c_uint32], byref(_VIDEO_INPUT),
                         byref(monikers), 0)
        if result < 0:
            raise errors.error_of("CreateClassEnumerator", result)
        kinds = [c_uint32, POINTER(c_void_p), c_void_p]
        while monikers and _invoke(monikers, _NEXT, kinds, 1, byref(moniker), None) == 0:
            try:
                cameras.append(_describe(moniker))
            finally:
                _release(moniker)
                moniker = c_void_p()
    finally:
        _release(monikers)
        _release(enumerator)
    return cameras


def _list_windows() -> list[CameraInfo]:
    if sys.platform != "win32":
        raise NotImplementedError("the system's device enumerator is Windows' own")
    ole = ctypes.WinDLL("ole32")
    ole.CoCreateInstance.argtypes = [POINTER(GUID), c_void_p, c_uint32, POINTER(GUID),
                                     POINTER(c_void_p)]
    initialized = ctypes.c_int32(ole.CoInitializeEx(None, 2)).value >= 0
    try:
        enumerator = c_void_p()
        result = ctypes.c_int32(ole.CoCreateInstance(
            byref(_SYSTEM_DEVICE_ENUM), None, 1, byref(_CREATE_DEV_ENUM), byref(enumerator))).value
        if result < 0:
            raise errors.error_of("CoCreateInstance", result)
        return _walk(enumerator)
    finally:
        if initialized:  # a thread that has COM in another way keeps that
            ole.CoUninitialize()


# ---- sysfs, under the names that the library gives the devices ----


def _attribute(path: pathlib.Path) -> str:
    try:
        return path.read_text("utf-8", "surrogateescape").split("\n")[0]
    except OSError:
        return ""


def _number(path: pathlib.Path, base: int) -> int | None:
    try:
        return int(_attribute(path), base)
    except ValueError:
        return None


def _is_capture(device_file: pathlib.Path, index: int) -> bool:
    """Whether frames come from a device file; one that cannot be asked counts if it is its
    function's first."""
    if sys.platform == "win32":
        raise NotImplementedError("device files of V4L2 are Linux's own")
    import fcntl
    querycap, video_capture = 0x80685600, 0x00000001
    capability = bytearray(104)  # the capabilities of the device file itself stand at 88
    try:
        descriptor = os.open(device_file, os.O_RDWR | os.O_NONBLOCK | os.O_CLOEXEC)
        try:
            fcntl.ioctl(descriptor, querycap, capability)
        finally:
            os.close(descriptor)
    except OSError:
        return index == 0
    return bool(struct.unpack_from("<I", capability, 88)[0] & video_capture)


def _describe_linux(folder: pathlib.Path, device_file: pathlib.Path) -> CameraInfo | None:
    video_class = 0x0E
    interface = (folder / "device").resolve()
    device = interface.parent
    vendor, product = _number(device / "idVendor", 16), _number(device / "idProduct", 16)
    configuration = _number(device / "bConfigurationValue", 10)
    number = _number(interface / "bInterfaceNumber", 16)
    index = _number(folder / "index", 10) or 0
    if (vendor is None or product is None or configuration is None or number is None
            or _number(interface / "bInterfaceClass", 16) != video_class
            or not _is_capture(device_file, index)):
        return None
    bus = next((parent for parent in device.parents if parent.name.startswith("usb")), None)
    if bus is None:
        return None
    controller = bus.parent
    version = _attribute(bus / "version").strip()[:1]
    ports = device.name.partition("-")[2]
    return CameraInfo(
        _attribute(folder / "name"),
        f"usb#vid_{vendor:04x}&pid_{product:04x}&mi_{number:02x}#{device.name}"
        + (f"&{index}" if index else ""),
        f"/dev/v4l/by-path/{(controller / 'subsystem').resolve().name}-{controller.name}-usb"
        f"{'v' + version if version else ''}-0:{ports}:{configuration}.{number}-video-index{index}",
        vendor, product)


def _list_linux(system: pathlib.Path = pathlib.Path("/sys"),
                devices: pathlib.Path = pathlib.Path("/dev")) -> Iterator[CameraInfo]:
    videos = system / "class/video4linux"
    numbered = [(int(found[1]), folder) for folder in (videos.iterdir() if videos.is_dir() else ())
                if (found := re.fullmatch(r"video(\d+)", folder.name))]
    for _, folder in sorted(numbered):
        camera = _describe_linux(folder, devices / folder.name)
        if camera is not None:
            yield camera
