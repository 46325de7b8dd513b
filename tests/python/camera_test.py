"""The friendly layer against the simulated camera: what it sends, byte by byte, and what it makes of the
answers."""

from __future__ import annotations

import gc
import threading
import warnings

import pytest

import zemuvc

VENDOR = "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}"


@pytest.fixture
def simulated():
    with zemuvc.simulate() as simulation:
        yield simulation


@pytest.fixture
def camera(simulated):
    with zemuvc.open() as opened:
        yield opened


def sent(simulation, camera=0):
    """What was written, as selector and bytes."""
    return [(transfer.selector, transfer.data.hex(" ")) for transfer in simulation.transfers(camera)
            if transfer.direction == "set"]


def firmware_image(version: bytes, size: int = 4096) -> bytes:
    """An image that the simulated camera takes for its firmware."""
    body = bytes((index * 7) & 0xFF for index in range(size - 20))
    head = b"ZEMFWIMG" + version + (sum(body) & 0xFFFF).to_bytes(2, "little")
    return head + size.to_bytes(4, "little") + body


# ---- Opening ----


def test_lists_and_opens_each_camera():
    with zemuvc.simulate({"cameras": [{}, {"vendorId": 0x1234, "productId": 0x5678, "name": "Zweite ä"}]}):
        first, second = zemuvc.list_cameras()
        assert second == zemuvc.CameraInfo(
            "ZEM Simulated Camera", "usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0",
            "/dev/v4l/by-path/zem-simulator-0-video-index0", 0x5A45, 0x8C00)
        assert first == zemuvc.CameraInfo(
            "Zweite ä", "usb#vid_1234&pid_5678&mi_00#zem-simulator&1",
            "/dev/v4l/by-path/zem-simulator-1-video-index0", 0x1234, 0x5678)
        with zemuvc.open(first) as by_info, zemuvc.open(second.device_path) as by_path, \
                zemuvc.open(second.display_name) as by_name, \
                zemuvc.open(vendor_id=0x1234, product_id=0x5678) as by_ids, zemuvc.open() as default:
            by_ids.registers.isp[0x10] = 7
            assert by_info.registers.isp[0x10] == 7
            default.registers.isp[0x10] = 9
            assert by_path.registers.isp[0x10] == by_name.registers.isp[0x10] == 9
    assert all("zem-simulator" not in info.display_name for info in zemuvc.list_cameras())


def test_no_camera_has_an_exception_of_its_own(simulated):
    for how in ({"index": 1}, {"vendor_id": 1, "product_id": 2}, {"camera": "nothing"}):
        with pytest.raises(zemuvc.NoCameraError, match="no camera matches") as caught:
            zemuvc.open(**how)
        assert caught.value.result == 0x80004005
        assert caught.value.name == "ZEM_E_FAIL"


def test_a_device_without_the_vendor_unit_is_refused_by_name():
    with zemuvc.simulate({"cameras": [{"vendorUnit": False}]}):
        with pytest.raises(zemuvc.NoVendorUnitError, match="no vendor extension unit"):
            zemuvc.open(zemuvc.list_cameras()[0])


def test_wrong_ways_to_choose_are_refused(simulated):
    with pytest.raises(ValueError):
        zemuvc.open("name", index=1)
    with pytest.raises(ValueError):
        zemuvc.open(vendor_id=1)
    with pytest.raises(ValueError):
        zemuvc.open(index=-1)


def test_a_closed_camera_and_another_thread_are_refused(simulated):
    camera = zemuvc.open()
    caught = []

    def use():
        try:
            camera.firmware_version
        except zemuvc.Error as error:
            caught.append(type(error))

    thread = threading.Thread(target=use)
    thread.start()
    thread.join()
    assert caught == [zemuvc.WrongThreadError]
    camera.close()
    camera.close()
    assert camera.closed
    with pytest.raises(zemuvc.ClosedError):
        camera.firmware_version
    assert simulated.transfers() == []


def test_a_camera_that_nobody_closed_is_told(fake):
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        zemuvc.open()
        gc.collect()
    assert [warning.category for warning in told] == [ResourceWarning]
    assert [name for name, *_ in fake.calls] == ["ZEMAPI_OpenDevice"]


# ---- Registers, commands, what it is ----


