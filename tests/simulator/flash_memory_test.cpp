// The flash controller's registers, as the vendor unit's register command reaches them.
#include "simulator/flash_memory.h"

#include <gtest/gtest.h>

#include <vector>

#include "simulator/vendor_unit.h"

namespace {

using zem::simulator::VendorSettings;
using zem::simulator::VendorUnit;
using Bytes = std::vector<std::uint8_t>;

class FlashControllerTest : public ::testing::Test {
 protected:
  void WriteRegister(std::uint8_t high, std::uint8_t low, std::uint8_t value) {
    unit.Set(1, Bytes{0x0A, 0x01, low, high, value, 0, 0, 0});
  }
  std::uint8_t ReadRegister(std::uint8_t high, std::uint8_t low) {
    unit.Set(1, Bytes{0x0A, 0x00, low, high, 0, 0, 0, 0});
    Bytes reply;
    unit.Get(2, 8, reply);
    return reply[2];
  }
  std::uint8_t ReadStatus() {
    WriteRegister(0x67, 0x08, 1);
    WriteRegister(0x67, 0x14, 0x05);
    WriteRegister(0x67, 0x10, 0xA8);
    return ReadRegister(0x67, 0x30);
  }
  void EnableWrites() {
    WriteRegister(0x67, 0x08, 1);
    WriteRegister(0x67, 0x14, 0x06);
    WriteRegister(0x67, 0x10, 0x80);
  }
  void WriteStatus(std::uint8_t status) {
    WriteRegister(0x67, 0x08, 1);
    WriteRegister(0x67, 0x14, 0x01);
    WriteRegister(0x67, 0x20, status);
    WriteRegister(0x67, 0x10, 0x88);
  }

  VendorUnit unit;
};

TEST_F(FlashControllerTest, The517xCanBeProtectedAndIs) {
  EXPECT_EQ(ReadRegister(0x69, 0x00), 0x40);
  EXPECT_EQ(ReadStatus(), 0x1C);
}

TEST_F(FlashControllerTest, The516xHasNone) {
  VendorUnit other({VendorSettings::Chip::k516x, {}});
  EXPECT_FALSE(other.state.processorRegisters.contains(0x6900));
  EXPECT_EQ(other.state.processorRegisters.at(0), 0x5160);
  EXPECT_EQ(other.state.deviceInfo[1], 0x60);
  EXPECT_EQ(other.state.flash.status(), 0);
}

TEST_F(FlashControllerTest, StatusIsWrittenOnceAfterEachWriteEnable) {
  WriteStatus(0);
  EXPECT_EQ(ReadStatus(), 0x1C) << "writes were not enabled";
  EnableWrites();
  WriteStatus(0);
  EXPECT_EQ(ReadStatus(), 0);
  WriteStatus(0x04);
  EXPECT_EQ(ReadStatus(), 0);
}

TEST_F(FlashControllerTest, OnlyTheRightStartRunsAnOpcode) {
  WriteRegister(0x67, 0x14, 0x06);
  WriteRegister(0x67, 0x10, 0x88);
  WriteStatus(0);
  EXPECT_EQ(ReadStatus(), 0x1C);
  WriteRegister(0x67, 0x30, 0);
  WriteRegister(0x67, 0x10, 0x80);
  EXPECT_EQ(ReadRegister(0x67, 0x30), 0);
}

}  // namespace
