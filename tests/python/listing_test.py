"""The list of cameras on Linux, from a made-up sysfs."""

from __future__ import annotations

import pathlib

import pytest

from zemuvc import CameraInfo, _listing


@pytest.fixture
def system(tmp_path):
    """A controller with one bus, a camera at hub port 1.2 with two device files, and a sound card."""
    bus = tmp_path / "devices/pci0000:00/0000:00:14.0/usb1"
    camera = bus / "1-1/1-1.2"
    interface = camera / "1-1.2:1.0"
    for folder, attributes in (
            (bus, {"version": " 2.00"}),
            (camera, {"idVendor": "5a45", "idProduct": "8c00", "bConfigurationValue": "1"}),
            (interface, {"bInterfaceNumber": "00", "bInterfaceClass": "0e"})):
        folder.mkdir(parents=True, exist_ok=True)
        for name, text in attributes.items():
            (folder / name).write_text(text + "\n", "utf-8")
    (tmp_path / "bus/pci").mkdir(parents=True)
    (bus.parent / "subsystem").symlink_to(tmp_path / "bus/pci")
    videos = tmp_path / "class/video4linux"
    for number, index in ((10, 0), (2, 1)):
        folder = videos / f"video{number}"
        folder.mkdir(parents=True)
        (folder / "device").symlink_to(interface)
        (folder / "index").write_text(f"{index}\n", "utf-8")
        (folder / "name").write_text("ZEM Kamera ä: video\n", "utf-8")
    return tmp_path


def listed(system):
    return list(_listing._list_linux(system, system / "dev"))


def test_names_as_the_library_gives_them(system):
    # The second device file cannot be asked whether it captures, and is not its function's first.
    assert listed(system) == [CameraInfo(
        "ZEM Kamera ä: video", "usb#vid_5a45&pid_8c00&mi_00#1-1.2",
        "/dev/v4l/by-path/pci-0000:00:14.0-usbv2-0:1.2:1.0-video-index0", 0x5A45, 0x8C00)]


def test_further_capture_devices_and_their_order(system, monkeypatch):
    monkeypatch.setattr(_listing, "_is_capture", lambda file, index: True)
    assert [camera.display_name for camera in listed(system)] == [
        "usb#vid_5a45&pid_8c00&mi_00#1-1.2&1", "usb#vid_5a45&pid_8c00&mi_00#1-1.2"]


@pytest.mark.parametrize("attribute, text", [
    ("bInterfaceClass", "01"), ("bInterfaceClass", ""), ("bInterfaceNumber", "x")])
def test_what_is_no_video_function_is_passed_over(system, attribute, text):
    interface = next(pathlib.Path(system).rglob("1-1.2:1.0"))
    (interface / attribute).write_text(text, "utf-8")
    assert listed(system) == []


def test_a_machine_without_video_devices(tmp_path):
    assert listed(tmp_path) == []
