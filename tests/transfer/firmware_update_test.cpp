// What sets the update procedures that take a handle apart: their announcements, and the update of
// the 517x series.
#include <optional>

#include "tests/support/transfer_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::Failed;
using zem::testing::kFailedTransfer;
using zem::testing::kStatus;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;
using zem::testing::operator+;

constexpr const char* kSpeedProbe = "get vendor 13 [512]";

class FirmwareUpdateTest : public TransferTest {
 protected:
  Bytes image = CountingBytes(1024);
};

TEST_F(FirmwareUpdateTest, Update516xAnnouncesTheLengthInWhole512s) {
  // Not idle after the announce: nothing else is sent.
  vendor().AlwaysAnswer(5, {1, 0, 0, 0, 0, 0, 0, 0});
  for (const std::uint32_t length : {0U, 1U, 512U, 513U, 1000U, 1024U, 0x12345678U, 0xFFFFFE00U}) {
    EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), length, Report, user(), 0),
              ZEM_E_DEVICE_REFUSED);
  }
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 03 00 00 00 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 02 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 02 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 04 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 04 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 04 00 00", kStatus,
                               "set vendor 4: 01 00 03 00 00 58 34 12", kStatus,
                               "set vendor 4: 01 00 03 00 00 fe ff ff", kStatus}));
}

TEST_F(FirmwareUpdateTest, Update516xRefusesALengthWithoutAMultipleOf512AboveIt) {
  for (const std::uint32_t length : {0xFFFFFE01U, 0xFFFFFFFFU}) {
    EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), length, Report, user(), 0),
              ZEM_E_REFUSED);
  }
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(FirmwareUpdateTest, UpdateFlashAnnouncesSixteenBitsOfTheLength) {
  vendor().AlwaysAnswer(5, {1, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_UpdateFlash(handle(), image.data(), 0x12345, Report, user(), 1, 2),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 01 02 45 23 00 00", kStatus}));
}

// Registers as the 517x update accesses them.
std::string ReadOf(const char* address) {
  return std::string("set vendor 1: 0a 00 ") + address + " 00 00 00 00";
}
std::string WriteOf(const char* address, const char* value) {
  return std::string("set vendor 1: 0a 01 ") + address + " " + value + " 00 00 00";
}

class Update517xTest : public FirmwareUpdateTest {
 protected:
  // The values that the register reads give, in order; writes are accepted.
  void Registers(std::uint8_t mode, std::uint8_t pins, std::uint8_t flashStatus) {
    vendor().Answer(2, {0, 0, mode, 0, 0, 0, 0, 0});
    vendor().Answer(2, {0, 0, 0, 0, 0, 0, 0, 0});
    vendor().Answer(2, {0, 0, pins, 0, 0, 0, 0, 0});
    for (int write = 0; write < 4; ++write) {
      vendor().Answer(2, {0, 0, 0, 0, 0, 0, 0, 0});
    }
    vendor().Answer(2, {0, 0, flashStatus, 0, 0, 0, 0, 0});
  }

  ZemResult Run() { return ZEMAPI_UpdateFW_517x(handle(), image.data(), 1024, Report, user()); }

  // TakeWire without the reads of the reply to register commands.
  Lines TakeWireWithoutReplies() {
    Lines wire = TakeWire();
    std::erase(wire, "get vendor 2 [8]");
    return wire;
  }

  Lines Update() {
    Lines lines = {"set vendor 4: 01 00 03 00 00 00 00 00",
                   kStatus,
                   kSpeedProbe,
                   ChunkLine(13, image, 0, 512),
                   "progress 50",
                   "drain",
                   ChunkLine(13, image, 512, 512),
                   "progress 0",
                   "drain",
                   "drain",
                   "set vendor 4: 01 01 03 00 00 00 00 00"};
    return lines + Lines{"progress 10", "sleep 500",  "progress 9", "sleep 500",  "progress 8",
                         "sleep 500",   "progress 7", "sleep 500",  "progress 6", "sleep 500",
                         "progress 5",  "sleep 500",  "progress 4", "sleep 500",  "progress 3",
                         "sleep 500",   "progress 2", "sleep 500",  "progress 1", "sleep 500",
                         kStatus};
  }
};

TEST_F(Update517xTest, ChipWhoseModeBitIsClearKeepsItsFlashRegisters) {
  Registers(0xBF, 0, 0xFF);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), (Lines{ReadOf("00 69"), "get vendor 2 [8]"} + Update()));
  EXPECT_EQ(system().clockMilliseconds, 5000U);
}

TEST_F(Update517xTest, UnprotectedFlashIsLookedAtOnly) {
  Registers(0x40, 0xF3, 0x03);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWireWithoutReplies(),
            (Lines{ReadOf("00 69"), WriteOf("02 69", "57"), ReadOf("26 69"), WriteOf("26 69", "f7"),
                   WriteOf("08 67", "01"), WriteOf("14 67", "05"), WriteOf("10 67", "a8"),
                   "sleep 1", ReadOf("30 67"), WriteOf("08 67", "01")} +
             Update()));
}

TEST_F(Update517xTest, ProtectedFlashIsUnprotected) {
  for (const std::uint8_t flashStatus : Bytes{0x04, 0x08, 0x10, 0x20, 0x40, 0x80}) {
    Registers(0x40, 0x04, flashStatus);
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(
        TakeWireWithoutReplies(),
        (Lines{ReadOf("00 69"), WriteOf("02 69", "57"), ReadOf("26 69"), WriteOf("26 69", "04"),
               WriteOf("08 67", "01"), WriteOf("14 67", "05"), WriteOf("10 67", "a8"), "sleep 1",
               ReadOf("30 67"), WriteOf("08 67", "01"), WriteOf("14 67", "06"),
               WriteOf("10 67", "80"), "sleep 1", WriteOf("08 67", "01"), WriteOf("14 67", "01"),
               WriteOf("20 67", "00"), WriteOf("10 67", "88"), "sleep 1", WriteOf("08 67", "01")} +
         Update()))
        << int{flashStatus};
  }
}

