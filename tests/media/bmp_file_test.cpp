// BMP files byte by byte, and what happens when they cannot be written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/allocation_count.h"
#include "tests/support/memory_limit.h"
#include "tests/support/temporary_folder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A device that takes no byte.
constexpr const wchar_t* kFullDisk = L"/dev/full";

Bytes Concatenate(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::uint8_t* MallocPixels(const Bytes& bytes) {
  auto* const pixels = static_cast<std::uint8_t*>(std::malloc(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), pixels);
  return pixels;
}

class BmpFileTest : public ::testing::Test {
 protected:
  BmpFileTest() { zem::platform::simulated::Reset(); }
  zem::testing::TemporaryFolder folder_;
};

// Headers of a picture of 2 x 2 pixels.
const Bytes kSmallHeaders = {'B', 'M', 66, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0,               //
                             40,  0,   0,  0, 2, 0, 0, 0, 2, 0, 0,  0, 1, 0, 24, 0, 0, 0,  //
                             0,   0,   0,  0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0,  0, 0, 0,
                             0,   0,   0,  0};

TEST_F(BmpFileTest, Yuy2IsWrittenBottomUp) {
  const Bytes frame = {100, 128, 101, 128, 0, 0, 255, 255};
  EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a.bmp").c_str(), frame.data(), 2, 2), 1);
  EXPECT_EQ(folder_.Read("a.bmp"),
            Concatenate(kSmallHeaders, {0, 0, 178, 28, 208, 255, 100, 100, 100, 101, 101, 101}));
}

TEST_F(BmpFileTest, PlanarIsWrittenTopDown) {
  const Bytes frame = {255, 0, 100, 101, 128, 255};
  EXPECT_EQ(ConvertNV12toBMP(folder_.Path("a.bmp").c_str(), frame.data(), 2, 2), 1);
  EXPECT_EQ(folder_.Read("a.bmp"),
            Concatenate(kSmallHeaders, {255, 164, 255, 0, 0, 178, 100, 9, 255, 101, 10, 255}));
}

TEST_F(BmpFileTest, RgbIsWrittenAsItLiesAndItsMemoryIsFreed) {
  const Bytes bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  // Not freed here: the leak check of the sanitized build would tell, and a second free as well.
  EXPECT_EQ(ConvertRGBtoBMP(folder_.Path("a.bmp").c_str(), MallocPixels(bytes), 2, 2), 1);
  EXPECT_EQ(folder_.Read("a.bmp"), Concatenate(kSmallHeaders, bytes));
}

TEST_F(BmpFileTest, RowsAreNotPadded) {
  const Bytes frame(3 * 3 * 2, 128);
  EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a.bmp").c_str(), frame.data(), 3, 3), 1);
  const Bytes file = folder_.Read("a.bmp");
  ASSERT_EQ(file.size(), 54U + 27U);
  EXPECT_EQ(file[2], 81);
  EXPECT_EQ(Bytes(file.begin() + 54, file.end()), Bytes(27, 128));
}

TEST_F(BmpFileTest, ACommonFrameHasItsStatedSizeAndBeginsWithItsLastRow) {
  Bytes frame(640 * 480 * 2, 128);
  std::fill(frame.end() - 640 * 2, frame.end(), std::uint8_t{200});
  EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a.bmp").c_str(), frame.data(), 640, 480), 1);
  const Bytes file = folder_.Read("a.bmp");
  ASSERT_EQ(file.size(), 921654U);
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 30),
            (Bytes{'B', 'M', 0x36, 0x10, 0x0E, 0, 0, 0,    0, 0, 54, 0, 0, 0,  40,
                   0,   0,   0,    0x80, 2,    0, 0, 0xE0, 1, 0, 0,  1, 0, 24, 0}));
  // Y, U and V are 200: blue and red clamp, green is 200 - 0.714 * 72 - 0.344 * 72.
  EXPECT_EQ(Bytes(file.begin() + 54, file.begin() + 57), (Bytes{255, 123, 255}));
  EXPECT_EQ(Bytes(file.end() - 3, file.end()), (Bytes{128, 128, 128}));
}

TEST_F(BmpFileTest, APathThatCannotBeOpenedGivesNothingAndLeavesThePixels) {
  const std::wstring path = folder_.Path("missing") + L"/a.bmp";
  const Bytes frame(8, 128);
  EXPECT_EQ(ConvertYUY2toBMP(path.c_str(), frame.data(), 2, 2), 0);
  EXPECT_EQ(ConvertNV12toBMP(path.c_str(), frame.data(), 2, 2), 0);
  const Bytes bytes = {1, 2, 3};
  std::uint8_t* const pixels = MallocPixels(bytes);
  EXPECT_EQ(ConvertRGBtoBMP(path.c_str(), pixels, 1, 1), 0);
  EXPECT_EQ(Bytes(pixels, pixels + 3), bytes);
  std::free(pixels);
}

