// Image tuning: the bytes of each command, and the rules that are not the standard one.
#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/device_test.h"
#include "tests/support/telling_camera.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::kUnknownControl;
using zem::testing::Lines;
using zem::testing::RecordingGate;
using zem::testing::SetLine;
using zem::testing::WideLines;

using ImageTuningTest = DeviceTest;

TEST_F(ImageTuningTest, BytesOfEachSetting) {
  unsigned char settings[6] = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
  struct Setting {
    std::function<ZemResult(void*)> set;
    const char* command;
    const char* reply;
  };
  const std::vector<Setting> settingsTable = {
      {[](void* h) { return ZEMAPI_EnableAF(h, 0x81); }, "set vendor 1: ff 08 81 00 00 00 00 00",
       "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_EnableAE(h, 0x81); }, "set vendor 1: ff 05 81 00 00 00 00 00",
       "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_SetShadding(h, 0x81); }, "set vendor 1: ff 00 81 00 00 00 00 00",
       "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_SetImageEffect(h, 0x81); },
       "set vendor 1: ff 0b 81 00 00 00 00 00", "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_SetMjpgQuality(h); }, "set vendor 1: ff 13 00 00 00 00 00 00",
       "get vendor 2 [8]"},
      {[&](void* h) { return ZEMAPI_SetMiscSetting(h, settings); },
       "set vendor 1: ff 11 a0 a1 a2 a3 a4 a5", "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_SetAWBGain(h, 0x0102, 0x0304, 0x0506); },
       "set vendor 1: 11 02 02 01 04 03 06 05", "get vendor 2 [8]"},
      {[](void* h) { return ZEMAPI_SetMaxQP(h, 0x81); }, "set vendor 4: 07 81 00 00 00 00 00 00",
       "get vendor 5 [8]"},
      {[](void* h) { return ZEMAPI_SetMinQP(h, 0x81); }, "set vendor 4: 08 81 00 00 00 00 00 00",
       "get vendor 5 [8]"},
  };
  for (const Setting& setting : settingsTable) {
    EXPECT_EQ(setting.set(handle()), 0);
    EXPECT_EQ(TakeWire(), (Lines{setting.command, setting.reply}));
    EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
  }
}

// ---- Video recording mode ----

TEST_F(ImageTuningTest, VideoRecModeReadsNoReply) {
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(nullptr, 0x42), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(handle(), 0x42), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 1: 10 42 00 00 00 00 00 00"});
  EXPECT_EQ(system().comInitializations, 1) << "the open's; a read would have added one";
}

TEST_F(ImageTuningTest, VideoRecModeThatCannotBeWritten) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(handle(), 0x42), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire().size(), 1U);
}

// ---- Focus accumulators ----

constexpr unsigned kUntouched = 0x5A5A5A5A;
using Accumulators = std::array<unsigned, 10>;
constexpr Accumulators kNone = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched,
                                kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};

class FocusAccumulatorTest : public DeviceTest {
 protected:
  void AnswerPasses(unsigned count) {
    for (unsigned index = 0; index < count; ++index) {
      const auto low = static_cast<std::uint8_t>(0x10 + index);
      vendor().Answer(2, {0, 0x99, low, 2, 3, 0x84, 0x77, 0x77});
    }
  }

  Accumulators values = kNone;
};

