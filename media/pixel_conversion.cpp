#include "media/pixel_conversion.h"

#include <array>

#include "media/pixel_kernels.h"
#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace zem {
namespace {

constexpr std::uint8_t kMissingChroma = 128;

// The last needs AVX2.
constexpr std::array<PixelKernel, 3> kKernels = {{
    {"reference", ConvertYuy2Reference, ConvertPlanarReference},
    {"SSE2", ConvertYuy2Sse2, ConvertPlanarSse2},
    {"AVX2", ConvertYuy2Avx2, ConvertPlanarAvx2},
}};

bool HasAvx2() {
#if defined(_MSC_VER) && !defined(__clang__)
  int registers[4];
  __cpuid(registers, 1);
  const bool systemSavesRegisters =
      (registers[2] & 1 << 27) != 0 && (_xgetbv(_XCR_XFEATURE_ENABLED_MASK) & 6) == 6;
  __cpuidex(registers, 7, 0);
  return systemSavesRegisters && (registers[1] & 1 << 5) != 0;
#else
  return __builtin_cpu_supports("avx2") != 0;
#endif
}

}  // namespace

std::span<const PixelKernel> PixelKernels() {
  return std::span(kKernels).first(HasAvx2() ? kKernels.size() : kKernels.size() - 1);
}

void PlanarToBgr(const PixelKernel& kernel, const std::uint8_t* frame, std::uint8_t* bgr,
                 std::uint32_t width, std::uint32_t height) {
  if (width == 0) {
    return;
  }
  const std::size_t columns = width;
  const std::size_t lumaBytes = columns * height;
  const std::size_t chromaBytes = lumaBytes / 4;
  const std::uint8_t* const planes[2] = {frame + lumaBytes, frame + lumaBytes + chromaBytes};
  const std::size_t even = columns & ~std::size_t{1};
  for (std::size_t row = 0; row < height; row += 2) {
    const std::size_t rows = row + 1 < height ? 2 : 1;
    const std::uint8_t* const luma = frame + row * columns;
    std::uint8_t* const out = bgr + row * columns * kBgrBytes;
    const std::size_t chroma = row * columns / 4;
    std::size_t done = 0;
    if (chroma + even / 2 <= chromaBytes) {
      kernel.convertPlanar(luma, planes[0] + chroma, planes[1] + chroma, out, even, columns, rows);
      done = even;
    }
    for (std::size_t column = done; column < columns; ++column) {
      const std::size_t index = chroma + column / 2;
      const bool there = index < chromaBytes;
      for (std::size_t below = 0; below < rows * columns; below += columns) {
        ConvertPixel(luma[below + column], there ? planes[0][index] : kMissingChroma,
                     there ? planes[1][index] : kMissingChroma, out + (below + column) * kBgrBytes);
      }
    }
  }
}

void Yuy2ToBgr(const PixelKernel& kernel, const std::uint8_t* frame, std::uint8_t* bgr,
               std::uint32_t width, std::uint32_t height) {
  if (width == 0) {
    return;
  }
  const std::size_t columns = width;
  const std::size_t even = columns & ~std::size_t{1};
  const std::ptrdiff_t toNext = -static_cast<std::ptrdiff_t>(columns * 2);
  for (std::size_t row = height; row-- > 0; bgr += columns * kBgrBytes) {
    const std::uint8_t* const source = frame + row * columns * 2;
    kernel.convertYuy2(source, bgr, even, toNext);
    if (even < columns) {
      ConvertPixel(source[even * 2], source[even * 2 + 1], kMissingChroma, bgr + even * kBgrBytes);
    }
  }
}

}  // namespace zem
