// The rule by which most commands are judged, for each of its exports; the export line's checks.
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;

// What a getter writes to, with a pattern that shows whether it was touched.
struct Outputs {
  unsigned short word = 0x5AA5;
  unsigned char byte = 0x5A;
  unsigned char bytes[8] = {0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A};
  char chars[8] = {'Z', 'Z', 'Z', 'Z', 'Z', 'Z', 'Z', 'Z'};

  // What the command wrote, if it wrote anything, is all zeros.
  bool UntouchedOrZero() const {
    const auto zero = [](unsigned char value) { return value == 0; };
    return (word == 0x5AA5 || word == 0) && (byte == 0x5A || byte == 0) &&
           (bytes[0] == 0x5A || std::all_of(bytes, bytes + 6, zero)) &&
           (chars[0] == 'Z' || std::all_of(chars, chars + 8, zero));
  }

  bool Untouched() const {
    const Outputs fresh;
    return word == fresh.word && byte == fresh.byte && std::equal(bytes, bytes + 8, fresh.bytes) &&
           std::equal(chars, chars + 8, fresh.chars);
  }
};

struct Command {
  const char* name;
  std::uint16_t replySelector;
  ZemResult refusal;  // result for status 5
  bool hasOutput;
  std::function<ZemResult(void* handle, Outputs& outputs)> run;
};

void PrintTo(const Command& command, std::ostream* out) { *out << command.name; }

const std::vector<Command> kCommands = {
    {"SetRegister", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetRegister(handle, 1, 2); }},
    {"GetRegister", 2, ZEM_E_DEVICE_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetRegister(handle, 1, &out.word); }},
    {"SetSensorRegister", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetSensorRegister(handle, 1, 2); }},
    {"GetSensorRegister", 2, ZEM_E_DEVICE_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetSensorRegister(handle, 1, &out.byte); }},
    {"SetSensorRegisterW", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetSensorRegisterW(handle, 1, 2); }},
    {"GetSensorRegisterW", 2, ZEM_E_DEVICE_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetSensorRegisterW(handle, 1, &out.word); }},
    {"SetVCMRegister", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetVCMRegister(handle, 1, 2); }},
    {"GetVCMRegister", 2, ZEM_E_DEVICE_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetVCMRegister(handle, 1, &out.word); }},
    {"SetLensPos", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetLensPos(handle, 1); }},
    {"GetFWVersion", 2, ZEM_E_DEVICE_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetFWVersion(handle, out.bytes); }},
    {"GetFWVersionReply", 2, ZEM_E_REFUSED, true,
     [](void* handle, Outputs& out) { return ZEMAPI_GetFWVersion(handle, out.chars); }},
    {"GetCheckSumResult", 5, ZEM_E_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_GetCheckSumResult(handle); }},
    {"EnableAF", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_EnableAF(handle, 1); }},
    {"EnableAE", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_EnableAE(handle, 1); }},
    {"SetMaxQP", 5, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetMaxQP(handle, 1); }},
    {"SetMinQP", 5, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetMinQP(handle, 1); }},
    {"SetFps", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetFps(handle, 30); }},
    {"SetBitRate", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_SetBitRate(handle, 1000); }},
    {"ForceIFrame", 2, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_ForceIFrame(handle); }},
    {"MulticastCommit", 5, ZEM_E_DEVICE_REFUSED, false,
     [](void* handle, Outputs&) { return ZEMAPI_MulticastCommit(handle, 1, 2, 3, 4, 5); }},
};

class StandardCommandTest : public DeviceTest, public ::testing::WithParamInterface<Command> {
 protected:
  ZemResult Run(void* onHandle) { return GetParam().run(onHandle, outputs); }

  Outputs outputs;
};

