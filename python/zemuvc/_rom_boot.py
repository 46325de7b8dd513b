"""A camera in ROM boot."""

from __future__ import annotations

import ctypes
import os
import pathlib
import tempfile
from ctypes import byref
from typing import Callable, Union

from . import errors
from ._library import buffer_of, call, exports, integer, room_of
from ._owned import Owned

Path = Union[str, "os.PathLike[str]"]

_BOOT_LOADER, _UPDATER = 1, 2
_DIVIDER = 0x10
_FAILED = 0x80004005
_MOST_READ = 65536


class RomRegisters:
    """One-byte registers of the boot code, by 32-bit addresses."""

    def __init__(self, session: RomBoot) -> None:
        self._session = session

    def __getitem__(self, address: int) -> int:
        value = ctypes.c_ubyte()
        call("ZEMROMAPI_ReadRegister", self._session.handle,
             integer("the address", address, 0xFFFFFFFF), byref(value))
        return value.value

    def __setitem__(self, address: int, value: int) -> None:
        call("ZEMROMAPI_WriteRegister", self._session.handle,
             integer("the address", address, 0xFFFFFFFF), integer("the value", value, 0xFF))


class RomBoot(Owned):
    """A session with a camera in ROM boot, as zemuvc.rom_boot() gives it.

    Use it on one thread; another one gets WrongThreadError. A failed command raises FailedError.
    Where a file has a header block, without which nothing starts, that is written last.
    """

    STORAGES: dict[str, tuple[str, bool]] = {  # the export, and whether it takes an option byte
        "sf": ("ZEMROMAPI_SwitchModePCAM_SF", False),
        "dram": ("ZEMROMAPI_SwitchModePCAM_DRAM", False),
        "emmc": ("ZEMROMAPI_SwitchModePCAM_EMMC", True),
        "spi-nand": ("ZEMROMAPI_SwitchModePCAM_SPI_NAND", True),
        "parallel-nand": ("ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", True),
    }

    def __init__(self, pointer: int) -> None:
        super().__init__(pointer)
        self.registers = RomRegisters(self)

    def _close(self, pointer: ctypes.c_void_p) -> None:
        exports().ZEMROMAPI_CloseDevice(byref(pointer))

    # ---- Code ----

    def load_updater(self, path: Path) -> None:
        """Loads the updater and starts it, then waits up to five minutes for its storage; the session
        goes on with that. That it did not show up is not reported: the next command fails."""
        call("ZEMROMAPI_LoadUpdater", self.handle, str(path))

    def load_mini_uvc(self, path: Path) -> None:
        """Loads a code image and starts it. The camera comes back as something else, so nothing but
        close() is left to do."""
        call("ZEMROMAPI_LoadMiniUVC", self.handle, str(path))

    def jump(self) -> None:
        """Starts the code in the load buffer."""
        call("ZEMROMAPI_LongJump", self.handle)

    def reset(self) -> None:
        """Resets the camera, which goes away. Whether it took the command is not known."""
        call("ZEMROMAPI_ResetSystem", self.handle)

    def set_download_address(self, address: int) -> None:
        """Sets the memory address that firmware is downloaded to."""
        call("ZEMROMAPI_SetFwDownloadAddr", self.handle, integer("the address", address, 0xFFFFFFFF))

    # ---- Storage ----

    def select(self, storage: str, option: int = 0) -> None:
        """Selects what is erased, written and read: "sf", "dram", "emmc", "spi-nand" or
        "parallel-nand". `option` is the boot code's; the first two have none."""
        if storage not in self.STORAGES:
            raise ValueError(f"{storage!r} is none of {', '.join(self.STORAGES)}")
        function, has_option = self.STORAGES[storage]
        if not has_option and option != 0:
            raise ValueError(f"{storage!r} takes no option")
        options = (integer("the option", option, 0xFF),) if has_option else ()
        call(function, self.handle, *options)

    def erase(self, address: int, size: int) -> None:
        """Writes 0xFF over whole sectors of 512 bytes."""
        call("ZEMROMAPI_Erase", self.handle, integer("the address", address, 0xFFFFFFFF),
             integer("the size", size, 0xFFFFFFFF))

    def burn_image(self, path: Path, address: int) -> int:
        """Burns an image file with its header block. Returns the next free multiple of 4,096."""
        return self._at(address, lambda place: call("ZEMROMAPI_BurnFw", self.handle, str(path), place))

    def burn_package(self, path: Path, *, version: int = 1) -> int:
        """Burns a firmware package to address 0; `version` 2 is the one whose data begins with a header
        block. Returns the bytes written, of version 2 the end of the payload."""
        functions = {1: "ZEMROMAPI_BurnPcCamFw", 2: "ZEMROMAPI_BurnPcCamFwPnsV2"}
        if version not in functions:
            raise ValueError(f"the version is {version}, and 1 and 2 can be burned")
        return self._at(0, lambda place: call(functions[version], self.handle, str(path), place))

    def update_linux(self, path: Path, header_address: int, body_address: int | None = None) -> None:
        """Writes a Linux firmware package; the body goes where the package says, unless
        `body_address` says otherwise."""
        integer("the address of the header", header_address, 0xFFFFFFFF)
        if body_address is None:
            call("ZEMROMAPI_UpdateLinuxFwPkg_", self.handle, str(path), header_address)
        else:
            # The number above stands for what the package says.
            integer("the address of the body", body_address, 0xFFFFFFFE)
            call("ZEMROMAPI_UpdateLinuxFwPkg", self.handle, str(path), body_address, header_address)

    def write(self, path: Path, address: int, *, with_header: bool = False) -> int:
        """Writes a file as it is. With a header, its first 4,096 bytes are erased first and written
        last. Returns the end of what is written."""
        function = "ZEMROMAPI_PartialUpdateWithHeader" if with_header else "ZEMROMAPI_PartialUpdate"
        return self._at(address, lambda place: call(function, self.handle, str(path), place))

    def load_into_memory(self, path: Path) -> int:
        """Writes a file from address 0 on into the selected "dram". Returns the bytes written."""
        return self._at(0, lambda place: call("ZEMROMAPI_LoadFW2Memory", self.handle, str(path), place))

    def read(self, size: int) -> bytes:
        """Reads the first `size` bytes of the selected storage."""
        integer("the size", size, 0xFFFFFFFF)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "storage")
            self._at(0, lambda place: call("ZEMROMAPI_PartialRead", self.handle, str(path), place, size))
            return path.read_bytes()[:size]

    def make_emmc_enhanced_area(self, first: int, second: int) -> None:
        """Makes the enhanced area of an eMMC; both numbers are the boot code's."""
        function = "ZEMROMAPI_MkEmmcEhancedArea"
        if call(function, self.handle, integer("the first number", first, 0xFFFFFFFF),
                integer("the second number", second, 0xFFFFFFFF)) == 0:
            raise errors.FailedError(function, _FAILED)

    def mirror(self, path: Path, size: int = 0) -> None:
        """Has what is erased and written by update_linux() and write() written into a file as well,
        each byte at its address. `size` bytes of it are made anew; 0 takes the file that is there. That
        it cannot be made is not reported."""
        if len(str(path)) >= 260:
            raise ValueError("the path has 260 characters or more")
        call("ZEMROMAPI_CreateDumpFile", self.handle, str(path), integer("the size", size, 0x7FFFFFFF))

    # ---- Any command ----

    def scsi(self, cdb: bytes, *, read: int = 0, data: bytes = b"") -> bytes:
        """Sends a SCSI command of at most 16 bytes as it is: `read` bytes come back, or `data` goes
        out."""
        if not cdb or len(cdb) > 16:
            raise ValueError(f"a command has 1 to 16 bytes, and this one {len(cdb)}")
        if read and data:
            raise ValueError("a command reads or sends, and not both")
        integer("what is read", read, _MOST_READ)
        buffer = room_of(read) if read else buffer_of(data)
        call("ZEMROMAPI_ScsiCommand", self.handle, 1 if read else 0, read or len(data),
             buffer_of(cdb, 16), buffer)
        return bytes(buffer)[:read]

    def _at(self, address: int, run: Callable[[object], int]) -> int:
        place = ctypes.c_uint32(integer("the address", address, 0xFFFFFFFF))
        run(byref(place))
        return place.value


def rom_boot(*, updater: bool = False, divider: bool = False) -> RomBoot:
    """Opens the first camera in ROM boot among the volumes C: to Z:; on Linux these are the machine's
    SCSI generic devices in the order of their numbers. The library offers no way to choose one.

    `updater` looks for the storage of a loaded updater instead of the boot loader; with `divider` the
    camera is told the storage address divider, and so by every further search of this process.
    Raises NoCameraError when there is none, or the first one is not of that kind.
    """
    mode = (_UPDATER if updater else _BOOT_LOADER) | (_DIVIDER if divider else 0)
    pointer = exports().ZEMROMAPI_OpenDevice(mode)
    if not pointer:
        raise errors.NoCameraError("ZEMROMAPI_OpenDevice", _FAILED)
    return RomBoot(pointer)
