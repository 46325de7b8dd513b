"""How one's own program is tested without a camera: what does the station do when the camera is fine,
and what when it is not? Run it with pytest."""

from __future__ import annotations

import pathlib
from typing import Any

import pytest
import zemuvc

import station


@pytest.fixture
def image(tmp_path: pathlib.Path) -> pathlib.Path:
    """Firmware that the simulated camera takes for its own."""
    body = bytes(range(256)) * 8
    head = b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + (sum(body) & 0xFFFF).to_bytes(2, "little")
    path = tmp_path / "firmware.bin"
    path.write_bytes(head + (20 + len(body)).to_bytes(4, "little") + body)
    return path


def run(image: pathlib.Path, **camera: Any) -> tuple[dict[str, Any], list[zemuvc.Transfer]]:
    """Lets the station update a simulated camera. Returns its report, and what the camera saw."""
    with zemuvc.simulate({"cameras": [camera]}) as simulation:
        return station.update(image, verify_at=0), simulation.transfers()


def test_a_good_camera_is_updated_and_proven(image: pathlib.Path) -> None:
    report, transfers = run(image)
    assert report["done"] is True
    assert report["verified"] == len(image.read_bytes())
    fast_data = 13
    data = [transfer.data for transfer in transfers
            if transfer.direction == "set" and transfer.selector == fast_data]
    assert b"".join(data).startswith(image.read_bytes())


def test_a_camera_that_leaves_on_the_way_is_not_called_done(image: pathlib.Path) -> None:
    report, _ = run(image, faults=["unplug@40"])
    assert report["done"] is False
    assert report["error"] in ("NoDeviceError", "CameraGoneError", "CameraRefusedError")


def test_lost_data_is_noticed(image: pathlib.Path) -> None:
    # The library orders the burn all the same, and reports that as a success.
    report, transfers = run(image)
    place = next(number for number, transfer in enumerate(transfers, 1)
                 if transfer.direction == "set" and transfer.selector == 13)
    report, _ = run(image, faults=[f"drop@{place}"])
    assert report["done"] is False


def test_no_camera_is_told(image: pathlib.Path) -> None:
    with zemuvc.simulate({"cameras": []}):
        assert station.update(image, None)["error"] == "NoCameraError"
