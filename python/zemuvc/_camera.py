"""A camera and what it has."""

from __future__ import annotations

import ctypes
import os
from ctypes import byref
from typing import Any, NamedTuple, Union

from . import errors
from ._exports import GUID, ZEM_VENDOR_XU, H264FrameInfo, H264FrameList
from ._library import (Callback, Progress, buffer_of, call, exports, image_progress, integer,
                       read_image, room_of, round_up)
from ._owned import Owned
from ._tables import Tables

# A file's path, or bytes.
Image = Union[bytes, bytearray, memoryview, str, "os.PathLike[str]"]

# As many bytes as a length with a sign holds, for which the library sends data.
_MOST_DATA = 0x7FFFFFFF
# What the 16 bits of an announcement can say.
_MOST_ANNOUNCED = 0xFFFF
# A piece of a flash read: whole chunks of both speeds, and announced whole.
_FLASH_PIECE = 0x8000
# A short last chunk may be sent whole, with what follows it in memory.
_WIDEST_CHUNK = 512

_AUTOMATIC, _MANUAL = 1, 2


class _Registers:
    """Registers of one space, by address: `space[address]`, `space[address] = value`."""

    def __init__(self, camera: Camera, read: str, write: str, addresses: int, value: Any) -> None:
        self._camera = camera
        self._read = read
        self._write = write
        self._addresses = addresses
        self._value = value
        self._most = (1 << 8 * ctypes.sizeof(value)) - 1

    def __getitem__(self, address: int) -> int:
        integer("the address", address, self._addresses)
        value = self._value()
        call(self._read, self._camera.handle, address, byref(value))
        return int(value.value)

    def __setitem__(self, address: int, value: int) -> None:
        integer("the address", address, self._addresses)
        integer("the value", value, self._most)
        call(self._write, self._camera.handle, address, value)


class Registers:
    """The camera's registers. A reply that cannot be read looks like one of zeros to the library."""

    def __init__(self, camera: Camera) -> None:
        #: processor registers, 24-bit addresses, 16-bit values
        self.isp = _Registers(camera, "ZEMAPI_GetRegister", "ZEMAPI_SetRegister", 0xFFFFFF,
                              ctypes.c_uint16)
        #: image-sensor registers, 16-bit addresses, bytes
        self.sensor = _Registers(camera, "ZEMAPI_GetSensorRegister", "ZEMAPI_SetSensorRegister",
                                 0xFFFF, ctypes.c_ubyte)
        #: image-sensor registers, 16-bit addresses, 16-bit values
        self.sensor16 = _Registers(camera, "ZEMAPI_GetSensorRegisterW",
                                   "ZEMAPI_SetSensorRegisterW", 0xFFFF, ctypes.c_uint16)
        #: registers of the lens actuator, 16-bit addresses, 16-bit values
        self.vcm = _Registers(camera, "ZEMAPI_GetVCMRegister", "ZEMAPI_SetVCMRegister", 0xFFFF,
                              ctypes.c_uint16)
        #: codec registers, 16-bit addresses, bytes
        self.codec = _Registers(camera, "ZEMAPI_ReadCodecReg", "ZEMAPI_WriteCodecReg", 0xFFFF,
                                ctypes.c_ubyte)


class ExtensionUnit:
    """The controls of one extension unit, as they are."""

    def __init__(self, camera: Camera, unit: GUID) -> None:
        self._camera = camera
        self._unit = unit

    @property
    def present(self) -> bool:
        """Whether the camera has it. One without any node counts as having every unit."""
        return call("ZEMAPI_UvcCheckXuGuid", self._camera.handle, byref(self._unit)) == 0

    def get(self, selector: int, length: int) -> bytes:
        """Reads a control of `length` bytes; fewer when the camera answered with fewer."""
        integer("the selector", selector, 0xFFFF)
        data = room_of(length)
        moved = ctypes.c_uint32()
        call("ZEMAPI_UvcExtGet", self._camera.handle, byref(self._unit), selector, data, length,
             byref(moved))
        return bytes(data)[:min(length, moved.value)]

    def set(self, selector: int, data: bytes) -> None:
        """Writes a control, as long as it is."""
        integer("the selector", selector, 0xFFFF)
        moved = ctypes.c_uint32()
        call("ZEMAPI_UvcExtSet", self._camera.handle, byref(self._unit), selector, buffer_of(data),
             len(data), byref(moved))


