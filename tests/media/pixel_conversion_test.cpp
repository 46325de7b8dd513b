// Every kernel against the stated arithmetic, written out once more here.
#include "media/pixel_conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "include/ZemUVCExtApi.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint8_t Limit(double value) {
  const double limited = std::fmin(value, 255.0);
  return limited > 0.0 ? static_cast<std::uint8_t>(std::trunc(limited)) : 0;
}

struct Pixel {
  std::uint8_t blue, green, red;
  bool operator==(const Pixel&) const = default;
};

// Blue, green, red in double precision, each step rounded on its own.
Pixel Expected(int luma, int chromaU, int chromaV) {
  const volatile double u = static_cast<double>(static_cast<float>(chromaU - 128));
  const volatile double v = static_cast<double>(static_cast<float>(chromaV - 128));
  const volatile double redPart = 1.402 * v;
  const volatile double greenPartV = 0.714 * v;
  const volatile double greenPartU = 0.344 * u;
  const volatile double bluePart = 1.772 * u;
  const volatile double greenBetween = luma - greenPartV;
  return {Limit(luma + bluePart), Limit(greenBetween - greenPartU), Limit(luma + redPart)};
}

// Expected(Y, U, V) for all triples: index U * 65,536 + V * 256 + Y.
const std::vector<Pixel>& AllExpected() {
  static const std::vector<Pixel> all = [] {
    std::vector<Pixel> pixels;
    pixels.reserve(std::size_t{1} << 24);
    for (int u = 0; u < 256; ++u) {
      for (int v = 0; v < 256; ++v) {
        for (int y = 0; y < 256; ++y) {
          pixels.push_back(Expected(y, u, v));
        }
      }
    }
    return pixels;
  }();
  return all;
}

class KernelTest : public ::testing::TestWithParam<zem::PixelKernel> {};

INSTANTIATE_TEST_SUITE_P(All, KernelTest,
                         ::testing::ValuesIn(zem::PixelKernels().begin(),
                                             zem::PixelKernels().end()),
                         [](const auto& kernel) { return std::string(kernel.param.name); });

// All 2^24 triples: for each U a frame whose row pairs hold all V beside each other.
constexpr std::uint32_t kAllWidth = 512;
constexpr std::uint32_t kAllHeight = 128;

// Checks a picture of that frame; `lumaAt(row, column)` tells what the frame had there.
template <class LumaAt>
void CheckAll(const Bytes& bgr, std::size_t u, LumaAt lumaAt) {
  const std::vector<Pixel>& all = AllExpected();
  for (std::size_t row = 0; row < kAllHeight; ++row) {
    for (std::size_t column = 0; column < kAllWidth; ++column) {
      const std::size_t v = column / 2;
      const std::size_t y = lumaAt(row, column);
      Pixel pixel;
      std::memcpy(&pixel, &bgr[(row * kAllWidth + column) * 3], sizeof(pixel));
      if (!(pixel == all[(u * 256 + v) * 256 + y])) {
        FAIL() << "Y " << y << ", U " << u << ", V " << v;
      }
    }
  }
}

TEST_P(KernelTest, Yuy2GivesTheStatedBytesForAllTriples) {
  Bytes frame(kAllWidth * kAllHeight * 2);
  Bytes bgr(kAllWidth * kAllHeight * 3);
  for (std::size_t u = 0; u < 256; ++u) {
    for (std::size_t row = 0; row < kAllHeight; ++row) {
      for (std::size_t v = 0; v < 256; ++v) {
        std::uint8_t* const group = &frame[(row * 256 + v) * 4];
        group[0] = static_cast<std::uint8_t>(2 * row);
        group[1] = static_cast<std::uint8_t>(u);
        group[2] = static_cast<std::uint8_t>(2 * row + 1);
        group[3] = static_cast<std::uint8_t>(v);
      }
    }
    zem::Yuy2ToBgr(GetParam(), frame.data(), bgr.data(), kAllWidth, kAllHeight);
    ASSERT_NO_FATAL_FAILURE(CheckAll(bgr, u, [](std::size_t row, std::size_t column) {
      return 2 * (kAllHeight - 1 - row) + column % 2;
    }));
  }
}