def test_registers_of_each_space(simulated, camera):
    camera.registers.isp[0x123456] = 0xABCD
    assert camera.registers.isp[0x123456] == 0xABCD
    camera.registers.sensor[0x3012] = 0xEF
    assert camera.registers.sensor[0x3012] == 0xEF
    camera.registers.sensor16[0x3014] = 0x1234
    assert camera.registers.sensor16[0x3014] == 0x1234
    camera.registers.vcm[0x0004] = 0x0180
    assert camera.registers.vcm[0x0004] == 0x0180
    camera.registers.codec[0x0102] = 0x55
    assert camera.registers.codec[0x0102] == 0x55
    assert sent(simulated) == [
        (1, "0a 01 56 34 cd ab 12 00"), (1, "0a 00 56 34 00 00 12 00"),
        (1, "0a 03 12 30 ef 00 00 00"), (1, "0a 02 12 30 00 00 00 00"),
        (1, "0a 03 14 30 34 12 00 00"), (1, "0a 02 14 30 00 00 00 00"),
        (1, "0a 05 04 00 80 01 00 00"), (1, "0a 04 04 00 00 00 00 00"),
        (4, "ff 00 14 00 00 00 00 00"), (4, "ff 01 01 02 55 00 00 00"),
        (4, "ff 00 14 00 00 00 00 00"), (4, "ff 02 01 02 00 00 00 00")]


def test_numbers_that_do_not_fit_send_nothing(simulated, camera):
    for registers, address, value in ((camera.registers.isp, 0x1000000, 0),
                                      (camera.registers.isp, 0, 0x10000),
                                      (camera.registers.isp, -1, 0),
                                      (camera.registers.sensor, 0x10000, 0),
                                      (camera.registers.sensor, 0, 0x100)):
        with pytest.raises(ValueError):
            registers[address] = value
    assert simulated.transfers() == []


def test_what_the_camera_is(camera):
    assert camera.firmware_version == bytes([1, 2, 3, 4, 5, 6])
    assert camera.device_information.hex(" ") == "51 70 01 00 5a 45 00 01"
    assert camera.chip == "517x"
    assert camera.build_date == "2024.Mar.05"
    assert camera.sensor_serial_number == bytes(range(0xA0, 0xC0))
    assert camera.firmware_check_sum_right is True


def test_the_other_chip_and_a_wrong_check_sum(tmp_path):
    with zemuvc.simulate({"cameras": [{"chip": "516x", "state": str(tmp_path / "state")}]}):
        with zemuvc.open() as camera:
            assert camera.chip == "516x"
            camera.update_firmware(b"no image" * 64)
            assert camera.firmware_check_sum_right is False


def test_raw_commands_and_units(simulated, camera):
    assert camera.isp_command(bytes.fromhex("0b00000000000000")).hex(" ") == "00 00 01 02 03 04 05 06"
    assert camera.vcp_command(bytes.fromhex("0600000000000000")).hex(" ") == "00 00 00 00 00 00 00 00"
    assert len(camera.isp_command(bytes(15) + b"\x01")) == 16
    with pytest.raises(ValueError):
        camera.vcp_command(bytes(9))
    assert camera.unit().present is True
    assert camera.unit(zemuvc.ZEM_H264_XU).present is False
    assert camera.unit().get(10, 8).hex(" ") == "51 70 01 00 5a 45 00 01"
    camera.unit().set(1, bytes.fromhex("0b00000000000000"))
    assert camera.call("ZEMAPI_SetLensPos", 0x123) == 0
    assert sent(simulated)[-2:] == [(1, "0b 00 00 00 00 00 00 00"), (1, "00 00 00 00 23 01 00 00")]


# ---- Failures ----


@pytest.mark.parametrize("fault, expected, result, name", [
    ("fail@1", zemuvc.NoDeviceError, 0x80000003, "ZEM_E_NO_DEVICE"),
    ("refuse@2", zemuvc.CameraRefusedError, 0x80000001, "ZEM_E_DEVICE_REFUSED"),
    ("unplug@1", zemuvc.NoDeviceError, 0x80000003, "ZEM_E_NO_DEVICE"),
])
def test_failures_of_commands_have_names(fault, expected, result, name):
    with zemuvc.simulate({"cameras": [{"faults": [fault]}]}), zemuvc.open() as camera:
        with pytest.raises(expected) as caught:
            camera.registers.isp[0] = 1
        assert type(caught.value) is expected
        assert (caught.value.function, caught.value.result, caught.value.name) == (
            "ZEMAPI_SetRegister", result, name)
        assert str(caught.value) == (
            f"ZEMAPI_SetRegister: {caught.value.text} ({name}, 0x{result:08X})")


