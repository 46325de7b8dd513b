// Frames and sound through the DLL: the vector code as the cross compiler made it, and memory that
// changes hands between two modules.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "include/ZemUVCExtApi.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kWidth = 322;
constexpr std::uint32_t kHeight = 6;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

Bytes RandomBytes(std::size_t count) {
  std::minstd_rand random(11);
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(random() >> 8);
  }
  return bytes;
}

void Append(Bytes& bgr, int luma, int u, int v) {
  for (const double value :
       {luma + 1.772 * (u - 128), (luma - 0.714 * (v - 128)) - 0.344 * (u - 128),
        luma + 1.402 * (v - 128)}) {
    bgr.push_back(value > 255 ? 255 : value > 0 ? static_cast<std::uint8_t>(value) : 0);
  }
}

Bytes ReadFile(const wchar_t* path) {
  Bytes bytes;
  std::FILE* const file = _wfopen(path, L"rb");
  if (file != nullptr) {
    bytes.resize(1 << 20);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
  }
  _wremove(path);
  return bytes;
}

TEST(MediaTest, PlanarFramesBecomePixels) {
  const Bytes frame = RandomBytes(kPixels * 3 / 2);
  Bytes expected;
  for (std::size_t row = 0; row < kHeight; ++row) {
    for (std::size_t column = 0; column < kWidth; ++column) {
      const std::size_t chroma = kPixels + row / 2 * (kWidth / 2) + column / 2;
      Append(expected, frame[row * kWidth + column], frame[chroma], frame[chroma + kPixels / 4]);
    }
  }
  Bytes bgr(kPixels * 3);
  NV12_to_RGB(frame.data(), bgr.data(), kWidth, kHeight);
  EXPECT_TRUE(bgr == expected);
}

TEST(MediaTest, Yuy2FramesBecomeUprightPictures) {
  const Bytes frame = RandomBytes(kPixels * 2);
  Bytes expected;
  for (std::size_t row = kHeight; row-- > 0;) {
    for (std::size_t column = 0; column < kWidth; ++column) {
      const std::uint8_t* const group = &frame[(row * kWidth + column / 2 * 2) * 2];
      Append(expected, group[column % 2 * 2], group[1], group[3]);
    }
  }
  ASSERT_EQ(ConvertYUY2toBMP(L"zem_media_\u00e9.bmp", frame.data(), kWidth, kHeight), 1);
  const Bytes file = ReadFile(L"zem_media_\u00e9.bmp");
  ASSERT_EQ(file.size(), 54 + kPixels * 3);
  EXPECT_TRUE(Bytes(file.begin() + 54, file.end()) == expected);
}

TEST(MediaTest, PixelsHandedOverAreFreedByTheSameRuntime) {
  const Bytes bytes = RandomBytes(12);
  // A second runtime's heap would end the process here.
  auto* const pixels = static_cast<std::uint8_t*>(std::malloc(bytes.size()));
  ASSERT_NE(pixels, nullptr);
  std::memcpy(pixels, bytes.data(), bytes.size());
  ASSERT_EQ(ConvertRGBtoBMP(L"zem_media.bmp", pixels, 2, 2), 1);
  const Bytes file = ReadFile(L"zem_media.bmp");
  ASSERT_EQ(file.size(), 66U);
  EXPECT_EQ(Bytes(file.begin() + 54, file.end()), bytes);
}

// The file is sparse, and nothing of it is read. The lower 32 bits of its length are those of a
// short one.
TEST(MediaTest, SoundOfMoreThanFourGibibytesIsRefused) {
  for (const LONGLONG size : {4294967260LL, 4294967296LL, 4294967304LL}) {
    HANDLE const file = CreateFileW(L"zem_media.raw", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    ASSERT_TRUE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file));
    CloseHandle(file);
    EXPECT_EQ(PackWavFile(L"zem_media.raw", L"zem_media.wav", 1, 16000, 16), 0) << size;
    EXPECT_EQ(GetFileAttributesW(L"zem_media.wav"), INVALID_FILE_ATTRIBUTES) << size;
  }
  DeleteFileW(L"zem_media.raw");
}

TEST(MediaTest, FailuresAreTold) {
  const Bytes frame(8, 128);
  EXPECT_EQ(ConvertNV12toBMP(L"no folder\\a.bmp", frame.data(), 2, 2), 0);
  EXPECT_EQ(ConvertYUY2toBMP(nullptr, frame.data(), 2, 2), 0);
  EXPECT_EQ(PackWavFile(L"no file", L"zem_media.wav", 1, 16000, 16), 0);
  EXPECT_TRUE(ReadFile(L"zem_media.wav").empty());
}

}  // namespace
