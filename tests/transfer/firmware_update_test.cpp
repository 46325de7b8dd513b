// The update procedures that take a handle: what they send, how they wait, what they return.
#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::Repeated;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;
using zem::testing::operator+;

constexpr const char* kStatus = "get vendor 5 [8]";
constexpr const char* kProbe = "get vendor 13 [512]";
constexpr const wchar_t* kFastLine = L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n";

// One read of the status in the poll.
const Lines kPoll = {"drain", "sleep 30", kStatus};
// The pause after a burn that is done at once.
const Lines kGrace = Repeated(10, {"sleep 100", "drain"});

std::string Failed(const std::string& line) { return line + " failed"; }

// What the procedures that poll have in common, run with 600 bytes in two chunks.
struct Procedure {
  const char* name;
  ZemResult (*run)(void* handle, const std::uint8_t* image, std::uint32_t length,
                   ProgressCallback callback, std::uint64_t user);
  const char* announce;
  const char* order;
  bool stopsWhenSendFails;
  const wchar_t* errorLine;
};
void PrintTo(const Procedure& procedure, std::ostream* out) { *out << procedure.name; }

class PolledUpdateTest : public TransferTest, public ::testing::WithParamInterface<Procedure> {
 protected:
  ZemResult Run() { return GetParam().run(handle(), image.data(), 600, Report, user()); }

  // The states the device reports one after another, beginning with the one after the announce.
  void States(const std::vector<std::uint8_t>& states) {
    for (const std::uint8_t state : states) {
      vendor().Answer(5, {state, 0, 0, 0, 0, 0, 0, 0});
    }
  }

  // The camera takes its time: from one poll to the next ten seconds pass.
  void PassTenSecondsAPoll() {
    system().onSleep = [this](std::uint32_t milliseconds) {
      Note("sleep " + std::to_string(milliseconds));
      system().clockMilliseconds += 10000 - milliseconds;
    };
  }

  // What is sent when nothing fails, up to the burn order.
  Lines Sent() {
    return {GetParam().announce,
            kStatus,
            kProbe,
            ChunkLine(13, image, 0, 512),
            "progress 14",
            "drain",
            ChunkLine(13, image, 512, 512),
            "progress 0",
            "drain",
            "drain",
            GetParam().order};
  }

  Bytes image = CountingBytes(600);
};

TEST_P(PolledUpdateTest, AnnouncesSendsOrdersAndPollsUntilDone) {
  States({0x00, 0x01, 0x81, 0xFF, 0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), Sent() + kPoll + kPoll + kPoll + kPoll);
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(0, 8), kFastLine, SetLine(0, 512), SetLine(0, 512), SetLine(0, 8)}));
  EXPECT_EQ(system().clockMilliseconds, 120U);
}

TEST_P(PolledUpdateTest, BurnThatIsDoneAtOnceIsGivenOneMoreSecond) {
  States({0x00, 0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TakeWire(), Sent() + kPoll + kGrace);
  EXPECT_EQ(system().clockMilliseconds, 1030U);
}

TEST_P(PolledUpdateTest, BurnThatFailsAtOnceIsReportedAtOnce) {
  States({0x00, 0x82});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + kPoll);
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 8), kFastLine, SetLine(0, 512),
                                            SetLine(0, 512), SetLine(0, 8), GetParam().errorLine}));
}

TEST_P(PolledUpdateTest, BurnThatFailsLater) {
  States({0x00, 0x01, 0x82});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + kPoll + kPoll);
  EXPECT_EQ(TakeDebuggerLines().back(), GetParam().errorLine);
}

TEST_P(PolledUpdateTest, DeviceThatIsNotIdleGetsNoData) {
  for (const std::uint8_t state : Bytes{0x01, 0x82, 0xFF}) {
    States({state});
    EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
    EXPECT_EQ(TakeWire(), (Lines{GetParam().announce, kStatus})) << int{state};
    EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)}) << "no message";
  }
}

TEST_P(PolledUpdateTest, FailedAnnounce) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines{Failed(GetParam().announce)});
}

TEST_P(PolledUpdateTest, StatusThatCannotBeReadAfterTheAnnounceCountsAsIdle) {
  handle();
  FailTransfer(2);
  States({0x00});
  EXPECT_EQ(Run(), 0);
  Lines wire = Sent() + kPoll + kGrace;
  wire[1] = Failed(kStatus);
  EXPECT_EQ(TakeWire(), wire);
}

TEST_P(PolledUpdateTest, FailedChunk) {
  States({0x00, 0x01, 0x00});
  handle();
  FailTransfer(5);
  EXPECT_EQ(Run(), GetParam().stopsWhenSendFails ? ZEM_E_NO_DEVICE : 0);
  Lines wire = {GetParam().announce,
                kStatus,
                kProbe,
                ChunkLine(13, image, 0, 512),
                "progress 14",
                "drain",
                Failed(ChunkLine(13, image, 512, 512)),
                "drain"};
  if (!GetParam().stopsWhenSendFails) {
    wire = wire + Lines{GetParam().order} + kPoll + kPoll;
  }
  EXPECT_EQ(TakeWire(), wire);
}

TEST_P(PolledUpdateTest, FailedBurnOrder) {
  handle();
  FailTransfer(6);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  Lines wire = Sent();
  wire.back() = Failed(wire.back());
  EXPECT_EQ(TakeWire(), wire) << "no poll";
}