TEST_F(BmpFileTest, AFullDiskGivesNothingAndLeavesThePixels) {
  const Bytes frame(8, 128);
  EXPECT_EQ(ConvertYUY2toBMP(kFullDisk, frame.data(), 2, 2), 0);
  EXPECT_EQ(ConvertNV12toBMP(kFullDisk, frame.data(), 2, 2), 0);
  const Bytes bytes = {1, 2, 3};
  std::uint8_t* const pixels = MallocPixels(bytes);
  EXPECT_EQ(ConvertRGBtoBMP(kFullDisk, pixels, 1, 1), 0);
  EXPECT_EQ(Bytes(pixels, pixels + 3), bytes);
  std::free(pixels);
}

TEST_F(BmpFileTest, SidesOfMoreThanTwoBytes) {
  const Bytes frame(70000 * 2, 128);
  const Bytes wide = {'B', 'M', 0x86, 0x34, 3,  0, 0, 0, 0, 0, 54, 0, 0, 0,  40,
                      0,   0,   0,    112,  17, 1, 0, 1, 0, 0, 0,  1, 0, 24, 0};
  const Bytes high = {'B', 'M', 0x86, 0x34, 3, 0, 0, 0,   0,  0, 54, 0, 0, 0,  40,
                      0,   0,   0,    1,    0, 0, 0, 112, 17, 1, 0,  1, 0, 24, 0};
  std::uint8_t* pixels[] = {MallocPixels(Bytes(210000, 1)), MallocPixels(Bytes(210000, 1))};
  for (const bool isWide : {true, false}) {
    const std::uint32_t width = isWide ? 70000 : 1;
    const std::uint32_t height = isWide ? 1 : 70000;
    EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a").c_str(), frame.data(), width, height), 1);
    EXPECT_EQ(ConvertNV12toBMP(folder_.Path("b").c_str(), frame.data(), width, height), 1);
    EXPECT_EQ(ConvertRGBtoBMP(folder_.Path("c").c_str(), pixels[isWide ? 0 : 1], width, height), 1);
    for (const char* const name : {"a", "b", "c"}) {
      const Bytes file = folder_.Read(name);
      ASSERT_EQ(file.size(), 210054U);
      EXPECT_EQ(Bytes(file.begin(), file.begin() + 30), isWide ? wide : high);
    }
  }
}

// Also one of four billion rows at once.
TEST_F(BmpFileTest, APictureWithoutPixelsIsItsHeadersAndCountsAsNotWritten) {
  const Bytes frame(8, 128);
  std::uint8_t* const pixels = MallocPixels(frame);
  struct Case {
    std::uint32_t width;
    std::uint32_t height;
    Bytes sides;
  };
  const std::vector<Case> cases = {{0, 3, {0, 0, 0, 0, 3, 0, 0, 0}},
                                   {3, 0, {3, 0, 0, 0, 0, 0, 0, 0}},
                                   {0, 0xFFFFFFFF, {0, 0, 0, 0, 255, 255, 255, 255}},
                                   {0, 0xA1B2C3D4, {0, 0, 0, 0, 0xD4, 0xC3, 0xB2, 0xA1}},
                                   {0xA1B2C3D4, 0, {0xD4, 0xC3, 0xB2, 0xA1, 0, 0, 0, 0}}};
  for (const auto& [width, height, sides] : cases) {
    EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a").c_str(), frame.data(), width, height), 0);
    EXPECT_EQ(ConvertNV12toBMP(folder_.Path("b").c_str(), frame.data(), width, height), 0);
    EXPECT_EQ(ConvertRGBtoBMP(folder_.Path("c").c_str(), pixels, width, height), 0);
    for (const char* const name : {"a", "b", "c"}) {
      const Bytes file = folder_.Read(name);
      ASSERT_EQ(file.size(), 54U);
      EXPECT_EQ(Bytes(file.begin(), file.begin() + 6), (Bytes{'B', 'M', 54, 0, 0, 0}));
      EXPECT_EQ(Bytes(file.begin() + 18, file.begin() + 26), sides);
    }
  }
  std::free(pixels);
}

