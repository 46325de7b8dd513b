// The simulated camera's tuning commands.
#include "simulator/image_tuning.h"

#include <gtest/gtest.h>

#include "simulator/vendor_unit.h"

namespace {

using zem::simulator::Block;
using zem::simulator::ImageTuning;

TEST(SimulatedTuningTest, SettingsAreKept) {
  ImageTuning tuning;
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x08, 1}), Block{});
  EXPECT_EQ(tuning.features.at(0x08), 1);
  EXPECT_EQ(tuning.RunIspCommand({0x10, 7}), Block{});
  EXPECT_EQ(tuning.recordingMode, 7);
  EXPECT_EQ(tuning.RunIspCommand({0x11, 0x00}), Block{});
  EXPECT_TRUE(tuning.manualGain);
  EXPECT_EQ(tuning.RunIspCommand({0x11, 0x01}), Block{});
  EXPECT_FALSE(tuning.manualGain);
  EXPECT_EQ(tuning.RunVcpCommand({0x07, 40}), Block{});
  EXPECT_EQ(tuning.RunVcpCommand({0x08, 20}), Block{});
  EXPECT_EQ(tuning.maxQp, 40);
  EXPECT_EQ(tuning.minQp, 20);
}

TEST(SimulatedTuningTest, SettingsThatNoCommandReadsAreKept) {
  ImageTuning tuning;
  for (const Block& command :
       {Block{0x03, 160, 90}, Block{0x08, 5}, Block{0x09, 2}, Block{0x0D, 1}, Block{0x0E, 3}}) {
    EXPECT_EQ(tuning.RunIspCommand(command), Block{});
    EXPECT_EQ(tuning.unreadSettings.at(command[0]), command);
  }
  EXPECT_EQ(tuning.unreadSettings.size(), 5U);
}

TEST(SimulatedTuningTest, GainsAndSettingsAreReadBack) {
  ImageTuning tuning;
  EXPECT_EQ(tuning.RunIspCommand({0x11, 0x02, 1, 2, 3, 4, 5, 6}), Block{});
  EXPECT_EQ(tuning.RunIspCommand({0x11, 0x03}), (Block{0, 0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x11, 6, 5, 4, 3, 2, 1}), Block{});
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x12}), (Block{0, 0, 6, 5, 4, 3, 2, 1}));
}

TEST(SimulatedTuningTest, WhatItReports) {
  ImageTuning tuning;
  EXPECT_EQ(tuning.RunIspCommand({0x0C}), (Block{0, '2', '4', 'M', 'a', 'r', '0', '5'}));
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x09, 8}), (Block{0, 0, 8, 1}));
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x09, 9}), std::nullopt);
}

TEST(SimulatedTuningTest, OtherCommandsAreNotItsOwn) {
  ImageTuning tuning;
  EXPECT_EQ(tuning.RunIspCommand({0xFF, 0x77}), std::nullopt);
  EXPECT_EQ(tuning.RunIspCommand({0x11, 0x04}), std::nullopt);
  EXPECT_EQ(tuning.RunIspCommand({0x07}), std::nullopt);
  EXPECT_EQ(tuning.RunVcpCommand({0x0C}), std::nullopt);
  EXPECT_EQ(tuning.RunVcpCommand({0x19, 0x80}), std::nullopt);
}

TEST(SimulatedTuningTest, SerialNumberIsReadOnceItIsPrepared) {
  zem::simulator::VendorUnit unit;
  std::vector<std::uint8_t> bytes;
  const std::vector<std::uint8_t> prepare = {0x19, 0x81, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(unit.Set(4, prepare), zem::simulator::Outcome::kDone);
  EXPECT_EQ(unit.Get(11, 32, bytes), zem::simulator::Outcome::kDone);
  ASSERT_EQ(bytes.size(), 32U);
  EXPECT_EQ(bytes[0], 0xA0);
  EXPECT_EQ(bytes[31], 0xBF);
}

}  // namespace
