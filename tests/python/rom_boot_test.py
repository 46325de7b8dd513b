"""ROM boot, by what is asked of the library, and against the simulated boot loader."""

from __future__ import annotations

import pytest

import zemuvc


@pytest.fixture
def session(fake):
    with zemuvc.rom_boot() as opened:
        fake.calls.clear()
        yield opened


def test_opening_and_closing(fake):
    for arguments, mode in (({}, 1), ({"updater": True}, 2), ({"divider": True}, 0x11),
                            ({"updater": True, "divider": True}, 0x12)):
        fake.calls.clear()
        with zemuvc.rom_boot(**arguments):
            pass
        assert fake.calls == [("ZEMROMAPI_OpenDevice", mode), ("ZEMROMAPI_CloseDevice", "address")]


def test_no_camera_in_rom_boot(fake):
    fake["ZEMROMAPI_OpenDevice"].answer = lambda mode: None
    with pytest.raises(zemuvc.NoCameraError):
        zemuvc.rom_boot()


@pytest.mark.parametrize("use, call", [
    (lambda rom: rom.load_updater("code.bin"), ("ZEMROMAPI_LoadUpdater", 0x77, "code.bin")),
    (lambda rom: rom.load_mini_uvc("code.bin"), ("ZEMROMAPI_LoadMiniUVC", 0x77, "code.bin")),
    (lambda rom: rom.jump(), ("ZEMROMAPI_LongJump", 0x77)),
    (lambda rom: rom.reset(), ("ZEMROMAPI_ResetSystem", 0x77)),
    (lambda rom: rom.set_download_address(0x1000), ("ZEMROMAPI_SetFwDownloadAddr", 0x77, 0x1000)),
    (lambda rom: rom.select("sf"), ("ZEMROMAPI_SwitchModePCAM_SF", 0x77)),
    (lambda rom: rom.select("dram"), ("ZEMROMAPI_SwitchModePCAM_DRAM", 0x77)),
    (lambda rom: rom.select("emmc", 3), ("ZEMROMAPI_SwitchModePCAM_EMMC", 0x77, 3)),
    (lambda rom: rom.select("spi-nand"), ("ZEMROMAPI_SwitchModePCAM_SPI_NAND", 0x77, 0)),
    (lambda rom: rom.select("parallel-nand"), ("ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", 0x77, 0)),
    (lambda rom: rom.erase(0x1000, 0x2000), ("ZEMROMAPI_Erase", 0x77, 0x1000, 0x2000)),
    (lambda rom: rom.update_linux("p", 0x2000), ("ZEMROMAPI_UpdateLinuxFwPkg_", 0x77, "p", 0x2000)),
    (lambda rom: rom.update_linux("p", 0x2000, 0x4000),
     ("ZEMROMAPI_UpdateLinuxFwPkg", 0x77, "p", 0x4000, 0x2000)),
    (lambda rom: rom.mirror("dump", 4096), ("ZEMROMAPI_CreateDumpFile", 0x77, "dump", 4096)),
    (lambda rom: rom.registers.__setitem__(0x80001234, 5),
     ("ZEMROMAPI_WriteRegister", 0x77, 0x80001234, 5)),
    (lambda rom: rom.scsi(b"\xfa\x55", data=b"out"),
     ("ZEMROMAPI_ScsiCommand", 0x77, 0, 3, b"\xfa\x55" + bytes(14), b"out")),
    (lambda rom: rom.scsi(b"\xfa\x55", read=4),
     ("ZEMROMAPI_ScsiCommand", 0x77, 1, 4, b"\xfa\x55" + bytes(14), bytes(4))),
])
def test_each_method_makes_one_call(fake, session, use, call):
    use(session)
    assert fake.calls == [call]


@pytest.mark.parametrize("use, export, begin", [
    (lambda rom: rom.burn_image("f", 0x10000), "ZEMROMAPI_BurnFw", 0x10000),
    (lambda rom: rom.burn_package("f"), "ZEMROMAPI_BurnPcCamFw", 0),
    (lambda rom: rom.burn_package("f", version=2), "ZEMROMAPI_BurnPcCamFwPnsV2", 0),
    (lambda rom: rom.write("f", 0x3000), "ZEMROMAPI_PartialUpdate", 0x3000),
    (lambda rom: rom.write("f", 0x3000, with_header=True), "ZEMROMAPI_PartialUpdateWithHeader", 0x3000),
    (lambda rom: rom.load_into_memory("f"), "ZEMROMAPI_LoadFW2Memory", 0),
])
def test_addresses_go_in_and_come_back(fake, session, use, export, begin):
    seen = []

    def answer(device, path, address):
        seen.append(address._obj.value)
        address._obj.value = 0x12345
        return 1

    fake[export].answer = answer
    assert use(session) == 0x12345
    assert seen == [begin]


