// Camera frames to packed 24-bit pixels, three bytes each in the order blue, green, red, rows back
// to back without padding. No state; source and destination must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zem {

// Bytes of one pixel in a picture.
inline constexpr std::size_t kBgrBytes = 3;

// One way of doing the arithmetic. All ways give the same bytes.
struct PixelKernel {
  const char* name;

  // Pixels of one row of Y0 U Y1 V groups. `width` is even; `bgr` receives width * 3 bytes.
  // `toNext` is the distance in pixels to the row that comes next, for the processor to fetch
  // meanwhile.
  void (*convertYuy2)(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                      std::ptrdiff_t toNext);

  // Pixels of one or two rows that share width / 2 chroma bytes of each plane. `width` is even;
  // rows of luma lie `stride` bytes apart, rows of pixels stride * 3.
  void (*convertPlanar)(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                        std::uint8_t* bgr, std::size_t width, std::size_t stride, std::size_t rows);
};

// The kernels this processor can run, the reference first and the fastest last.
std::span<const PixelKernel> PixelKernels();

// Converts a frame of three planes: width * height luma bytes, then U and V with width * height / 4
// bytes each, every chroma byte for a block of two by two pixels. The picture is top-down like the
// frame.
void PlanarToBgr(const PixelKernel& kernel, const std::uint8_t* frame, std::uint8_t* bgr,
                 std::uint32_t width, std::uint32_t height);

// Converts a frame of rows with width * 2 bytes, Y0 U Y1 V for each pair of pixels. The picture is
// bottom-up: its first row is the frame's last.
void Yuy2ToBgr(const PixelKernel& kernel, const std::uint8_t* frame, std::uint8_t* bgr,
               std::uint32_t width, std::uint32_t height);

}  // namespace zem