@pytest.mark.parametrize("fault, expected, result", [
    ("fail@1", zemuvc.TransferFailedError, 0x8007001F),
    ("unplug@1", zemuvc.CameraGoneError, 0x8007048F),
])
def test_failures_of_transfers_have_names(fault, expected, result):
    with zemuvc.simulate({"cameras": [{"faults": [fault]}]}), zemuvc.open() as camera:
        with pytest.raises(expected) as caught:
            camera.unit().get(10, 8)
        assert caught.value.result == result
        assert isinstance(caught.value, zemuvc.PlatformError)


def test_each_result_of_the_table_has_an_exception():
    from zemuvc import _exports, errors
    for result in [*_exports.RESULTS, *_exports.TRANSFER_FAILURES]:
        if result < 0:
            error = errors.error_of("F", result)
            assert type(error) not in (errors.ResultError, errors.PlatformError), hex(result)
            assert error.text in str(error)
    unnamed = errors.error_of("F", 0x80070005 - 0x100000000)
    assert type(unnamed) is errors.PlatformError
    assert str(unnamed) == "F: the platform reported a failure (platform failure, 0x80070005)"


# ---- Flash and firmware ----


@pytest.mark.parametrize("chip", ["516x", "517x"])
def test_update_firmware_with_progress(tmp_path, chip):
    image = firmware_image(bytes([9, 8, 7, 6, 5, 4]), 10000)
    path = tmp_path / "firmware.bin"
    path.write_bytes(image)
    options = {"cameras": [{"chip": chip, "state": str(tmp_path / "state")}]}
    told = []
    with zemuvc.simulate(options) as simulation, zemuvc.open() as camera:
        camera.update_firmware(path, progress=lambda phase, percent: told.append((phase, percent)))
        assert camera.flash.verify(0, image) == 10000
        data = [transfer.data for transfer in simulation.transfers()
                if transfer.direction == "set" and transfer.selector == 13]
        assert b"".join(data) == image.ljust(10240, b"\0")
    send = [percent for phase, percent in told if phase == "send"]
    assert send == sorted(send) and send[0] > 0 and send[-1] == 100 and len(send) == 20
    burn = [percent for phase, percent in told if phase == "burn"]
    assert burn == ([0, 10, 20, 30, 40, 50, 60, 70, 80, 90] if chip == "517x" else [])
    with zemuvc.simulate(options), zemuvc.open() as camera:
        assert camera.firmware_version == bytes([9, 8, 7, 6, 5, 4])


def test_what_progress_raises_comes_out_once_the_transfer_is_over(simulated, camera):
    calls = []

    def stop(phase, percent):
        calls.append(percent)
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        camera.flash.update_calibration(bytes(1024), stop)
    assert len(calls) == 1
    assert len([1 for selector, _ in sent(simulated) if selector == 13]) == 2


def test_images_that_cannot_be_announced_send_nothing(simulated, camera):
    for update in (lambda: camera.update_firmware(b"", chip="517x"),
                   lambda: camera.update_firmware(b"1", chip="518x"),
                   lambda: camera.flash.update_area(bytes(0x10000), 0, 0),
                   lambda: camera.data.send(bytes(0x10000)),
                   lambda: camera.flash.update_area(b"1", 0x100, 0)):
        with pytest.raises(ValueError):
            update()
    with pytest.raises(FileNotFoundError):
        camera.update_firmware("no such file", chip="517x")
    assert simulated.transfers() == []


def test_flash_areas_and_read_back(simulated, camera):
    calibration = bytes(range(256)) * 4
    camera.flash.update_calibration(calibration)
    assert camera.flash.read(0xE0000, 1024) == calibration
    camera.flash.update_area(b"area", 0x02, 0x00)
    told = []
    assert camera.flash.read(0xC0000, 70000, lambda *progress: told.append(progress)) == (
        b"area" + b"\0" * 508 + b"\xff" * (70000 - 512))
    percents = [percent for _, percent in told]
    assert percents == sorted(percents) and percents[0] == 0 and percents[-1] == 100
    with pytest.raises(zemuvc.VerifyError, match="0x0E0002") as caught:
        camera.flash.verify(0xE0000, b"\0\1\3")
    assert caught.value.address == 0xE0002
    with pytest.raises(ValueError):
        camera.flash.read(0xFFFFFFFF, 2)


def test_a_burn_that_fails_raises():
    with zemuvc.simulate({"cameras": [{"burnError": True}]}), zemuvc.open() as camera:
        with pytest.raises(zemuvc.CameraRefusedError):
            camera.flash.update_calibration(b"data")