TEST_F(FocusAccumulatorTest, NinePasses) {
  AnswerPasses(9);
  EXPECT_EQ(ZEMAPI_GetAFACC(handle(), values.data()), 0);
  EXPECT_EQ(values, (Accumulators{0x84030210, 0x84030211, 0x84030212, 0x84030213, 0x84030214,
                                  0x84030215, 0x84030216, 0x84030217, 0x84030218, kUntouched}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: ff 09 00 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 01 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 02 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 03 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 04 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 05 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 06 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 07 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: ff 09 08 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(FocusAccumulatorTest, NullHandle) {
  EXPECT_EQ(ZEMAPI_GetAFACC(nullptr, values.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(values, kNone);
}

TEST_F(FocusAccumulatorTest, RefusalOfTheFourthPassKeepsThree) {
  AnswerPasses(3);
  vendor().Answer(2, {5, 0, 1, 2, 3, 4, 5, 6});
  EXPECT_EQ(ZEMAPI_GetAFACC(handle(), values.data()), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(values[0], 0x84030210U);
  EXPECT_EQ(values[2], 0x84030212U);
  EXPECT_EQ(values[3], kUntouched);
  EXPECT_EQ(TakeWire().size(), 8U) << "nothing is sent behind the refusal";
}

// Transfers of the nine passes alternate between command and reply.
TEST_F(FocusAccumulatorTest, FailureOfEachTransfer) {
  handle();
  for (std::uint32_t failing = 1; failing <= 18; ++failing) {
    SCOPED_TRACE(failing);
    const std::size_t pass = (failing - 1) / 2;
    const bool isCommand = failing % 2 == 1;
    // A reply that cannot be read uses up no answer.
    AnswerPasses(isCommand ? static_cast<unsigned>(pass) : 8);
    values = kNone;
    FailTransfer(failing);
    const ZemResult result = ZEMAPI_GetAFACC(handle(), values.data());
    if (isCommand) {
      EXPECT_EQ(result, ZEM_E_NO_DEVICE);
      EXPECT_EQ(values[pass], kUntouched);
      EXPECT_EQ(TakeWire().size(), failing);
    } else {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(values[pass], pass == 0 ? 0U : values[pass - 1]) << "a repetition";
      EXPECT_EQ(TakeWire().size(), 18U);
    }
  }
}

// ---- White-balance gains ----

TEST_F(ImageTuningTest, AwbGainsAreReadWhateverTheStatus) {
  vendor().Answer(2, {0x77, 0x99, 0x02, 0x01, 0x04, 0x03, 0x06, 0x05});
  unsigned short gains[3] = {};
  EXPECT_EQ(ZEMAPI_GetAWBGain(handle(), &gains[0], &gains[1], &gains[2]), 0);
  EXPECT_EQ(gains[0], 0x0102);
  EXPECT_EQ(gains[1], 0x0304);
  EXPECT_EQ(gains[2], 0x0506);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 11 03 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(ImageTuningTest, AwbGainsAreZeroWithoutAReplyAndUntouchedWithoutAHandle) {
  unsigned short gains[3] = {7, 7, 7};
  EXPECT_EQ(ZEMAPI_GetAWBGain(nullptr, &gains[0], &gains[1], &gains[2]), ZEM_E_NO_DEVICE);
  EXPECT_EQ(gains[0], 7);
  handle();
  for (const std::uint32_t failing : {1U, 2U}) {
    gains[0] = gains[1] = gains[2] = 7;
    FailTransfer(failing);
    EXPECT_EQ(ZEMAPI_GetAWBGain(handle(), &gains[0], &gains[1], &gains[2]), kFailedTransfer);
    EXPECT_EQ(gains[0], 0);
    EXPECT_EQ(gains[1], 0);
    EXPECT_EQ(gains[2], 0);
    EXPECT_EQ(TakeWire().size(), failing);
  }
}

// ---- Miscellaneous settings ----

using Settings = std::array<unsigned char, 7>;
constexpr Settings kNoSettings = {9, 9, 9, 9, 9, 9, 9};

TEST_F(ImageTuningTest, MiscSettingsAreReplyBytes2To7) {
  vendor().Answer(2, {0, 0x99, 1, 2, 3, 4, 5, 6});
  Settings settings = kNoSettings;
  EXPECT_EQ(ZEMAPI_GetMiscSetting(handle(), settings.data()), 0);
  EXPECT_EQ(settings, (Settings{1, 2, 3, 4, 5, 6, 9}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: ff 12 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(ImageTuningTest, MiscSettingsRefusedOrNotAskedForStay) {
  Settings settings = kNoSettings;
  EXPECT_EQ(ZEMAPI_GetMiscSetting(nullptr, settings.data()), ZEM_E_NO_DEVICE);
  vendor().Answer(2, {5, 0x99, 1, 2, 3, 4, 5, 6});
  EXPECT_EQ(ZEMAPI_GetMiscSetting(handle(), settings.data()), ZEM_E_DEVICE_REFUSED);
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_GetMiscSetting(handle(), settings.data()), kFailedTransfer);
  EXPECT_EQ(settings, kNoSettings);
}

TEST_F(ImageTuningTest, MiscSettingsWithoutAReplyAreZeros) {
  handle();
  FailTransfer(2);
  Settings settings = kNoSettings;
  EXPECT_EQ(ZEMAPI_GetMiscSetting(handle(), settings.data()), kFailedTransfer);
  EXPECT_EQ(settings, (Settings{0, 0, 0, 0, 0, 0, 9}));
}

// ---- The rules that hand the platform's results on ----

struct TransportCommand {
  const char* name;
  bool looksAtStatus;
  std::function<ZemResult(void* handle)> run;
};
void PrintTo(const TransportCommand& command, std::ostream* out) { *out << command.name; }

ZemResult SetSettings(void* handle) {
  const Settings settings = {};
  return ZEMAPI_SetMiscSetting(handle, settings.data());
}
ZemResult GetSettings(void* handle) {
  Settings settings = {};
  return ZEMAPI_GetMiscSetting(handle, settings.data());
}
ZemResult GetGains(void* handle) {
  unsigned short gain = 0;
  return ZEMAPI_GetAWBGain(handle, &gain, &gain, &gain);
}

const std::vector<TransportCommand> kTransportCommands = {
    {"SetAWBGain", false, [](void* handle) { return ZEMAPI_SetAWBGain(handle, 1, 2, 3); }},
    {"GetAWBGain", false, GetGains},
    {"SetShadding", true, [](void* handle) { return ZEMAPI_SetShadding(handle, 1); }},
    {"SetMiscSetting", true, SetSettings},
    {"GetMiscSetting", true, GetSettings},
    {"SetMjpgQuality", true, ZEMAPI_SetMjpgQuality},
    {"SetImageEffect", true, [](void* handle) { return ZEMAPI_SetImageEffect(handle, 1); }},
};

class TransportCommandTest : public DeviceTest,
                             public ::testing::WithParamInterface<TransportCommand> {
 protected:
  ZemResult Run(void* onHandle) { return GetParam().run(onHandle); }
};

TEST_P(TransportCommandTest, NullHandleSendsNothing) {
  EXPECT_EQ(Run(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(system().comInitializations, 0);
}

TEST_P(TransportCommandTest, Status) {
  for (const std::uint8_t status : {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{0xFF}}) {
    vendor().Answer(2, {status, 1, 2, 3, 4, 5, 6, 7});
    const bool refused = status != 0 && GetParam().looksAtStatus;
    EXPECT_EQ(Run(handle()), refused ? ZEM_E_DEVICE_REFUSED : 0) << static_cast<int>(status);
  }
}

TEST_P(TransportCommandTest, FailedWriteIsReturnedAndNoReplyIsRead) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Run(handle()), kFailedTransfer);
  EXPECT_EQ(TakeWire().size(), 1U);
}

TEST_P(TransportCommandTest, FailedReadIsReturned) {
  handle();
  FailTransfer(2);
  EXPECT_EQ(Run(handle()), kFailedTransfer);
  EXPECT_EQ(TakeWire().size(), 2U);
}

// Thirteen calls on the platform for the write and as many for the read; in each the first ten look
// for the node, and of those only some can mislead the request.
TEST_P(TransportCommandTest, FailureOfEachPlatformCall) {
  handle();
  for (std::size_t index = 0; index < 26; ++index) {
    SCOPED_TRACE(index);
    gate.calls.clear();
    gate.RefuseCall(index);
    const ZemResult result = Run(handle());
    const std::size_t call = index % 13;
    if (call >= 10) {
      EXPECT_EQ(result, RecordingGate::kRefusal);
    } else if (call == 2 || call == 4 || call == 5 || call == 6) {
      EXPECT_EQ(result, 0);
    } else {
      EXPECT_EQ(result, kUnknownControl);
    }
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

INSTANTIATE_TEST_SUITE_P(Exports, TransportCommandTest, ::testing::ValuesIn(kTransportCommands),
                         [](const auto& parameters) { return parameters.param.name; });

class PlatformResultTest : public ::testing::Test {
 protected:
  PlatformResultTest() {
    zem::platform::simulated::Reset();
    ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle);
  }
  ~PlatformResultTest() override { ZEMAPI_CloseDevice(&handle); }

  zem::testing::TellingCamera camera;
  void* handle = nullptr;
};

TEST_F(PlatformResultTest, PositiveResultOfTheWriteIsTheResultWhereNoReplyIsRead) {
  camera.writeResult = 7;
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(handle, 1), 7);
  EXPECT_EQ(ZEMAPI_SetAWBGain(handle, 1, 2, 3), 0) << "the read's";
  EXPECT_EQ(ZEMAPI_EnableAF(handle, 1), 0);
  EXPECT_EQ(ZEMAPI_GetSensorSN(handle, std::array<unsigned char, 32>().data()), 0);
}

TEST_F(PlatformResultTest, PositiveResultOfTheReadIsTheResultOfTheTransportRules) {
  camera.readResult = 7;
  for (const TransportCommand& command : kTransportCommands) {
    EXPECT_EQ(command.run(handle), 7) << command.name;
  }
  EXPECT_EQ(ZEMAPI_EnableAF(handle, 1), 0);
}

TEST_F(PlatformResultTest, StatusOfAFailedReadComesFirst) {
  camera.readResult = E_FAIL;
  camera.answer = {3};
  for (const TransportCommand& command : kTransportCommands) {
    EXPECT_EQ(command.run(handle), command.looksAtStatus ? ZEM_E_DEVICE_REFUSED : E_FAIL)
        << command.name;
  }
}

TEST_F(PlatformResultTest, AwbGainsAreThoseOfAFailedReadThatDeliveredBytes) {
  camera.readResult = E_FAIL;
  camera.answer = {0x77, 0x99, 0x02, 0x01, 0x04, 0x03};
  unsigned short gains[3] = {7, 7, 7};
  EXPECT_EQ(ZEMAPI_GetAWBGain(handle, &gains[0], &gains[1], &gains[2]), E_FAIL);
  EXPECT_EQ(gains[0], 0x0102);
  EXPECT_EQ(gains[1], 0x0304);
  EXPECT_EQ(gains[2], 0) << "zero where nothing was delivered";
}

}  // namespace