TEST_F(Update517xTest, HighByteOfARegisterIsNotWrittenBack) {
  vendor().Answer(2, {0, 0, 0x40, 0x12, 0, 0, 0, 0});
  vendor().Answer(2, {0, 0, 0, 0, 0, 0, 0, 0});
  vendor().Answer(2, {0, 0, 0x01, 0x34, 0, 0, 0, 0});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWireWithoutReplies()[3], WriteOf("26 69", "05"));
}

TEST_F(Update517xTest, RegisterThatCannotBeReadOrIsRefusedCountsAs0) {
  handle();
  // The third register's write, its read, its status.
  FailTransfer(5);
  vendor().AlwaysAnswer(2, {0, 0, 0x40, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWireWithoutReplies()[3], WriteOf("26 69", "04"));
  FailTransfer(6);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWireWithoutReplies()[4], WriteOf("26 69", "04"));
  vendor().Answer(2, {0, 0, 0x40, 0, 0, 0, 0, 0});
  vendor().Answer(2, {0, 0, 0, 0, 0, 0, 0, 0});
  vendor().Answer(2, {1, 0, 0xF3, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWireWithoutReplies()[3], WriteOf("26 69", "04"));
}

TEST_F(Update517xTest, RegisterAccessesAreNotLookedAt) {
  // A refused access changes nothing in what follows, but for the value it would have read.
  vendor().AlwaysAnswer(2, {9, 0, 0x40, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), (Lines{ReadOf("00 69"), "get vendor 2 [8]"} + Update()));
}

TEST_F(Update517xTest, WhateverRegisterAccessFailsTheUpdateIsRun) {
  // Sixteen accesses on a protected flash, two transfers each.
  for (std::uint32_t k = 1; k <= 32; ++k) {
    // Whatever is read says that there is something to do.
    vendor().AlwaysAnswer(2, {0, 0, 0x44, 0, 0, 0, 0, 0});
    handle();
    FailTransfer(k);
    EXPECT_EQ(Run(), 0) << k;
    const Lines wire = TakeWireWithoutReplies();
    const Lines update = Update();
    ASSERT_GE(wire.size(), update.size());
    EXPECT_EQ(Lines(wire.end() - static_cast<std::ptrdiff_t>(update.size()), wire.end()), update)
        << k;
  }
}

TEST_F(Update517xTest, DeviceThatIsNotIdleGetsNoData) {
  vendor().Answer(5, {1});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), (Lines{ReadOf("00 69"), "get vendor 2 [8]",
                               "set vendor 4: 01 00 03 00 00 00 00 00", kStatus}));
}

TEST_F(Update517xTest, OneFailureBehindTheRegisters) {
  // The mode's register takes the first two transfers. The lines of the others, from which on an
  // update goes on, and how it ends; nothing where no more is sent.
  const struct {
    std::size_t line;
    std::optional<std::size_t> goesOnAt;
    ZemResult result;
  } kOutcomes[] = {{0, std::nullopt, ZEM_E_NO_DEVICE},  // announcement
                   {1, 2, 0},                           // status: looks like an idle camera
                   {2, 3, 0},                           // probe
                   {3, 9, 0},                           // chunks: the burn is ordered all the same
                   {6, 9, 0},
                   {10, std::nullopt, ZEM_E_NO_DEVICE},  // order
                   {31, 32, ZEM_E_DEVICE_REFUSED}};      // the one look
  MakeSlow();
  image.resize(64);
  Lines update = Update();
  update[2] = Failed(kSpeedProbe);
  update[3] = ChunkLine(3, image, 0, 32);
  update[6] = ChunkLine(3, image, 32, 32);
  ASSERT_EQ(update.size(), 32U);
  handle();
  std::uint32_t failing = 2;
  for (const auto& [line, goesOnAt, result] : kOutcomes) {
    SCOPED_TRACE(++failing);
    FailTransfer(failing);
    EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 64, Report, user()), result);
    const auto at = [&update](std::size_t index) {
      return update.begin() + static_cast<std::ptrdiff_t>(index);
    };
    Lines wanted = Lines{ReadOf("00 69"), "get vendor 2 [8]"} + Lines(at(0), at(line)) +
                   Lines{line == 2 ? update[2] : Failed(update[line])};
    if (goesOnAt) {
      wanted = wanted + Lines(at(*goesOnAt), update.end());
    }
    EXPECT_EQ(TakeWire(), wanted);
  }
}

TEST_F(Update517xTest, WhatIsNotDoneAfterFiveSecondsHasFailedWithoutAMessage) {
  for (const std::uint8_t state : Bytes{0x01, 0x82, 0xFF}) {
    vendor().Answer(5, {0});
    vendor().Answer(5, {state});
    EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED) << int{state};
    const WideLines lines = TakeDebuggerLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), SetLine(0, 8));
  }
}

TEST_F(Update517xTest, StateThatAFailedReadBringsAfterFiveSecondsIsNoSuccess) {
  handle();
  // The mode's register, announce, status, probe, two chunks, order, the one look.
  gate.EndTransfer(9, kFailedTransfer);
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire().back(), kStatus) << "which brought a 0";
}

TEST_F(Update517xTest, CallbackIsNeeded) {
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 1024, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), nullptr, 1024, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(nullptr, image.data(), 1024, nullptr, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), nullptr, 0, Report, user()), 0) << "an empty image";
}

}  // namespace