// Frames have rows in pairs only where there is chroma for all of them.
TEST_P(KernelTest, OneRowOfPlanesIsConvertedAlone) {
  constexpr std::size_t kWidth = 192;
  Bytes luma(kWidth);
  Bytes u(kWidth / 2);
  Bytes v(kWidth / 2);
  for (std::size_t pair = 0; pair < kWidth / 2; ++pair) {
    luma[2 * pair] = static_cast<std::uint8_t>(pair * 5);
    luma[2 * pair + 1] = static_cast<std::uint8_t>(255 - pair);
    u[pair] = static_cast<std::uint8_t>(pair * 3);
    v[pair] = static_cast<std::uint8_t>(200 - pair * 2);
  }
  Bytes bgr(kWidth * 3 + 3, 0x55);
  GetParam().convertPlanar(luma.data(), u.data(), v.data(), bgr.data(), kWidth, kWidth, 1);
  const std::vector<Pixel>& all = AllExpected();
  for (std::size_t column = 0; column < kWidth; ++column) {
    Pixel pixel;
    std::memcpy(&pixel, &bgr[column * 3], sizeof(pixel));
    const std::size_t triple =
        (std::size_t{u[column / 2]} * 256 + v[column / 2]) * 256 + luma[column];
    EXPECT_TRUE(pixel == all[triple]) << column;
  }
  EXPECT_EQ(Bytes(bgr.end() - 3, bgr.end()), Bytes(3, 0x55)) << "behind the row";
}

TEST_P(KernelTest, PlanarGivesTheStatedBytesForAllTriples) {
  constexpr std::size_t kLuma = std::size_t{kAllWidth} * kAllHeight;
  Bytes frame(kLuma * 3 / 2);
  Bytes bgr(kLuma * 3);
  const auto lumaAt = [](std::size_t row, std::size_t column) { return row * 2 + column % 2; };
  for (std::size_t index = 0; index < kLuma; ++index) {
    frame[index] = static_cast<std::uint8_t>(lumaAt(index / kAllWidth, index % kAllWidth));
  }
  for (std::size_t block = 0; block < kLuma / 4; ++block) {
    frame[kLuma + kLuma / 4 + block] = static_cast<std::uint8_t>(block % 256);
  }
  for (std::size_t u = 0; u < 256; ++u) {
    std::memset(&frame[kLuma], static_cast<int>(u), kLuma / 4);
    zem::PlanarToBgr(GetParam(), frame.data(), bgr.data(), kAllWidth, kAllHeight);
    ASSERT_NO_FATAL_FAILURE(CheckAll(bgr, u, lumaAt));
  }
}

// What a pixel of a frame of any size must be. Chroma that the frame does not have counts as 128.
Pixel ExpectedYuy2(const std::uint8_t* frame, std::size_t width, std::size_t row,
                   std::size_t column) {
  const std::uint8_t* const line = frame + row * width * 2;
  const std::size_t v = column / 2 * 4 + 3;
  return Expected(line[column * 2], line[column / 2 * 4 + 1], v < width * 2 ? line[v] : 128);
}

Pixel ExpectedPlanar(const std::uint8_t* frame, std::size_t width, std::size_t height,
                     std::size_t row, std::size_t column) {
  const std::size_t plane = width * height / 4;
  const std::size_t index = row / 2 * 2 * width / 4 + column / 2;
  const std::uint8_t* const u = frame + width * height;
  return Expected(frame[row * width + column], index < plane ? u[index] : 128,
                  index < plane ? u[plane + index] : 128);
}

// Heap blocks of exactly the size, so that the sanitizer sees each byte outside; and guard bytes
// around the result for builds without it.
constexpr std::size_t kGuard = 64;