class Flash:
    """The camera's flash memory."""

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def read(self, address: int, size: int, progress: Progress | None = None) -> bytes:
        """Reads `size` bytes from `address` on, with calls of at most 32,768 bytes."""
        integer("the size", size, 0x100000000)
        integer("the end", address + size, 0x100000000)
        integer("the address", address, 0xFFFFFFFF)
        pieces = []
        for done in range(0, size, _FLASH_PIECE):
            piece = min(_FLASH_PIECE, size - done)
            data = room_of(round_up(piece, _WIDEST_CHUNK))
            read = ctypes.c_uint32()

            def tell(percent: int, done: int = done, piece: int = piece) -> None:
                if progress is not None:
                    progress("read", (done * 100 + piece * percent) // size)

            told = Callback(tell)
            told.call("ZEMAPI_ReadPartialFlashData", self._camera.handle, address + done, piece, data,
                      byref(read), told.pointer, 0)
            pieces.append(bytes(data)[:piece])
        if progress is not None:
            progress("read", 100)
        return b"".join(pieces)

    def verify(self, address: int, image: Image, progress: Progress | None = None) -> int:
        """Compares the flash with a file or bytes. Returns how many bytes are equal: all. Raises
        VerifyError with the address of the first one that is not."""
        wanted = read_image(image)
        found = self.read(address, len(wanted), progress)
        for offset, (left, right) in enumerate(zip(found, wanted)):
            if left != right:
                raise errors.VerifyError(
                    f"the flash has 0x{left:02X} at 0x{address + offset:06X}, and the image "
                    f"0x{right:02X}", address + offset)
        return len(wanted)

    def update_area(self, image: Image, param2: int, param3: int,
                    progress: Progress | None = None) -> None:
        """Erases and writes the area that the camera's firmware knows by the two parameters."""
        data = _fitting(image, _MOST_ANNOUNCED)
        integer("param2", param2, 0xFF)
        integer("param3", param3, 0xFF)
        told = image_progress(progress)
        told.call("ZEMAPI_UpdateFlash", self._camera.handle, _padded(data), len(data), told.pointer,
                  0, param2, param3)

    def update_calibration(self, image: Image, progress: Progress | None = None) -> None:
        """Writes the calibration data."""
        data = _fitting(image, _MOST_DATA)
        told = image_progress(progress)
        told.call("ZEMAPI_UpdateCaliData", self._camera.handle, _padded(data), len(data),
                  told.pointer, 0)


class Data:
    """The camera's data channel, for what has no function of its own."""

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def send(self, data: bytes, param2: int = 0, param3: int = 0) -> None:
        """Announces data of at most 65,535 bytes, and sends it over the slow control. That a part of
        it was lost is not reported by the library."""
        data = _fitting(data, _MOST_ANNOUNCED)
        integer("param2", param2, 0xFF)
        integer("param3", param3, 0xFF)
        told = Callback(None)
        told.call("ZEMAPI_SendData", self._camera.handle, _padded(data), len(data), told.pointer, 0,
                  param2, param3)

    def write(self, data: bytes, progress: Progress | None = None) -> None:
        """Sends data that has been announced by a command, over the fastest control."""
        data = _fitting(data, _MOST_DATA)
        told = image_progress(progress)
        told.call("ZEMAPI_WriteFWData", self._camera.handle, _padded(data), len(data), told.pointer,
                  0)

    def read(self, room: int = 0x100000, progress: Progress | None = None) -> bytes:
        """Reads all that the camera has ready. Raises BufferTooSmallError for more than `room`, which
        is at least 512: by a read into it the camera is asked how much it moves at once."""
        data = room_of(integer("the room", room, 0xFFFFFFFF, _WIDEST_CHUNK))
        length = ctypes.c_uint32()

        def tell(left: int) -> None:
            if progress is not None:
                progress("read", 100 - left)

        told = Callback(tell)
        told.call("ZEMAPI_ReadFWData", self._camera.handle, data, room, byref(length), told.pointer, 0)
        return bytes(data)[:length.value]


class Nvmem:
    """The vendor unit's non-volatile memory."""

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def read(self, address: int, length: int) -> bytes:
        """Reads `length` bytes; addresses go from 0 to 0xFFFF."""
        _check_range(address, length, 0x10000)
        data = room_of(length)
        read = ctypes.c_uint32()
        call("ZEMAPI_ReadNVMEM", self._camera.handle, address, data, length, byref(read))
        _check_moved(read.value, length)
        return bytes(data)[:length]

    def write(self, address: int, data: bytes) -> None:
        """Writes `data`, in pieces of at most 29 bytes: those before a failed one stay."""
        _check_range(address, len(data), 0x10000)
        written = ctypes.c_uint32()
        call("ZEMAPI_WriteNVMEM", self._camera.handle, address, buffer_of(data), len(data),
             byref(written))
        _check_moved(written.value, len(data))


class Tirella:
    """The TIRELLA unit: a memory of 256 bytes and an LED."""

    SIZE = 256

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def read(self) -> bytes:
        """Reads the whole memory."""
        data = room_of(self.SIZE)
        read = ctypes.c_uint32()
        call("ZEMAPI_TIRELLA_ReadNVMEM", self._camera.handle, data, self.SIZE, byref(read))
        return bytes(data)

    def write(self, data: bytes) -> None:
        """Writes the whole memory: 256 bytes, no more and no fewer."""
        if len(data) != self.SIZE:
            raise ValueError(f"the memory has {self.SIZE} bytes, and the data {len(data)}")
        written = ctypes.c_uint32()
        call("ZEMAPI_TIRELLA_WriteNVMEM", self._camera.handle, buffer_of(data), len(data),
             byref(written))

    def set_led(self, value: int) -> None:
        """Hands a value to the LED control. That it could not be sent is not reported."""
        call("ZEMAPI_TIRELLA_LedCtrl", self._camera.handle, integer("the value", value, 0xFF))


class Setting(NamedTuple):
    """What a standard control is set to."""

    value: int
    automatic: bool


class Range(NamedTuple):
    """What a standard control can be set to."""

    minimum: int
    maximum: int
    step: int
    default: int
    can_be_automatic: bool
    can_be_manual: bool


class Control:
    """One standard control."""

    def __init__(self, camera: Camera, family: str, number: int) -> None:
        self._camera = camera
        self._family = family
        self._number = number

    def get(self) -> Setting:
        value, flags = ctypes.c_int32(), ctypes.c_int32()
        call(f"ZEMAPI_Get{self._family}", self._camera.handle, self._number, byref(value),
             byref(flags))
        return Setting(value.value, flags.value == _AUTOMATIC)

    def set(self, value: int) -> None:
        """Sets a value by hand. The camera decides which ones it takes."""
        integer("the value", value, 0x7FFFFFFF, -0x80000000)
        call(f"ZEMAPI_Set{self._family}", self._camera.handle, self._number, value, _MANUAL)

    def set_automatic(self) -> None:
        """Leaves the value to the camera."""
        call(f"ZEMAPI_Set{self._family}", self._camera.handle, self._number, self.get().value,
             _AUTOMATIC)

    def range(self) -> Range:
        numbers = [ctypes.c_int32() for _ in range(5)]
        call(f"ZEMAPI_Get{self._family}Range", self._camera.handle, self._number,
             *(byref(number) for number in numbers))
        minimum, maximum, step, default, flags = (number.value for number in numbers)
        return Range(minimum, maximum, step, default, bool(flags & _AUTOMATIC),
                     bool(flags & _MANUAL))


class Controls:
    """The standard controls, by name: `camera.controls["brightness"].get()`.

    A control that the camera lacks raises NoSuchControlError when it is used.
    """

    NAMES = {
        "brightness": ("VideoProcAmp", 0),
        "contrast": ("VideoProcAmp", 1),
        "hue": ("VideoProcAmp", 2),
        "saturation": ("VideoProcAmp", 3),
        "sharpness": ("VideoProcAmp", 4),
        "gamma": ("VideoProcAmp", 5),
        "color-enable": ("VideoProcAmp", 6),
        "white-balance": ("VideoProcAmp", 7),
        "backlight-compensation": ("VideoProcAmp", 8),
        "gain": ("VideoProcAmp", 9),
        "pan": ("CameraControl", 0),
        "tilt": ("CameraControl", 1),
        "roll": ("CameraControl", 2),
        "zoom": ("CameraControl", 3),
        "exposure": ("CameraControl", 4),
        "iris": ("CameraControl", 5),
        "focus": ("CameraControl", 6),
    }

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def __getitem__(self, name: str) -> Control:
        """Raises KeyError for a name that no standard control has."""
        return Control(self._camera, *self.NAMES[name])


class H264Format(NamedTuple):
    """A format that the camera can encode; sizes in pixels, bit rates in kbit/s."""

    frame_index: int
    kind: int
    width: int
    height: int
    sub_width: int
    sub_height: int
    max_bit_rate: int
    min_bit_rate: int
    max_fps: int
    min_fps: int


class H264:
    """The camera's H.264 encoder."""

    def __init__(self, camera: Camera) -> None:
        self._camera = camera

    def formats(self) -> list[H264Format]:
        """What the camera can encode; the library's default list for a camera that cannot tell."""
        pointer = ctypes.c_void_p()
        length = call("ZEMAPI_GetH264FrameList", self._camera.handle, byref(pointer))
        assert pointer.value is not None
        try:
            head = H264FrameList.from_address(pointer.value)
            size = ctypes.sizeof(H264FrameInfo)
            first = pointer.value + ctypes.sizeof(H264FrameList)
            count = min(head.wCount, (length - ctypes.sizeof(H264FrameList)) // size)
            records = [H264FrameInfo.from_address(first + size * index) for index in range(count)]
            return [H264Format(record.wFrameIndex, record.wType, record.wWidth, record.wHeight,
                               record.wSubWidth, record.wSubHeight, record.dwMaxBitRate,
                               record.dwMinBitRate, record.wMaxFps, record.wMinFps)
                    for record in records]
        finally:
            exports().ZEMAPI_ReleaseH264FrameList(pointer)

    def start(self, frame_index: int) -> None:
        """Starts the first format of the camera's list with this frame index. The library does not report
        all that can go wrong on the way."""
        call("ZEMAPI_SetH264FrameIndex", self._camera.handle, integer("the index", frame_index, 0xFFFF))

    def start_size(self, width: int, height: int) -> None:
        """Starts the encoder at a resolution in pixels."""
        integer("the width", width, 0xFFFFFFFF)
        integer("the height", height, 0xFFFFFFFF)
        self._set_mode(width, height)

    def stop(self) -> None:
        self._set_mode(0, 0)

    def _set_mode(self, width: int, height: int) -> None:
        function = "ZEMAPI_SetH264Mode"
        if call(function, self._camera.handle, width, height) == 0:  # here 1 is the success
            raise errors.FailedError(function, 0x80004005)

    def set_fps(self, fps: int) -> None:
        """Frames per second of the running encoder."""
        call("ZEMAPI_SetFps", self._camera.handle, integer("the frame rate", fps, 0xFFFF))

    def set_bit_rate(self, rate: int) -> None:
        """The running encoder's bit rate, in the camera's units."""
        call("ZEMAPI_SetBitRate", self._camera.handle, integer("the bit rate", rate, 0xFFFF))

    def force_key_frame(self) -> None:
        """Makes the next picture a key frame."""
        call("ZEMAPI_ForceIFrame", self._camera.handle)


class Camera(Owned):
    """An opened camera, as zemuvc.open() gives it. Closes itself at the end of a `with` block.

    Open it, use it and close it on one thread; another one gets WrongThreadError. The library
    reports success in some cases in which a transfer failed, see each function's own words in
    ZemUVCExtApi.h: look at what counts (Flash.verify, firmware_check_sum_right).
    """

    def __init__(self, pointer: int) -> None:
        super().__init__(pointer)
        self.registers = Registers(self)
        self.flash = Flash(self)
        self.data = Data(self)
        self.nvmem = Nvmem(self)
        self.tables = Tables(self)
        self.tirella = Tirella(self)
        self.controls = Controls(self)
        self.h264 = H264(self)

    def _close(self, pointer: ctypes.c_void_p) -> None:
        exports().ZEMAPI_CloseDevice(byref(pointer))

    def call(self, function: str, *arguments: Any) -> int:
        """Calls an export with this camera as its first argument, for what has no method here.

        Returns the result; raises a ResultError for a negative one. Buffers are the caller's to
        measure, as the header says.
        """
        return call(function, self.handle, *arguments)

    # ---- What it is ----

    @property
    def firmware_version(self) -> bytes:
        """6 bytes."""
        return self._read_block("ZEMAPI_GetFWVersion", 6)

    @property
    def device_information(self) -> bytes:
        """8 bytes; the first two are the chip."""
        return self._read_block("ZEMAPI_GetDeviceInfo", 8)

    @property
    def chip(self) -> str | None:
        """The chip series, "516x" or "517x", by what the camera says; None for any other."""
        return {0x516: "516x", 0x517: "517x"}.get(
            int.from_bytes(self.device_information[:2], "big") >> 4)

    @property
    def build_date(self) -> str:
        """The day on which the firmware was built, such as "2021.Dec.15"."""
        text = ctypes.create_string_buffer(12)
        call("ZEMAPI_GetFWBuildDate", self.handle, text)
        return text.value.decode("ascii", "replace")

    @property
    def sensor_serial_number(self) -> bytes:
        """32 bytes, from the image sensor. That they could not be read is not reported: they are
        zeros then. ZEMAPI_GetSerialNumber is not called: it asks no camera and ends the process."""
        return self._read_block("ZEMAPI_GetSensorSN", 32)

    @property
    def firmware_check_sum_right(self) -> bool:
        """Whether the firmware's check sum is right, as the camera says. False also for a camera that
        answers with an error of another kind."""
        try:
            call("ZEMAPI_GetCheckSumResult", self.handle)
        except (errors.CameraRefusedError, errors.RefusedError):
            return False
        return True

    def _read_block(self, function: str, size: int) -> bytes:
        data = room_of(size)
        call(function, self.handle, data)
        return bytes(data)

    # ---- Raw access ----

    def unit(self, unit: GUID = ZEM_VENDOR_XU) -> ExtensionUnit:
        """An extension unit, such as zemuvc.ZEM_H264_XU; the vendor's if none is given."""
        return ExtensionUnit(self, unit)

    def isp_command(self, block: bytes) -> bytes:
        """Sends a block of 8 or 16 bytes on the ISP channel of that width. Returns the reply, as
        long; its first byte is the camera's status, which only 16 bytes are judged by."""
        return self._command("ZEMAPI_IspCommand", block)

    def vcp_command(self, block: bytes) -> bytes:
        """isp_command on the VCP channel."""
        return self._command("ZEMAPI_VcpCommand", block)

    def _command(self, function: str, block: bytes) -> bytes:
        if len(block) not in (8, 16):
            raise ValueError(f"a block has 8 or 16 bytes, and this one {len(block)}")
        reply = room_of(len(block))
        call(function + ("Ex" if len(block) == 16 else ""), self.handle, buffer_of(block), reply)
        return bytes(reply)

    # ---- What changes it ----

    def update_firmware(self, image: Image, *, chip: str | None = None, param: int = 0,
                        progress: Progress | None = None) -> None:
        """Burns a firmware image: a file's path, or bytes.

        `chip` is "516x" or "517x"; without it the camera is asked. `param` is byte 3 of a 516x's burn
        order. `progress` is called with a phase, "send" or "burn", and its percentage, on this thread;
        it must not use the camera. What it raises comes out of here once the burn is over.

        Returns when the camera says that it is done, which is no proof: restart it, or read the flash
        back (Flash.verify) where it is readable. A 517x is told to burn also when the image did not
        arrive whole, and the library does not report that.
        """
        data = _fitting(image, _MOST_DATA - _WIDEST_CHUNK + 1)
        series = chip if chip is not None else self.chip
        if series not in ("516x", "517x"):
            raise ValueError(f"the chip is {series!r}, and 516x and 517x can be updated")
        told = image_progress(progress)
        if series == "516x":
            told.call("ZEMAPI_UpdateFW_516x", self.handle, _padded(data), len(data), told.pointer, 0,
                      integer("param", param, 0xFF))
        else:
            told.call("ZEMAPI_UpdateFW_517x", self.handle, _padded(data), len(data), told.pointer, 0)

    def enter_rom_boot(self) -> None:
        """Sends the running camera into ROM boot; it goes away as a video device. Whether it took the
        command is not looked at. zemuvc.rom_boot() finds it then."""
        call("ZEMAPI_ResetToRomboot", self.handle)


def _fitting(image: Image, most: int) -> bytes:
    """The bytes, refused before anything is sent where the camera could not be told of them."""
    data = read_image(image)
    if not data:
        raise ValueError("there are no bytes to send")
    if len(data) > most:
        raise ValueError(f"there are {len(data)} bytes, and {most} can be announced at most")
    return data


def _padded(data: bytes) -> Any:
    return buffer_of(data, round_up(len(data), _WIDEST_CHUNK))


def _check_range(address: int, length: int, size: int) -> None:
    integer("the address", address, size - 1)
    integer("the end", address + length, size, address)


def _check_moved(moved: int, length: int) -> None:
    # A result of the system's that is positive ends a call too, and is no failure of the library's.
    if moved != length:
        raise errors.IncompleteError(f"{moved} of {length} bytes were moved")