TEST_P(PolledUpdateTest, StatusThatCannotBeReadInThePollCountsAsBusy) {
  States({0x00, 0x00});
  handle();
  FailTransfer(7);
  EXPECT_EQ(Run(), 0);
  Lines wire = Sent() + kPoll + kPoll;
  wire[wire.size() - 4] = Failed(kStatus);
  EXPECT_EQ(TakeWire(), wire) << "and the second is not the first poll: no more seconds";
}

TEST_P(PolledUpdateTest, BurnThatNeverEndsIsGivenUpAfterTenMinutes) {
  PassTenSecondsAPoll();
  vendor().Answer(5, {0});
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Sent() + Repeated(60, kPoll));
  EXPECT_EQ(TakeDebuggerLines().back(), L"[ERR] Burning does not end.\r\n");
}

TEST_P(PolledUpdateTest, BurnThatEndsInTheLastSecondsIsASuccess) {
  PassTenSecondsAPoll();
  States({0x00});
  States(Bytes(59, 0x01));
  States({0x00});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(system().clockMilliseconds, 600000U);
}

TEST_P(PolledUpdateTest, CameraThatIsUnpluggedDuringTheBurnIsGivenUpAfterTenMinutes) {
  PassTenSecondsAPoll();
  States({0x00, 0x01});
  handle();
  camera().AddFault({Fault::Kind::kUnplug, 8, 1, 0});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(system().clockMilliseconds, 600000U);
  EXPECT_EQ(TakeDebuggerLines().back(), L"[ERR] Burning does not end.\r\n");
}

TEST_P(PolledUpdateTest, TenMinutesArePassedByAClockThatWraps) {
  PassTenSecondsAPoll();
  system().clockMilliseconds = 0xFFFFFFFFU - 15000;
  vendor().Answer(5, {0});
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(system().sleeps.size(), 60U);
}

TEST_P(PolledUpdateTest, WithoutACallback) {
  States({0x00, 0x01, 0x00});
  EXPECT_EQ(GetParam().run(handle(), image.data(), 600, nullptr, 0), 0);
  EXPECT_EQ(system().queueDrains, 1 + 2);
}

TEST_P(PolledUpdateTest, NullHandleAndNullImage) {
  EXPECT_EQ(GetParam().run(nullptr, image.data(), 600, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(GetParam().run(handle(), nullptr, 600, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_P(PolledUpdateTest, EmptyImage) {
  States({0x00, 0x01, 0x00});
  EXPECT_EQ(GetParam().run(handle(), nullptr, 0, Report, user()), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 5 + 2 * 3U);
  EXPECT_EQ(wire[2], kProbe);
  EXPECT_EQ(wire[3], "drain");
}

INSTANTIATE_TEST_SUITE_P(
    Procedures, PolledUpdateTest,
    ::testing::Values(
        Procedure{"FW516x",
                  [](void* handle, const std::uint8_t* image, std::uint32_t length,
                     ProgressCallback callback, std::uint64_t user) {
                    return ZEMAPI_UpdateFW_516x(handle, image, length, callback, user, 0xA7);
                  },
                  "set vendor 4: 01 00 03 00 00 04 00 00", "set vendor 4: 01 01 03 a7 00 04 00 00",
                  true, L"[ERR] Firmware burning error.\r\n"},
        Procedure{"Flash",
                  [](void* handle, const std::uint8_t* image, std::uint32_t length,
                     ProgressCallback callback, std::uint64_t user) {
                    return ZEMAPI_UpdateFlash(handle, image, length, callback, user, 0xA7, 0xB8);
                  },
                  "set vendor 4: 01 00 a7 b8 58 02 00 00", "set vendor 4: 01 01 a7 b8 58 02 00 00",
                  false, L"[ERR] Flash data burning error\r\n"},
        Procedure{"CaliData", ZEMAPI_UpdateCaliData, "set vendor 4: 01 00 03 05 00 00 00 00",
                  "set vendor 4: 01 01 03 05 00 00 00 00", false,
                  L"[ERR] Calibration data burning error.\r\n"}),
    [](const auto& parameters) { return parameters.param.name; });

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
                   kProbe,
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

TEST_F(Update517xTest, FailedAnnounceAndDeviceThatIsNotIdle) {
  handle();
  FailTransfer(3);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire().size(), 3U);
  vendor().Answer(5, {1});
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire().size(), 4U);
}

TEST_F(Update517xTest, FailedChunkIsNoFailure) {
  handle();
  FailTransfer(6);
  EXPECT_EQ(Run(), 0);
  const Lines wire = TakeWire();
  EXPECT_EQ(wire[5], Failed(ChunkLine(13, image, 0, 512)));
  EXPECT_EQ(wire[6], "drain");
  EXPECT_EQ(wire[7], "set vendor 4: 01 01 03 00 00 00 00 00");
}

TEST_F(Update517xTest, FailedBurnOrder) {
  handle();
  FailTransfer(8);
  EXPECT_EQ(Run(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire().back(), "set vendor 4: 01 01 03 00 00 00 00 00 failed");
  EXPECT_EQ(system().sleeps.size(), 0U);
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

TEST_F(Update517xTest, FinalStatusThatCannotBeReadIsNoSuccess) {
  handle();
  FailTransfer(9);
  EXPECT_EQ(Run(), ZEM_E_DEVICE_REFUSED);
}

TEST_F(Update517xTest, CallbackIsNeeded) {
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 1024, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), nullptr, 1024, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(nullptr, image.data(), 1024, nullptr, 0), ZEM_E_NO_DEVICE);
}

}  // namespace