def test_reading_gives_as_many_bytes_as_asked_for(fake, session):
    def answer(device, path, address, length):
        with open(path, "wb") as file:
            file.write(bytes(range(256)) * 2)  # whole sectors
        return 1

    fake["ZEMROMAPI_PartialRead"].answer = answer
    assert session.read(3) == b"\0\1\2"


def test_register_is_read(fake, session):
    def answer(device, address, value):
        value._obj.value = 0x5A
        return 0

    fake["ZEMROMAPI_ReadRegister"].answer = answer
    assert session.registers[0x80001234] == 0x5A


def test_failures_have_names(fake, session):
    fake["ZEMROMAPI_Erase"].answer = lambda *arguments: 0x80004005 - 0x100000000
    with pytest.raises(zemuvc.FailedError) as caught:
        session.erase(0, 1)
    assert caught.value.function == "ZEMROMAPI_Erase"
    # The one that answers with 0 when the camera did not accept it.
    with pytest.raises(zemuvc.FailedError):
        session.make_emmc_enhanced_area(0, 0x2000)
    fake["ZEMROMAPI_MkEmmcEhancedArea"].answer = lambda *arguments: 1
    session.make_emmc_enhanced_area(0, 0x2000)


def test_wrong_arguments_call_nothing(fake, session):
    for use in (lambda: session.select("floppy"), lambda: session.select("sf", 1),
                lambda: session.scsi(bytes(17)), lambda: session.scsi(b""),
                lambda: session.scsi(b"\1", read=65537), lambda: session.scsi(b"\1", read=1, data=b"1"),
                lambda: session.burn_package("f", version=3), lambda: session.erase(-1, 1),
                lambda: session.update_linux("f", 0, 0xFFFFFFFF), lambda: session.mirror("x" * 260),
                lambda: session.registers[0x100000000]):
        with pytest.raises(ValueError):
            use()
    assert fake.calls == []


# ---- Against the simulated boot loader ----


def image(payload: bytes) -> bytes:
    """An image file: 18 bytes with the payload's length at 14, a header block, the payload."""
    return bytes(14) + len(payload).to_bytes(4, "little") + b"H" * 4096 + payload


def test_a_camera_is_recovered(tmp_path):
    code, firmware = tmp_path / "code.bin", tmp_path / "image.bin"
    code.write_bytes(bytes(range(256)) * 200)
    payload = bytes(range(251)) * 300
    firmware.write_bytes(image(payload))
    storage = tmp_path / "sf"
    options = {"bootLoader": {"absentOpens": 0, "storages": [
        {"type": "sf", "size": 0x40000, "file": str(storage)}]}}
    with zemuvc.simulate(options):
        assert zemuvc.list_cameras() == []
        with zemuvc.rom_boot() as rom:
            rom.load_updater(code)
            rom.select("sf")
            rom.erase(0, 0x20000)
            assert rom.burn_image(firmware, 0) == 0x14000
            assert rom.read(4096 + len(payload)) == b"H" * 4096 + payload
            rom.registers[0x80001234] = 0x5A
            assert rom.registers[0x80001234] == 0x5A
            with pytest.raises(zemuvc.FailedError):
                rom.select("emmc")  # the camera has none
            rom.reset()
        assert len(zemuvc.list_cameras()) == 1
        with zemuvc.open() as camera:
            assert camera.chip == "517x"
    assert storage.read_bytes()[4096:4096 + len(payload)] == payload


def test_a_running_camera_goes_into_rom_boot():
    with zemuvc.simulate({"bootLoader": {"start": "camera", "absentOpens": 0}}):
        with zemuvc.open() as camera:
            camera.enter_rom_boot()
        assert zemuvc.list_cameras() == []
        with zemuvc.rom_boot() as rom:
            assert rom.scsi(bytes.fromhex("fa556601"), read=16)[:8] == b"\xaa\x55\0\0VSN3"


def test_a_simulation_without_a_boot_loader_has_none():
    with zemuvc.simulate():
        with pytest.raises(zemuvc.NoCameraError):
            zemuvc.rom_boot()


def test_a_volume_that_goes_away_is_a_failure():
    with zemuvc.simulate({"bootLoader": {"absentOpens": 0, "faults": ["unplug@4"]}}):
        with zemuvc.rom_boot() as rom:
            with pytest.raises(zemuvc.FailedError):
                for _ in range(4):
                    rom.registers[0]
