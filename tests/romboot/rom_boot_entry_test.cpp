// Sending a running camera into ROM boot.
#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;

const std::string kFirst = "set vendor 4: 16 00 00 00 00 00 00 00";
const std::string kSecond = "set vendor 14: ff 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

using RomBootEntryTest = DeviceTest;

TEST_F(RomBootEntryTest, BothCommandsHalfASecondApart) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst, kSecond}));
  EXPECT_EQ(system().sleeps, std::vector<std::uint32_t>{500});
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 8), SetLine(0, 16)}));
}

TEST_F(RomBootEntryTest, NeitherOutcomeMatters) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst + " failed", kSecond}));
  FailTransfer(2);
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst, kSecond + " failed"}));
  EXPECT_EQ(system().sleeps, (std::vector<std::uint32_t>{500, 500}));
}

TEST_F(RomBootEntryTest, EachCommandAloneGivesTheTransportsResult) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(handle()), 0);
  EXPECT_EQ(TakeWire(), Lines{kFirst});
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(handle()), 0);
  EXPECT_EQ(TakeWire(), Lines{kSecond});
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(handle()), kFailedTransfer);
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(handle()), kFailedTransfer);
  EXPECT_EQ(system().sleeps, std::vector<std::uint32_t>());
}

TEST_F(RomBootEntryTest, NullHandle) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(system().sleeps, std::vector<std::uint32_t>());
}

}  // namespace
