// The header of the simulated camera's firmware images.
#include "simulator/firmware_image.h"

#include <gtest/gtest.h>

namespace {

using zem::simulator::FirmwareVersion;
using zem::simulator::MakeFirmwareImage;
using zem::simulator::ReadFirmwareImage;
using Bytes = std::vector<std::uint8_t>;

const Bytes kImage = {'Z', 'E', 'M', 'F', 'W', 'I',  'M',  'G',  2,    0,    0,   1,
                      0,   7,   0x0, 0x2, 23,  0x00, 0x00, 0x00, 0xFF, 0xFF, 0x02};

TEST(FirmwareImageTest, MakesAndReadsTheHeader) {
  EXPECT_EQ(MakeFirmwareImage({2, 0, 0, 1, 0, 7}, Bytes{0xFF, 0xFF, 0x02}), kImage);
  const auto image = ReadFirmwareImage(kImage);
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->version, (FirmwareVersion{2, 0, 0, 1, 0, 7}));
  EXPECT_TRUE(image->checkSumRight);
}

TEST(FirmwareImageTest, WhatFollowsTheImageDoesNotCount) {
  Bytes padded = kImage;
  padded.resize(512, 0xEE);
  EXPECT_TRUE(ReadFirmwareImage(padded)->checkSumRight);
}

TEST(FirmwareImageTest, AWrongSumIsSeen) {
  Bytes wrong = kImage;
  wrong.back() ^= 1;
  EXPECT_FALSE(ReadFirmwareImage(wrong)->checkSumRight);
}

TEST(FirmwareImageTest, AnythingElseIsNone) {
  EXPECT_FALSE(ReadFirmwareImage({}).has_value());
  for (std::size_t size = 0; size < kImage.size(); ++size) {
    EXPECT_FALSE(ReadFirmwareImage(std::span(kImage).first(size)).has_value()) << size;
  }
  for (const auto& [at, value] :
       {std::pair<std::size_t, std::uint8_t>{0, 'z'}, {16, 19}, {19, 0xFF}}) {
    Bytes wrong = kImage;
    wrong[at] = value;
    EXPECT_FALSE(ReadFirmwareImage(wrong).has_value()) << at;
  }
}

}  // namespace