def test_data_that_was_sent_can_be_read(camera):
    camera.data.send(b"some data of 24 bytes..")
    assert camera.data.read() == b"some data of 24 bytes.."


def test_data_for_which_there_is_no_room(camera):
    camera.data.send(bytes(600))
    with pytest.raises(zemuvc.BufferTooSmallError):
        camera.data.read(room=512)
    with pytest.raises(ValueError):
        camera.data.read(room=511)


# ---- Memories and tables ----


def test_nvmem(simulated, camera):
    camera.nvmem.write(0x1000, bytes(range(40)))
    assert camera.nvmem.read(0x1000, 40) == bytes(range(40))
    assert camera.nvmem.read(0, 4).hex(" ") == camera.tables.dump()[:4].hex(" ")
    first = simulated.transfers()[0]
    assert (first.unit, first.selector) == (VENDOR, 16)
    for address, length in ((0x10000, 1), (-1, 1), (0xFFFF, 2)):
        with pytest.raises(ValueError):
            camera.nvmem.read(address, length)


def test_nvmem_that_moves_too_little_is_told(fake):
    with zemuvc.open() as camera:
        with pytest.raises(zemuvc.IncompleteError, match="0 of 3 bytes"):
            camera.nvmem.write(0, b"abc")


def test_tirella_memory_and_led():
    with zemuvc.simulate({"cameras": [{"tirellaUnit": True}]}) as simulation, zemuvc.open() as camera:
        camera.tirella.write(bytes(range(256)))
        assert camera.tirella.read() == bytes(range(256))
        camera.tirella.set_led(1)
        assert simulation.transfers()[-1].unit == "{F679EF5B-54DF-4BFC-B8CB-CA7E89A5233F}"
        with pytest.raises(ValueError):
            camera.tirella.write(bytes(255))


def test_tables(camera):
    assert camera.tables.list() == {1: 8, 2: 0, 0x20: 64}
    assert camera.tables.read(1) == bytes([1, 2, 3, 4, 5, 6, 7, 8])
    assert camera.tables.read(2) == b""
    camera.tables.write(1, b"ABCDEFGH")
    assert camera.tables.read(1) == b"ABCDEFGH"
    for wrong in (b"ABCDEFG", b"ABCDEFGHI"):
        with pytest.raises(ValueError, match="table 1 has 8 bytes"):
            camera.tables.write(1, wrong)
    with pytest.raises(zemuvc.RefusedError):
        camera.tables.read(3)
    with pytest.raises(ValueError):
        camera.tables.read(0x100)


def test_the_whole_store_is_replaced(camera):
    image = bytes([0xEE, 0, 12, 0]) + bytes([0, 5, 8, 0]) + b"data"
    camera.tables.initialize(image)
    camera.unit().get(5, 8)  # the camera says how far it is, and with that comes to an end
    assert camera.tables.list() == {5: 4}
    assert camera.tables.read(5) == b"data"
    assert camera.tables.dump() == image
    with pytest.raises(ValueError):
        camera.tables.initialize(bytes(8193))


def test_a_camera_without_tables():
    with zemuvc.simulate({"cameras": [{"nvmem": []}]}), zemuvc.open() as camera:
        with pytest.raises(zemuvc.RefusedError):
            camera.tables.list()


# ---- Controls, H.264, encoding ----


def test_standard_controls(camera):
    brightness = camera.controls["brightness"]
    assert brightness.range() == zemuvc.Range(0, 255, 1, 128, False, True)
    brightness.set(200)
    assert brightness.get() == zemuvc.Setting(200, False)
    exposure = camera.controls["exposure"]
    assert exposure.range().can_be_automatic
    exposure.set(-7)
    assert exposure.get() == zemuvc.Setting(-7, False)
    exposure.set_automatic()
    assert exposure.get().automatic is True
    with pytest.raises(zemuvc.PlatformError):
        brightness.set(256)
    with pytest.raises(KeyError):
        camera.controls["sweetness"]