TEST_P(StandardCommandTest, StatusZeroIsSuccess) {
  EXPECT_EQ(Run(handle()), 0);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_P(StandardCommandTest, NullHandleSendsNothing) {
  EXPECT_EQ(Run(nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(system().comInitializations, 0);
  EXPECT_TRUE(outputs.Untouched());
}

// A command is thirteen calls on the platform for the write and as many for the read.
TEST_P(StandardCommandTest, FailureOfEachPlatformCall) {
  handle();
  for (std::size_t index = 0; index < 26; ++index) {
    SCOPED_TRACE(index);
    gate.calls.clear();
    gate.RefuseCall(index);
    const int before = system().comInitializations;
    const ZemResult result = Run(handle());
    // Node types and the information of the node before the unit do not matter.
    const std::size_t call = index % 13;
    const bool reached = call == 2 || call == 4 || call == 5 || call == 6;
    const bool written = index >= 13 || reached;
    EXPECT_EQ(result, written ? 0 : ZEM_E_NO_DEVICE);
    EXPECT_EQ(system().comInitializations - before, written ? 1 : 0) << "the read's";
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

TEST_P(StandardCommandTest, PositiveResultsAreASuccess) {
  handle();
  gate.AnswerEverything(7);
  EXPECT_EQ(Run(handle()), 0);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(7, 8)});
  EXPECT_EQ(outputs.Untouched(), !GetParam().hasOutput);
}

TEST_P(StandardCommandTest, AnyOtherStatusIsARefusalAndLeavesTheOutputs) {
  constexpr std::uint8_t kRefusals[] = {1, 5, 0x7F, 0xFF};
  for (const std::uint8_t status : kRefusals) {
    SCOPED_TRACE(static_cast<int>(status));
    vendor().Answer(GetParam().replySelector, {status, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(Run(handle()), GetParam().refusal);
    EXPECT_TRUE(outputs.Untouched());
  }
}

INSTANTIATE_TEST_SUITE_P(Exports, StandardCommandTest, ::testing::ValuesIn(kCommands),
                         [](const auto& parameters) { return parameters.param.name; });

using NullOutputTest = DeviceTest;

TEST_F(NullOutputTest, NullPointersAreRefusedBehindTheHandleAndNothingIsSent) {
  unsigned char block[16] = {};
  unsigned short gain = 0;
  const std::vector<std::function<ZemResult(void*)>> calls = {
      [](void* camera) { return ZEMAPI_GetRegister(camera, 1, nullptr); },
      [](void* camera) { return ZEMAPI_GetSensorRegister(camera, 1, nullptr); },
      [](void* camera) { return ZEMAPI_GetSensorRegisterW(camera, 1, nullptr); },
      [](void* camera) { return ZEMAPI_GetVCMRegister(camera, 1, nullptr); },
      [](void* camera) { return ZEMAPI_GetFWVersion(camera, static_cast<char*>(nullptr)); },
      [](void* camera) {
        return ZEMAPI_GetFWVersion(camera, static_cast<unsigned char*>(nullptr));
      },
      [](void* camera) { return ZEMAPI_ReadCodecReg(camera, 1, nullptr); },
      [](void* camera) { return ZEMAPI_GetDeviceInfo(camera, nullptr); },
      [](void* camera) { return ZEMAPI_GetFWBuildDate(camera, nullptr); },
      [](void* camera) { return ZEMAPI_GetAFACC(camera, nullptr); },
      [&](void* camera) { return ZEMAPI_GetAWBGain(camera, nullptr, &gain, &gain); },
      [&](void* camera) { return ZEMAPI_GetAWBGain(camera, &gain, nullptr, &gain); },
      [&](void* camera) { return ZEMAPI_GetAWBGain(camera, &gain, &gain, nullptr); },
      [](void* camera) { return ZEMAPI_SetMiscSetting(camera, nullptr); },
      [](void* camera) { return ZEMAPI_GetMiscSetting(camera, nullptr); },
      [](void* camera) { return ZEMAPI_GetSensorSN(camera, nullptr); },
      [](void* camera) { return ZEMAPI_GetSkypeXUVersion(camera, nullptr); },
      [&](void* camera) { return ZEMAPI_IspCommand(camera, nullptr, block); },
      [&](void* camera) { return ZEMAPI_IspCommand(camera, block, nullptr); },
      [&](void* camera) { return ZEMAPI_VcpCommand(camera, nullptr, block); },
      [&](void* camera) { return ZEMAPI_VcpCommand(camera, block, nullptr); },
      [&](void* camera) { return ZEMAPI_IspCommandEx(camera, nullptr, block); },
      [&](void* camera) { return ZEMAPI_IspCommandEx(camera, block, nullptr); },
      [&](void* camera) { return ZEMAPI_VcpCommandEx(camera, nullptr, block); },
      [&](void* camera) { return ZEMAPI_VcpCommandEx(camera, block, nullptr); },
  };
  for (std::size_t index = 0; index < calls.size(); ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(calls[index](handle()), ZEM_E_REFUSED);
    EXPECT_EQ(calls[index](nullptr), ZEM_E_NO_DEVICE);
  }
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
