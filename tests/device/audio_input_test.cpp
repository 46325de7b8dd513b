// Opening a microphone by its name, and its level.
#include <memory>
#include <vector>

#include "tests/support/device_test.h"

namespace {

using zem::simulator::Microphone;
using zem::testing::DeviceTest;
using zem::testing::kNothingDetected;
using zem::testing::Lines;
using zem::testing::RecordingGate;
using zem::testing::WideLines;

class AudioInputTest : public DeviceTest {
 protected:
  AudioInputTest() { ListMicrophone(L"wave:Microphone (USB)", microphone); }
  ~AudioInputTest() override { Close(); }

  IBaseFilter* Open() {
    EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(L"WAVE:microphone (usb)", &audio), 0);
    gate.calls.clear();
    return audio;
  }
  void Close() {
    if (audio != nullptr) {
      ZEMAPI_AudioCloseDevice(&audio);
    }
  }

  std::shared_ptr<Microphone> microphone = std::make_shared<Microphone>();
  IBaseFilter* audio = nullptr;
};

TEST_F(AudioInputTest, OpenedByItsWholeNameInAnyCaseAndClosed) {
  EXPECT_NE(Open(), nullptr);
  EXPECT_EQ(system().ComBalance(), 1);
  EXPECT_EQ(zem::simulator::liveComObjects, 1);
  EXPECT_EQ(ZEMAPI_AudioCloseDevice(&audio), 0);
  EXPECT_EQ(audio, nullptr);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  EXPECT_EQ(system().ComBalance(), 1) << "closing leaves COM alone";
}

TEST_F(AudioInputTest, UnknownNameLeavesThePointer) {
  auto* const before = reinterpret_cast<IBaseFilter*>(this);
  IBaseFilter* untouched = before;
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(L"wave:Microphone", &untouched), ZEM_E_FAIL);
  EXPECT_EQ(untouched, before);
  EXPECT_EQ(system().ComBalance(), 1) << "the search leaves COM initialised";
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(AudioInputTest, CamerasAreNoMicrophones) {
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(zem::testing::DisplayName(0x5A45, 0x8C00).c_str(), &audio),
            ZEM_E_FAIL);
}

TEST_F(AudioInputTest, EmptyCategoryIsReportedInTheWordsForVideo) {
  ListNothing();
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(L"any", &audio), ZEM_E_FAIL);
  EXPECT_EQ(TakeDebuggerLines(), kNothingDetected);
}

TEST_F(AudioInputTest, NullPointers) {
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(nullptr, &audio), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(L"any", nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(gate.calls, Lines());
}

TEST_F(AudioInputTest, FailureOfEachPlatformCallOfTheSearch) {
  // A name that cannot be had makes the device one without a name.
  const std::vector<ZemResult> results = {RecordingGate::kRefusal, RecordingGate::kRefusal,
                                          RecordingGate::kRefusal, ZEM_E_FAIL,
                                          RecordingGate::kRefusal};
  auto* const before = reinterpret_cast<IBaseFilter*>(this);
  for (std::size_t index = 0; index < results.size(); ++index) {
    SCOPED_TRACE(index);
    gate.RefuseCall(index);
    IBaseFilter* untouched = before;
    EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(L"wave:Microphone (USB)", &untouched), results[index]);
    EXPECT_EQ(untouched, before);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
}

TEST_F(AudioInputTest, VolumeIsAPercentage) {
  Open();
  const std::vector<std::pair<int, double>> cases = {{0, 0.0},   {50, 0.5},   {100, 1.0},
                                                     {150, 1.5}, {-20, -0.2}, {33, 0.33}};
  for (const auto& [volume, level] : cases) {
    EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, volume), 0);
    EXPECT_EQ(microphone->mixLevel, level) << volume;
  }
}

TEST_F(AudioInputTest, VolumeOfNothingIsASuccess) {
  EXPECT_EQ(ZEMAPI_AudioSetVolume(nullptr, 50), 0);
  EXPECT_EQ(gate.calls, Lines());
  EXPECT_EQ(microphone->mixLevel, 1.0);
}

TEST_F(AudioInputTest, PositiveResultsAreNoFailures) {
  gate.AnswerEverything(7);
  EXPECT_NE(Open(), nullptr) << "and the result of opening is 0";
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), 7) << "the platform's, unchanged";
  EXPECT_EQ(microphone->mixLevel, 0.5);
  EXPECT_EQ(zem::simulator::liveComObjects, 1);
}

TEST_F(AudioInputTest, VolumeFailuresArePassedOn) {
  Open();
  gate.RefuseCall(0);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), RecordingGate::kRefusal) << "the interface";
  gate.RefuseCall(1);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), RecordingGate::kRefusal) << "the level";
  microphone->mixer = false;
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), E_NOINTERFACE);
  EXPECT_EQ(microphone->mixLevel, 1.0);
  EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the microphone only";
}

}  // namespace