def test_h264_formats_and_running_encoder():
    formats = [{"type": 1, "index": 3, "width": 1920, "height": 1080}]
    with zemuvc.simulate({"cameras": [{"h264Formats": formats, "h264Unit": True}]}) as simulation, \
            zemuvc.open() as camera:
        assert camera.h264.formats() == [
            zemuvc.H264Format(3, 1, 1920, 1080, 0, 0, 2500, 100, 30, 5)]
        camera.h264.start(3)
        with pytest.raises(zemuvc.FailedError):
            camera.h264.start(4)
        before = len(sent(simulation))
        camera.h264.set_fps(25)
        camera.h264.set_bit_rate(5000)
        camera.h264.force_key_frame()
        assert sent(simulation)[before:] == [
            (1, "02 19 00 00 00 00 00 00"), (1, "08 ff 88 13 00 00 00 00"),
            (1, "04 00 00 00 00 00 00 00")]
        camera.h264.start_size(1920, 1080)
        camera.h264.stop()


def test_a_camera_that_cannot_tell_its_formats_has_the_default_list(camera):
    assert len(camera.h264.formats()) == 25


def test_encoding_unit(tmp_path, monkeypatch):
    monkeypatch.setenv("TMPDIR", str(tmp_path))
    with zemuvc.simulate({"cameras": [{"encodingUnit": True, "streamProbeUnit": True}]}) as simulation:
        with zemuvc.open_encoding_unit() as unit:
            unit.set(1, bytes([5]))
            assert unit.get(1, 1) == bytes([5])
            unit.set_probe(bytes(range(51)))
            assert unit.get_probe() == bytes(range(51))
            unit.set_commit(bytes(range(51)))
            assert unit.get_commit() == bytes(range(51))
            with pytest.raises(ValueError):
                unit.set_probe(bytes(50))
            with pytest.raises(ValueError):
                unit.get(0x10000, 1)
        assert sent(simulation)[0] == (1, "05")


# ---- No short buffer reaches an export that writes more ----


@pytest.mark.parametrize("use, export, argument, size", [
    (lambda camera: camera.firmware_version, "ZEMAPI_GetFWVersion", 1, 6),
    (lambda camera: camera.device_information, "ZEMAPI_GetDeviceInfo", 1, 8),
    (lambda camera: camera.sensor_serial_number, "ZEMAPI_GetSensorSN", 1, 32),
    (lambda camera: camera.isp_command(bytes(8)), "ZEMAPI_IspCommand", 2, 8),
    (lambda camera: camera.vcp_command(bytes(16)), "ZEMAPI_VcpCommandEx", 2, 16),
    (lambda camera: camera.data.send(b"x"), "ZEMAPI_SendData", 1, 512),
    (lambda camera: camera.update_firmware(b"x", chip="517x"), "ZEMAPI_UpdateFW_517x", 1, 512),
    (lambda camera: camera.flash.read(0, 1), "ZEMAPI_ReadPartialFlashData", 3, 512),
    (lambda camera: camera.tirella.read(), "ZEMAPI_TIRELLA_ReadNVMEM", 1, 256),
])
def test_buffers_have_room_for_what_the_export_touches(fake, use, export, argument, size):
    with zemuvc.open() as camera:
        use(camera)
    call = next(call for call in fake.calls if call[0] == export)
    assert len(call[1 + argument]) == size


def test_the_export_that_ends_the_process_is_never_called(fake):
    with zemuvc.open() as camera:
        camera.sensor_serial_number
    assert "ZEMAPI_GetSerialNumber" not in [name for name, *_ in fake.calls]


# ---- The simulator ----


def test_options_that_the_simulator_refuses_are_told():
    with pytest.raises(zemuvc.SimulatorError, match='unknown simulator option "wheels"'):
        zemuvc.simulate({"cameras": [{"wheels": 4}]})
    with zemuvc.simulate(), zemuvc.open() as camera:
        assert camera.chip == "517x"


def test_a_simulation_takes_the_place_of_the_one_before():
    first = zemuvc.simulate({"cameras": [{"name": "first"}]})
    with zemuvc.simulate({"cameras": [{"name": "second"}]}):
        assert [info.name for info in zemuvc.list_cameras()] == ["second"]
        first.stop()
        assert [info.name for info in zemuvc.list_cameras()] == ["second"]


def test_a_camera_that_leaves_is_no_longer_listed():
    with zemuvc.simulate({"cameras": [{"faults": ["unplug@1"]}, {}]}), zemuvc.open() as camera:
        with pytest.raises(zemuvc.NoDeviceError):
            camera.registers.isp[0]
        assert len(zemuvc.list_cameras()) == 1


def test_nothing_is_simulated_behind_the_end():
    simulation = zemuvc.simulate()
    simulation.stop()
    simulation.stop()
    with pytest.raises(zemuvc.FailedError):
        simulation.enumerator()