TEST_P(KernelTest, FramesOfAllSmallSizesStayWithinTheirBuffers) {
  std::minstd_rand random(7);
  for (std::uint32_t width = 1; width <= 140; ++width) {
    for (std::uint32_t height = 1; height <= 9; ++height) {
      const std::size_t shift = random() % 4;
      const std::size_t pixels = std::size_t{width} * height;
      const std::size_t planarBytes = pixels + pixels / 4 * 2;
      for (const bool planar : {false, true}) {
        const std::size_t frameBytes = planar ? planarBytes : pixels * 2;
        const auto source = std::make_unique<std::uint8_t[]>(shift + frameBytes);
        for (std::size_t index = 0; index < shift + frameBytes; ++index) {
          source[index] = static_cast<std::uint8_t>(random());
        }
        const std::uint8_t* const frame = source.get() + shift;
        const auto exact = std::make_unique<std::uint8_t[]>(shift + pixels * 3);
        Bytes guarded(kGuard + shift + pixels * 3 + kGuard, 0xA5);
        std::uint8_t* const result = guarded.data() + kGuard + shift;
        const auto convert = planar ? zem::PlanarToBgr : zem::Yuy2ToBgr;
        convert(GetParam(), frame, exact.get() + shift, width, height);
        convert(GetParam(), frame, result, width, height);
        ASSERT_EQ(std::memcmp(exact.get() + shift, result, pixels * 3), 0);
        for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
          const std::size_t row = pixel / width;
          const std::size_t column = pixel % width;
          const Pixel expected = planar ? ExpectedPlanar(frame, width, height, row, column)
                                        : ExpectedYuy2(frame, width, height - 1 - row, column);
          ASSERT_EQ(*reinterpret_cast<const Pixel*>(result + pixel * 3), expected)
              << (planar ? "planar " : "yuy2 ") << width << " x " << height << ", pixel " << pixel;
        }
        for (std::size_t index = 0; index < kGuard + shift; ++index) {
          ASSERT_EQ(guarded[index], 0xA5);
        }
        for (std::size_t index = kGuard + shift + pixels * 3; index < guarded.size(); ++index) {
          ASSERT_EQ(guarded[index], 0xA5);
        }
      }
    }
  }
}

TEST(PixelKernelsTest, TheReferenceIsFirstAndTheBaselineIsAlwaysThere) {
  ASSERT_GE(zem::PixelKernels().size(), 2U);
  EXPECT_STREQ(zem::PixelKernels()[0].name, "reference");
  EXPECT_STREQ(zem::PixelKernels()[1].name, "SSE2");
}

TEST(Nv12ToRgbTest, OneChromaPairServesABlockOfTwoByTwoAndRowsKeepTheirOrder) {
  // Two rows of four: blocks with (U, V) = (128, 128) and (0, 255).
  const Bytes frame = {100, 101, 0, 255, 102, 103, 16, 128, 128, 0, 128, 255};
  Bytes bgr(24);
  NV12_to_RGB(frame.data(), bgr.data(), 4, 2);
  EXPECT_EQ(bgr, (Bytes{100, 100, 100, 101, 101, 101, 0, 0, 178, 28, 208, 255,
                        102, 102, 102, 103, 103, 103, 0, 0, 194, 0,  81,  255}));
}

TEST(Nv12ToRgbTest, ClampsBothEnds) {
  // Y 255 with V 255: red 255. Y 0 with U 0: blue 0.
  const Bytes frame = {255, 255, 0, 0, 0, 255};
  Bytes bgr(12);
  NV12_to_RGB(frame.data(), bgr.data(), 2, 2);
  EXPECT_EQ(bgr, (Bytes{28, 208, 255, 28, 208, 255, 0, 0, 178, 0, 0, 178}));
}

TEST(Nv12ToRgbTest, ANullPointerAndAFrameWithoutPixelsAreLeftAlone) {
  Bytes bgr(12, 0xA5);
  const Bytes frame(12, 1);
  NV12_to_RGB(nullptr, bgr.data(), 2, 2);
  NV12_to_RGB(frame.data(), nullptr, 2, 2);
  NV12_to_RGB(frame.data(), bgr.data(), 0, 2);
  NV12_to_RGB(frame.data(), bgr.data(), 2, 0);
  EXPECT_EQ(bgr, Bytes(12, 0xA5));
}

}  // namespace
