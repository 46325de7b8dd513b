// Manual and automatic gain: the standard control first, then the firmware's own switch.
#include "simulator/standard_controls.h"
#include "tests/support/device_test.h"

namespace {

using zem::simulator::ControlFamily;
using zem::simulator::ControlSetting;
using zem::simulator::StandardControl;
using zem::testing::DeviceTest;
using zem::testing::kUnknownControl;
using zem::testing::Lines;
using zem::testing::RecordingGate;

constexpr std::int32_t kProperty = 7;

const Lines kAutomaticCommand = {"set vendor 1: 11 01 00 00 00 00 00 00", "get vendor 2 [8]"};
const Lines kManualCommand = {"set vendor 1: 11 00 00 00 00 00 00 00", "get vendor 2 [8]"};

class ManualGainTest : public DeviceTest {
 protected:
  // A camera whose property 7 is automatic, at 42.
  void AddAmplifier() {
    camera().AddControls(ControlFamily::kVideoProcessing,
                         {{kProperty, StandardControl{{0, 100, 1, 0, 3}, {42, 1}}},
                          {9, StandardControl{{0, 100, 1, 0, 3}, {5, 1}}}});
  }

  ControlSetting Setting(std::int32_t property = kProperty) {
    ControlSetting setting;
    camera().GetControl(ControlFamily::kVideoProcessing, property, setting);
    return setting;
  }
};

TEST_F(ManualGainTest, NotZeroIsManual) {
  AddAmplifier();
  for (const int enable : {1, -1, 256}) {
    EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), enable), 0);
    EXPECT_EQ(TakeWire(), kManualCommand);
    EXPECT_EQ(Setting().flags, 2);
    EXPECT_EQ(Setting().value, 42) << "the value just read";
    EXPECT_EQ(Setting(9).flags, 1) << "no other property is touched";
  }
}

TEST_F(ManualGainTest, ZeroIsAutomatic) {
  AddAmplifier();
  camera().SetControl(ControlFamily::kVideoProcessing, kProperty, {17, 2});
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 0), 0);
  EXPECT_EQ(TakeWire(), kAutomaticCommand);
  EXPECT_EQ(Setting().flags, 1);
  EXPECT_EQ(Setting().value, 17);
}

TEST_F(ManualGainTest, OrderOfTheCalls) {
  AddAmplifier();
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 1), 0);
  ASSERT_EQ(gate.calls.size(), 30U);
  EXPECT_EQ(Lines(gate.calls.begin(), gate.calls.begin() + 5),
            (Lines{"QueryInterface(IAMVideoProcAmp)", "IAMVideoProcAmp::Get",
                   "QueryInterface(IAMVideoProcAmp)", "IAMVideoProcAmp::Set",
                   "QueryInterface(IKsTopologyInfo)"}));
  const auto live = gate.liveObjects.end() - 30;
  EXPECT_EQ(std::vector<int>(live, live + 5), (std::vector<int>{1, 2, 1, 2, 1}))
      << "the interface is given back each time before anything else is asked";
}

TEST_F(ManualGainTest, NullHandle) {
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(nullptr, 1), ZEM_E_NO_DEVICE);
}

TEST_F(ManualGainTest, WithoutTheAmplifierNothingIsSent) {
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 1), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(ManualGainTest, WithoutThePropertyTheReadsFailureIsReturned) {
  camera().AddControls(ControlFamily::kVideoProcessing, {});
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 1), kUnknownControl);
  EXPECT_EQ(TakeWire(), Lines());
}

// Four calls for the standard control, then thirteen for the command and as many for its reply.
TEST_F(ManualGainTest, FailureOfEachPlatformCall) {
  AddAmplifier();
  handle();
  for (std::size_t index = 0; index < 30; ++index) {
    SCOPED_TRACE(index);
    camera().SetControl(ControlFamily::kVideoProcessing, kProperty, {42, 1});
    gate.calls.clear();
    gate.RefuseCall(index);
    const ZemResult result = ZEMAPI_EnableManualGainCtrl(handle(), 1);
    const Lines wire = TakeWire();
    const bool readWell = index >= 2;
    const bool setWell = readWell && index != 2 && index != 3;
    EXPECT_EQ(Setting().flags, setWell ? 2 : 1);
    if (index == 0) {
      EXPECT_EQ(result, ZEM_E_DEVICE_REFUSED);
    } else if (index == 1) {
      EXPECT_EQ(result, RecordingGate::kRefusal);
    } else if (index == 2 || index == 3) {
      EXPECT_EQ(result, 0) << "the command goes out all the same";
      EXPECT_EQ(wire, kManualCommand);
    } else {
      const std::size_t call = (index - 4) % 13;
      const bool harmless = call == 2 || call == 4 || call == 5 || call == 6;
      EXPECT_EQ(result, harmless ? 0 : call >= 10 ? RecordingGate::kRefusal : kUnknownControl);
    }
    if (!readWell) {
      EXPECT_EQ(wire, Lines());
    }
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

TEST_F(ManualGainTest, PositiveResultsAreNoFailuresAndThatOfTheReplyIsReturned) {
  AddAmplifier();
  handle();
  gate.AnswerEverything(7);
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 1), 7);
  EXPECT_EQ(Setting().flags, 2);
  EXPECT_EQ(TakeWire(), kManualCommand);
}

TEST_F(ManualGainTest, Refusal) {
  AddAmplifier();
  vendor().Answer(2, {1, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(handle(), 0), ZEM_E_DEVICE_REFUSED);
}

}  // namespace
