#include <bit>

#include "media/pixel_kernels.h"

namespace zem {
namespace {

std::uint8_t ClampToByte(double value) {
  if (value > 255.0) {
    value = 255.0;
  }
  if (!(value > 0.0)) {
    value = 0.0;
  }
  return static_cast<std::uint8_t>(value);
}

// The order of the operations is deliberate: where the green sum is a whole number, it decides
// which side of it the double arithmetic ends on.
class Chroma {
 public:
  Chroma(std::uint8_t u, std::uint8_t v)
      : u_(static_cast<float>(u) - 128.0F), v_(static_cast<float>(v) - 128.0F) {}

  std::uint8_t Blue(double luma) const { return ClampToByte(luma + 1.772 * u_); }
  std::uint8_t Green(double luma) const { return ClampToByte((luma - 0.714 * v_) - 0.344 * u_); }
  std::uint8_t Red(double luma) const { return ClampToByte(luma + 1.402 * v_); }

 private:
  double u_;
  double v_;
};

// Calls `visit(number)` for each bit that is set.
template <class Visit>
void ForEachBit(std::uint32_t bits, Visit visit) {
  for (; bits != 0; bits &= bits - 1) {
    visit(static_cast<std::size_t>(std::countr_zero(bits)));
  }
}

}  // namespace

void ConvertPixel(std::uint8_t luma, std::uint8_t chromaU, std::uint8_t chromaV,
                  std::uint8_t* bgr) {
  const Chroma chroma(chromaU, chromaV);
  bgr[0] = chroma.Blue(luma);
  bgr[1] = chroma.Green(luma);
  bgr[2] = chroma.Red(luma);
}

void CorrectYuy2Greens(const std::uint8_t* yuy2, std::uint8_t* bgr, std::uint32_t pairs) {
  ForEachBit(pairs, [=](std::size_t pair) {
    const std::uint8_t* const source = yuy2 + pair * 4;
    std::uint8_t* const green = bgr + pair * 2 * kBgrBytes + 1;
    const Chroma chroma(source[1], source[3]);
    green[0] = chroma.Green(source[0]);
    green[kBgrBytes] = chroma.Green(source[2]);
  });
}

void CorrectPlanarGreens(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                         std::uint8_t* bgr, std::size_t stride, std::size_t rows,
                         std::uint32_t pairs) {
  ForEachBit(pairs, [=](std::size_t pair) {
    const Chroma chroma(u[pair], v[pair]);
    for (std::size_t row = 0; row < rows; ++row) {
      const std::uint8_t* const source = luma + row * stride + pair * 2;
      std::uint8_t* const green = bgr + (row * stride + pair * 2) * kBgrBytes + 1;
      green[0] = chroma.Green(source[0]);
      green[kBgrBytes] = chroma.Green(source[1]);
    }
  });
}

void ConvertYuy2Reference(const std::uint8_t* yuy2, std::uint8_t* bgr, std::size_t width,
                          std::ptrdiff_t /*toNext*/) {
  for (std::size_t pixel = 0; pixel < width; pixel += 2, yuy2 += 4, bgr += 2 * kBgrBytes) {
    ConvertPixel(yuy2[0], yuy2[1], yuy2[3], bgr);
    ConvertPixel(yuy2[2], yuy2[1], yuy2[3], bgr + kBgrBytes);
  }
}

void ConvertPlanarReference(const std::uint8_t* luma, const std::uint8_t* u, const std::uint8_t* v,
                            std::uint8_t* bgr, std::size_t width, std::size_t stride,
                            std::size_t rows) {
  for (std::size_t row = 0; row < rows; ++row, luma += stride, bgr += stride * kBgrBytes) {
    for (std::size_t pixel = 0; pixel < width; ++pixel) {
      ConvertPixel(luma[pixel], u[pixel / 2], v[pixel / 2], bgr + pixel * kBgrBytes);
    }
  }
}

}  // namespace zem
