// Sending a running camera into ROM boot.
#include "tests/support/device_test.h"
#include "tests/support/event_log.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::LineEvent;
using zem::testing::Lines;
using zem::testing::SetLine;

const std::string kFirst = "set vendor 4: 16 00 00 00 00 00 00 00";
const std::string kSecond = "set vendor 14: ff 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
const std::string kFirstLine = LineEvent(SetLine(0, 8));
const std::string kSecondLine = LineEvent(SetLine(0, 16));

class RomBootEntryTest : public DeviceTest {
 protected:
  // Debugger lines and sleeps go between the transfers.
  RomBootEntryTest() {
    zem::testing::ListenToSystem([this](std::string event) { Note(std::move(event)); });
  }
};

TEST_F(RomBootEntryTest, BothCommandsHalfASecondApart) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst, kFirstLine, "sleep 500", kSecond, kSecondLine}));
}

TEST_F(RomBootEntryTest, NeitherOutcomeMatters) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst + " failed", LineEvent(SetLine(kFailedTransfer, 8)),
                               "sleep 500", kSecond, kSecondLine}));
  FailTransfer(2);
  EXPECT_EQ(ZEMAPI_ResetToRomboot(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst, kFirstLine, "sleep 500", kSecond + " failed",
                               LineEvent(SetLine(kFailedTransfer, 16))}));
}

TEST_F(RomBootEntryTest, EachCommandAloneGivesTheTransportsResult) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kFirst, kFirstLine}));
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{kSecond, kSecondLine}));
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(handle()), kFailedTransfer);
  EXPECT_EQ(TakeWire(), (Lines{kFirst + " failed", LineEvent(SetLine(kFailedTransfer, 8))}));
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(handle()), kFailedTransfer);
  EXPECT_EQ(TakeWire(), (Lines{kSecond + " failed", LineEvent(SetLine(kFailedTransfer, 16))}));
}

TEST_F(RomBootEntryTest, NullHandle) {
  EXPECT_EQ(ZEMAPI_ResetToRomboot(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP16(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
