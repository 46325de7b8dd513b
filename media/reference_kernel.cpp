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

}  // namespace

// The order of the operations is deliberate: where the green sum is a whole number, it decides
// which side of it the double arithmetic ends on.
void ConvertPixel(std::uint8_t luma, std::uint8_t chromaU, std::uint8_t chromaV,
                  std::uint8_t* bgr) {
  const double y = luma;
  const double u = static_cast<float>(chromaU) - 128.0F;
  const double v = static_cast<float>(chromaV) - 128.0F;
  bgr[0] = ClampToByte(y + 1.772 * u);
  bgr[1] = ClampToByte((y - 0.714 * v) - 0.344 * u);
  bgr[2] = ClampToByte(y + 1.402 * v);
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
