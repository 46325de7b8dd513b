// The picture of the simulated USB camera.
#include "simulator/usb/test_picture.h"

#include <gtest/gtest.h>

namespace {

using zem::simulator::usb::DrawTestPicture;
using Bytes = std::vector<std::uint8_t>;

// The two pixels at an even place.
Bytes PairAt(const Bytes& picture, std::size_t width, std::size_t x, std::size_t y) {
  const auto first = picture.begin() + static_cast<std::ptrdiff_t>(2 * (y * width + x));
  return {first, first + 4};
}

const Bytes kWhitePair = {235, 128, 235, 128};
const Bytes kBlackPair = {16, 128, 16, 128};

TEST(TestPictureTest, EightBars) {
  const Bytes picture = DrawTestPicture(640, 480, 0);
  ASSERT_EQ(picture.size(), 614400U);
  const Bytes kBars[] = {{180, 128, 180, 128}, {162, 44, 162, 142}, {131, 156, 131, 44},
                         {112, 72, 112, 58},   {84, 184, 84, 198},  {65, 100, 65, 212},
                         {35, 212, 35, 114},   {16, 128, 16, 128}};
  for (std::size_t bar = 0; bar < 8; ++bar) {
    EXPECT_EQ(PairAt(picture, 640, 80 * bar, 1), kBars[bar]) << bar;
    EXPECT_EQ(PairAt(picture, 640, 80 * bar + 78, 479), kBars[bar]) << bar;
  }
}

TEST(TestPictureTest, TheMarkMovesWithTheFrames) {
  const std::pair<std::uint32_t, std::size_t> kPlaces[] = {
      {0, 0}, {1, 4}, {40, 160}, {159, 636}, {160, 0}};
  for (const auto& [frame, left] : kPlaces) {
    const Bytes picture = DrawTestPicture(640, 480, frame);
    EXPECT_EQ(PairAt(picture, 640, left, 240), kWhitePair) << frame;
    EXPECT_EQ(PairAt(picture, 640, left, 299), kWhitePair) << frame;
    EXPECT_NE(PairAt(picture, 640, left, 239), kWhitePair) << frame;
    EXPECT_NE(PairAt(picture, 640, left, 300), kWhitePair) << frame;
    if (left >= 2) {
      EXPECT_NE(PairAt(picture, 640, left - 2, 240), kWhitePair) << frame;
    }
    if (left + 60 < 640) {
      EXPECT_EQ(PairAt(picture, 640, left + 58, 240), kWhitePair) << frame;
      EXPECT_NE(PairAt(picture, 640, left + 60, 240), kWhitePair) << frame;
    }
  }
}

TEST(TestPictureTest, TheNumberOfTheFrameStandsInTheFirstRow) {
  const Bytes picture = DrawTestPicture(640, 480, 0x80000005);
  for (std::size_t field = 0; field < 32; ++field) {
    const bool isSet = field == 0 || field == 29 || field == 31;
    EXPECT_EQ(PairAt(picture, 640, 4 * field, 0), isSet ? kWhitePair : kBlackPair) << field;
    EXPECT_EQ(PairAt(picture, 640, 4 * field + 2, 0), isSet ? kWhitePair : kBlackPair) << field;
  }
  EXPECT_EQ(PairAt(picture, 640, 128, 0), PairAt(picture, 640, 128, 1)) << "behind them the bars";
}

TEST(TestPictureTest, SmallPictures) {
  EXPECT_EQ(DrawTestPicture(0, 0, 7), Bytes());
  EXPECT_EQ(DrawTestPicture(2, 1, 0), kBlackPair);
  EXPECT_EQ(DrawTestPicture(8, 8, 3).size(), 128U);
}

}  // namespace
