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

// The third needs AVX2, the fourth its successor with the permutation of bytes (VBMI).
constexpr std::array<PixelKernel, 4> kKernels = {{
    {"reference", ConvertYuy2Reference, ConvertPlanarReference},
    {"SSE2", ConvertYuy2Sse2, ConvertPlanarSse2},
    {"AVX2", ConvertYuy2Avx2, ConvertPlanarAvx2},
    {"AVX512", ConvertYuy2Avx512, ConvertPlanarAvx512},
}};

#if defined(_MSC_VER) && !defined(__clang__)
// Whether the processor has the feature (register and bit of its list), and the system saves the
// registers that it takes.
bool Has(int list, int bit, unsigned long long registersSaved) {
  int registers[4];
  __cpuid(registers, 1);
  const bool systemTells = (registers[2] & 1 << 27) != 0;
  if (!systemTells || (_xgetbv(_XCR_XFEATURE_ENABLED_MASK) & registersSaved) != registersSaved) {
    return false;
  }
  __cpuidex(registers, 7, 0);
  return (registers[list] & 1 << bit) != 0;
}

bool HasAvx2() { return Has(1, 5, 0x06); }
bool HasAvx512() { return Has(2, 1, 0xE6); }
#else
bool HasAvx2() { return __builtin_cpu_supports("avx2") != 0; }
bool HasAvx512() { return __builtin_cpu_supports("avx512vbmi") != 0; }
#endif

}  // namespace

std::span<const PixelKernel> PixelKernels() {
  return std::span(kKernels).first(2 + std::size_t{HasAvx2()} + std::size_t{HasAvx512()});
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
  const std::ptrdiff_t toNext = -static_cast<std::ptrdiff_t>(columns);
  for (std::size_t row = height; row-- > 0; bgr += columns * kBgrBytes) {
    const std::uint8_t* const source = frame + row * columns * 2;
    kernel.convertYuy2(source, bgr, even, toNext);
    if (even < columns) {
      ConvertPixel(source[even * 2], source[even * 2 + 1], kMissingChroma, bgr + even * kBgrBytes);
    }
  }
}

}  // namespace zem
