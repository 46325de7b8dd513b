"""Pictures and sound in files, by the built library."""

from __future__ import annotations

import pytest

from zemuvc import media


def test_pixels_of_a_grey_frame():
    assert media.planes_to_rgb(bytes([16] * 4 + [128, 128]), 2, 2) == b"\x10" * 12
    assert media.planes_to_rgb(bytes([235] * 4 + [128, 128]), 2, 2) == b"\xeb" * 12


@pytest.mark.parametrize("save, frame, pixels", [
    (media.save_yuy2, bytes([16, 128] * 4), b"\x10" * 12),
    (media.save_planes, bytes([235] * 4 + [128, 128]), b"\xeb" * 12),
    (media.save_rgb, bytes(range(12)), bytes(range(12))),
])
def test_bitmaps(tmp_path, save, frame, pixels):
    path = tmp_path / "bild ä.bmp"
    for _ in range(2):  # the pixels are freed once each time
        save(path, frame, 2, 2)
    written = path.read_bytes()
    assert len(written) == 54 + 12
    assert written[:2] == b"BM"
    assert written[54:] == pixels


@pytest.mark.parametrize("save, size", [(media.save_yuy2, 8), (media.save_planes, 6),
                                        (media.save_rgb, 12)])
def test_frames_of_another_size_and_folders_that_are_not_there(tmp_path, save, size):
    for wrong in (size - 1, size + 1):
        with pytest.raises(ValueError):
            save(tmp_path / "x.bmp", bytes(wrong), 2, 2)
    assert not (tmp_path / "x.bmp").exists()
    with pytest.raises(OSError):
        save(tmp_path / "none/x.bmp", bytes(size), 2, 2)


def test_sound(tmp_path):
    (tmp_path / "raw").write_bytes(bytes(8))
    media.save_wav(tmp_path / "raw", tmp_path / "wav", channels=2, sample_rate=48000, bits_per_sample=16)
    written = (tmp_path / "wav").read_bytes()
    assert (written[:4], len(written), written[24:28]) == (b"RIFF", 52, (48000).to_bytes(4, "little"))
    with pytest.raises(OSError):
        media.save_wav(tmp_path / "none", tmp_path / "wav", channels=2, sample_rate=48000,
                       bits_per_sample=16)
