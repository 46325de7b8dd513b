"""Simulated cameras for this process: to test one's own program without a camera."""

from __future__ import annotations

import ctypes
import json
import os
import pathlib
import tempfile
from types import TracebackType
from typing import Any, Mapping, NamedTuple

from . import _library, errors


class Transfer(NamedTuple):
    """A transfer to or from a control of an extension unit, as the simulated camera saw it."""

    direction: str  # "set" or "get"
    unit: str  # the unit's GUID, such as "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}"
    selector: int
    length: int  # bytes written, or asked for
    data: bytes  # what was written, or read
    outcome: str  # "done", or another of docs/simulator.md


class Simulation:
    """Simulated cameras that run until it is stopped; a `with` block stops them."""

    def __init__(self, library: Any, folder: tempfile.TemporaryDirectory[str],
                 transfers: list[pathlib.Path]) -> None:
        self._library = library
        self._folder = folder
        self._transfers = transfers

    def transfers(self, camera: int = 0) -> list[Transfer]:
        """What one of the cameras saw until now, in order; standard controls leave no trace."""
        path = self._transfers[camera]
        lines = path.read_text("utf-8").splitlines() if path.exists() else []
        return [Transfer(line["direction"], line["unit"], line["selector"], line["length"],
                         bytes.fromhex(line["data"]), line["outcome"])
                for line in map(json.loads, lines)]

    def enumerator(self) -> ctypes.c_void_p:
        """A device enumerator of these cameras, a COM object that the caller releases."""
        found = ctypes.c_void_p()
        result = self._library.ZemSimulatorDevices(ctypes.byref(found))
        if result < 0:
            raise errors.error_of("ZemSimulatorDevices", result)
        return found

    def stop(self) -> None:
        """Takes the cameras away and writes their state files. A second time does nothing."""
        global _running
        if _running is not self:
            return
        _running = None
        self._library.ZemSimulatorStop()
        reason = _last_error(self._library)
        self._folder.cleanup()
        if reason:
            raise errors.SimulatorError(reason)

    def __enter__(self) -> Simulation:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.stop()


_running: Simulation | None = None


def running() -> Simulation | None:
    """The simulation of this process, if there is one."""
    return _running


def simulate(options: Mapping[str, Any] | None = None) -> Simulation:
    """Starts simulated cameras, which this process finds and no other, in place of all real ones and
    of an earlier simulation.

    `options` are those of the simulator (docs/simulator.md): {"cameras": [{"chip": "516x",
    "faults": ["unplug@3"]}]}, {"bootLoader": {}}. Without any there is one camera with the default
    ids. The simulator is looked for where the library is. Raises SimulatorError for options that it
    does not take; close every camera before the simulation stops.
    """
    global _running
    if _running is not None:
        _running.stop()
    _library.exports()  # the simulator stands in for what the library asks of the system
    library = _load()
    wanted = dict(options or {})
    cameras = [dict(camera) for camera in wanted.get("cameras", [{}])]
    folder = tempfile.TemporaryDirectory(prefix="zemuvc-")
    transfers = []
    for index, camera in enumerate(cameras):
        path = pathlib.Path(camera.setdefault("transfers",
                                              os.path.join(folder.name, f"transfers-{index}")))
        transfers.append(path)
    wanted["cameras"] = cameras
    if library.ZemSimulatorStartPrivate(json.dumps(wanted).encode("utf-8")) < 0:
        folder.cleanup()
        raise errors.SimulatorError(_last_error(library))
    _running = Simulation(library, folder, transfers)
    return _running


def _load() -> Any:
    library: Any = _library.load_shared(_library.SIMULATOR)
    library.ZemSimulatorStartPrivate.argtypes = [ctypes.c_char_p]
    library.ZemSimulatorStartPrivate.restype = ctypes.c_int32
    library.ZemSimulatorStop.argtypes = []
    library.ZemSimulatorStop.restype = None
    library.ZemSimulatorLastError.argtypes = []
    library.ZemSimulatorLastError.restype = ctypes.c_char_p
    library.ZemSimulatorDevices.argtypes = [ctypes.POINTER(ctypes.c_void_p)]
    library.ZemSimulatorDevices.restype = ctypes.c_int32
    return library


def _last_error(library: Any) -> str:
    text: bytes = library.ZemSimulatorLastError()
    return text.decode("utf-8", "replace")
