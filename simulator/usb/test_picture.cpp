#include "simulator/usb/test_picture.h"

#include <algorithm>

namespace zem::simulator::usb {
namespace {

struct Color {
  std::uint8_t y;
  std::uint8_t u;
  std::uint8_t v;
};

constexpr Color kWhite = {235, 128, 128};
constexpr Color kBlack = {16, 128, 128};

// White, yellow, cyan, green, magenta, red, blue, black, at three quarters.
constexpr Color kBars[] = {{180, 128, 128}, {162, 44, 142}, {131, 156, 44}, {112, 72, 58},
                           {84, 184, 198},  {65, 100, 212}, {35, 212, 114}, {16, 128, 128}};

constexpr std::size_t kBitWidth = 4;
constexpr std::size_t kBits = 32;
constexpr std::size_t kMarkStep = 4;

// Two pixels of one colour at an even place.
void Draw(std::vector<std::uint8_t>& picture, std::size_t offset, const Color& color) {
  picture[offset] = color.y;
  picture[offset + 1] = color.u;
  picture[offset + 2] = color.y;
  picture[offset + 3] = color.v;
}

}  // namespace

std::vector<std::uint8_t> DrawTestPicture(std::size_t width, std::size_t height,
                                          std::uint32_t frame) {
  const std::size_t row = 2 * width;
  std::vector<std::uint8_t> picture(row * height);
  if (picture.empty()) {
    return picture;
  }
  for (std::size_t x = 0; x < width; x += 2) {
    Draw(picture, 2 * x, kBars[x * std::size(kBars) / width]);
  }
  for (std::size_t y = 1; y < height; ++y) {
    std::copy_n(picture.begin(), row, picture.begin() + static_cast<std::ptrdiff_t>(y * row));
  }
  const std::size_t mark = height / 8;
  const std::size_t markLeft = kMarkStep * frame % width;
  for (std::size_t y = height / 2; y < height / 2 + mark; ++y) {
    for (std::size_t x = markLeft; x < std::min(markLeft + mark, width); x += 2) {
      Draw(picture, y * row + 2 * x, kWhite);
    }
  }
  for (std::size_t x = 0; x < std::min(kBits * kBitWidth, width); x += 2) {
    const std::size_t bit = kBits - 1 - x / kBitWidth;
    Draw(picture, 2 * x, ((frame >> bit) & 1) != 0 ? kWhite : kBlack);
  }
  return picture;
}

}  // namespace zem::simulator::usb