TEST_F(BmpFileTest, APictureTooLargeForItsHeaderIsNotBegun) {
  std::uint8_t byte = 0;
  // 1,431,655,747 pixels are the most: 4,294,967,241 bytes and 54 of headers.
  for (const auto& [width, height] : {std::pair{1431655748U, 1U},
                                      {1U, 1431655748U},
                                      {65536U, 65536U},
                                      {0xFFFFFFFFU, 0xFFFFFFFFU}}) {
    EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a").c_str(), &byte, width, height), 0);
    EXPECT_EQ(ConvertNV12toBMP(folder_.Path("a").c_str(), &byte, width, height), 0);
    EXPECT_EQ(ConvertRGBtoBMP(folder_.Path("a").c_str(), &byte, width, height), 0);
  }
  EXPECT_FALSE(folder_.Exists("a"));
}

TEST_F(BmpFileTest, TheLargestPictureIsBegun) {
  std::uint8_t byte = 0;
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> sizes = {{1431655747, 1},
                                                                      {1, 1431655747}};
  std::vector<std::wstring> opened;
  zem::platform::simulated::TheSystem().refuseFile = [&](const std::wstring& path) {
    opened.push_back(path);
    return true;
  };
  for (const auto& [width, height] : sizes) {
    EXPECT_EQ(ConvertYUY2toBMP(L"yuy2", &byte, width, height), 0);
    EXPECT_EQ(ConvertNV12toBMP(L"nv12", &byte, width, height), 0);
    EXPECT_EQ(ConvertRGBtoBMP(L"rgb", &byte, width, height), 0);
    EXPECT_EQ(std::exchange(opened, {}), (std::vector<std::wstring>{L"yuy2", L"nv12", L"rgb"}));
  }
}

TEST_F(BmpFileTest, ExhaustedMemoryLeavesTheHeaders) {
  const Bytes frame(8, 128);
  {
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a").c_str(), frame.data(), 2, 2), 0);
    EXPECT_EQ(exhausted.TakeWanted(), 16U);
    EXPECT_EQ(ConvertNV12toBMP(folder_.Path("b").c_str(), frame.data(), 2, 2), 0);
    EXPECT_EQ(exhausted.TakeWanted(), 16U);
    EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("c").c_str(), frame.data(), 1431655747, 1), 0);
    EXPECT_EQ(exhausted.TakeWanted(), 5726622988U);
  }
  EXPECT_EQ(folder_.Read("a"), kSmallHeaders);
  EXPECT_EQ(folder_.Read("b"), kSmallHeaders);
  const Bytes largest = folder_.Read("c");
  ASSERT_EQ(largest.size(), 54U);
  EXPECT_EQ(Bytes(largest.begin(), largest.begin() + 26),
            (Bytes{'B', 'M', 255, 255, 255, 255,  0,    0,    0,    0, 54, 0, 0,
                   0,   40,  0,   0,   0,   0x43, 0x55, 0x55, 0x55, 1, 0,  0, 0}));
}

TEST_F(BmpFileTest, NullPointersGiveNothing) {
  std::uint8_t byte = 0;
  EXPECT_EQ(ConvertYUY2toBMP(nullptr, &byte, 1, 1), 0);
  EXPECT_EQ(ConvertNV12toBMP(nullptr, &byte, 1, 1), 0);
  EXPECT_EQ(ConvertRGBtoBMP(nullptr, &byte, 1, 1), 0);
  EXPECT_EQ(ConvertYUY2toBMP(folder_.Path("a").c_str(), nullptr, 1, 1), 0);
  EXPECT_EQ(ConvertNV12toBMP(folder_.Path("a").c_str(), nullptr, 1, 1), 0);
  EXPECT_EQ(ConvertRGBtoBMP(folder_.Path("a").c_str(), nullptr, 1, 1), 0);
  EXPECT_FALSE(folder_.Exists("a"));
}

TEST_F(BmpFileTest, TakesFourBytesAPixelAndLittleElse) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "this build does not count allocations";
  }
  const Bytes frame(640 * 480 * 2, 128);
  const std::wstring path = folder_.Path("a.bmp");
  const std::uint64_t before = zem::testing::AllocatedBytes();
  EXPECT_EQ(ConvertYUY2toBMP(path.c_str(), frame.data(), 640, 480), 1);
  const std::uint64_t taken = zem::testing::AllocatedBytes() - before;
  EXPECT_GE(taken, 640U * 480U * 4U);
  // The rest is the runtime's record of an open file, and its path.
  EXPECT_LT(taken, 640U * 480U * 4U + 2048U);
}

}  // namespace
