// Pictures as BMP files: a 14-byte and a 40-byte header, then 24-bit pixels, rows unpadded.
#pragma once

#include <cstdint>

#include "media/pixel_conversion.h"

namespace zem {

// One of PlanarToBgr and Yuy2ToBgr.
using FrameConverter = void (*)(const PixelKernel& kernel, const std::uint8_t* frame,
                                std::uint8_t* bgr, std::uint32_t width, std::uint32_t height);

// Converts the frame and writes the picture. False when `path` or `frame` is null, the picture does
// not fit the format's 32-bit fields (then nothing is created), the file cannot be opened, there is
// no memory for the picture, or its pixels cannot be written or are none (then the file stays as
// far as it was written).
bool WriteFrameAsBmp(const wchar_t* path, const std::uint8_t* frame, std::uint32_t width,
                     std::uint32_t height, FrameConverter convert);

// Writes pixels that are converted already; false as above.
bool WritePixelsAsBmp(const wchar_t* path, const std::uint8_t* pixels, std::uint32_t width,
                      std::uint32_t height);

}  // namespace zem
