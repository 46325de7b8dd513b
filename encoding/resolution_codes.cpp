#include "encoding/resolution_codes.h"

namespace zem {
namespace {

struct Resolution {
  std::uint16_t width;
  std::uint16_t height;
  std::uint8_t codes[3];  // by StartKind
};

constexpr Resolution kResolutions[] = {
    // mode, index type 0, index type 1
    {160, 120, {1, 1, 1}},
    {160, 90, {18, 0, 18}},
    {320, 240, {2, 2, 2}},
    {320, 180, {19, 0, 19}},
    {352, 288, {0, 2, 12}},  // deliberate: type 0 takes the code of
                             // 320x240
    {432, 244, {21, 0, 21}},
    {640, 480, {3, 3, 3}},
    {640, 360, {13, 13, 13}},
    {960, 720, {4, 4, 4}},
    {272, 144, {5, 5, 5}},
    {368, 208, {6, 6, 6}},
    {480, 272, {7, 7, 7}},
    {624, 352, {8, 8, 8}},
    {912, 512, {9, 9, 9}},
    {1280, 720, {10, 10, 10}},
    {1920, 1080, {11, 11, 11}},
    {768, 480, {17, 17, 17}},
    {800, 448, {0, 0, 14}},
    {800, 600, {0, 0, 15}},
    {960, 544, {0, 0, 16}},
    {1024, 576, {22, 0, 22}},
    {1600, 1200, {0, 0, 10}},  // deliberate: the code of 1280x720
};

}  // namespace

std::uint8_t ResolutionCode(StartKind kind, std::uint32_t width, std::uint32_t height) {
  for (const Resolution& resolution : kResolutions) {
    if (resolution.width == width && resolution.height == height) {
      return resolution.codes[static_cast<unsigned>(kind)];
    }
  }
  return 0;
}

}  // namespace zem
