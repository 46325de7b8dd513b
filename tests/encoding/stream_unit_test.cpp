// The stream and endpoint unit: each control's selector, length and direction; formats on the wire.
#include <functional>
#include <vector>

#include "tests/support/bare_camera.h"
#include "tests/support/device_test.h"

namespace {

using zem::testing::kFailedTransfer;
using zem::testing::kUnknownControl;
using zem::testing::Lines;
using zem::testing::ScriptedUnit;
using zem::testing::SetLine;
using zem::testing::WideLines;

class StreamUnitTest : public zem::testing::DeviceTest {
 protected:
  StreamUnitTest() { unit_ = &AddUnit(zem::OrvaXu); }
  ScriptedUnit& unit() { return *unit_; }

 private:
  ScriptedUnit* unit_;
};

TEST_F(StreamUnitTest, VersionIsOneByte) {
  unit().Answer(1, {0xFE});
  unsigned char version[2] = {7, 7};
  EXPECT_EQ(ORVAAPI_GetVersion(handle(), version), 0);
  EXPECT_EQ(version[0], 0xFE);
  EXPECT_EQ(version[1], 7);
  EXPECT_EQ(TakeWire(), Lines{"get orva 1 [1]"});
}

TEST_F(StreamUnitTest, BuildDayIsTwoBytes) {
  unit().Answer(3, {0x34, 0x12});
  unsigned short day[2] = {7, 7};
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(handle(), day), 0);
  EXPECT_EQ(day[0], 0x1234);
  EXPECT_EQ(day[1], 7);
  EXPECT_EQ(TakeWire(), Lines{"get orva 3 [2]"});
}

TEST_F(StreamUnitTest, StreamIdIsOneByte) {
  EXPECT_EQ(ORVAAPI_SetStreamID(handle(), 0xA5), 0);
  EXPECT_EQ(TakeWire(), Lines{"set orva 4: a5"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 1, 2)});
}

TEST_F(StreamUnitTest, EndpointSettingIsOneByte) {
  unit().Answer(5, {0x9C});
  unsigned char setting[2] = {7, 7};
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(handle(), setting), 0);
  EXPECT_EQ(setting[0], 0x9C);
  EXPECT_EQ(setting[1], 7);
  EXPECT_EQ(TakeWire(), Lines{"get orva 5 [1]"});
}

TEST_F(StreamUnitTest, LayerIsOneByte) {
  EXPECT_EQ(ORVAAPI_ToggleLayerControl(handle(), 0x81), 0);
  EXPECT_EQ(TakeWire(), Lines{"set orva 27: 81"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 1, 2)});
}

// ---- Formats ----

static_assert(sizeof(OrvaStreamFormat) == 16, "the caller's fields are naturally aligned");

constexpr OrvaStreamFormat kFormat = {0x01, 0x0302, 0x0504, 0x09080706, 0x0D0C0B0A};

TEST_F(StreamUnitTest, WrittenFormatIsPacked) {
  OrvaStreamFormat format = kFormat;
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 0), 0);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 2), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set orva 8: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d",
                               "set orva 9: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 13, 2), SetLine(0, 13, 2)}));
}

TEST_F(StreamUnitTest, NullFormatIsWrittenAsZeros) {
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), nullptr, 0), 0);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), nullptr, 2), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set orva 8: 00 00 00 00 00 00 00 00 00 00 00 00 00",
                               "set orva 9: 00 00 00 00 00 00 00 00 00 00 00 00 00"}));
}

TEST_F(StreamUnitTest, ReadFormatIsUnpacked) {
  for (const auto& [operation, selector] : {std::pair<unsigned, std::uint16_t>{1, 8}, {3, 9}}) {
    unit().Answer(selector,
                  {0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xFA, 0xFB, 0xFC, 0xFD});
    OrvaStreamFormat format = kFormat;
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, operation), 0);
    EXPECT_EQ(format.bStreamFormat, 0xF1);
    EXPECT_EQ(format.wWidth, 0xF3F2);
    EXPECT_EQ(format.wHeight, 0xF5F4);
    EXPECT_EQ(format.dwFrameInterval, 0xF9F8F7F6U);
    EXPECT_EQ(format.dwBitRate, 0xFDFCFBFAU);
  }
  EXPECT_EQ(TakeWire(), (Lines{"get orva 8 [13]", "get orva 9 [13]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(StreamUnitTest, FailedReadFillsTheFormatWithZeros) {
  handle();
  for (const unsigned operation : {1U, 3U}) {
    OrvaStreamFormat format = kFormat;
    FailTransfer(1);
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, operation), kFailedTransfer);
    EXPECT_EQ(format.bStreamFormat, 0);
    EXPECT_EQ(format.wWidth, 0);
    EXPECT_EQ(format.wHeight, 0);
    EXPECT_EQ(format.dwFrameInterval, 0U);
    EXPECT_EQ(format.dwBitRate, 0U);
  }
}

TEST_F(StreamUnitTest, ShortReadLeavesZeros) {
  unit().Answer(8, {0xF1, 0xF2, 0xF3, 0xF4});
  OrvaStreamFormat format = kFormat;
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 1), 0);
  EXPECT_EQ(format.wWidth, 0xF3F2);
  EXPECT_EQ(format.wHeight, 0x00F4);
  EXPECT_EQ(format.dwBitRate, 0U);
}

TEST_F(StreamUnitTest, UnknownOperationSendsNothing) {
  OrvaStreamFormat format = kFormat;
  for (const unsigned operation : {4U, 5U, 0x100U, 0xFFFFFFFFU}) {
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, operation), 0);
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), nullptr, operation), 0);
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(nullptr, &format, operation), ZEM_E_NO_DEVICE);
  }
  EXPECT_EQ(format.wWidth, kFormat.wWidth);
  EXPECT_EQ(TakeWire(), Lines());
}

// ---- Arguments, failures, absence ----

TEST_F(StreamUnitTest, NullOutputs) {
  EXPECT_EQ(ORVAAPI_GetVersion(handle(), nullptr), ZEM_E_FAIL);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(handle(), nullptr), ZEM_E_FAIL);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), nullptr, 1), ZEM_E_REFUSED);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), nullptr, 3), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(ORVAAPI_GetVersion(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(nullptr, nullptr, 1), ZEM_E_NO_DEVICE);
}

// What the platform is asked for, and an answer of its choice.
class AskedCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length, ULONG* /*moved*/) override {
    selector = request.Property.Id;
    lastData = data;
    lastLength = length;
    return static_cast<HRESULT>(0x800703E6U);
  }

  ULONG selector = 0;
  ULONG lastLength = 0;
  void* lastData = this;
};

TEST(EndpointSettingTest, NullOutputGoesToThePlatformAsItIs) {
  AskedCamera camera;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(handle, nullptr), static_cast<ZemResult>(0x800703E6U));
  EXPECT_EQ(camera.selector, 5U);
  EXPECT_EQ(camera.lastData, nullptr);
  EXPECT_EQ(camera.lastLength, 1U);
  ZEMAPI_CloseDevice(&handle);
}

struct Outputs {
  unsigned char byte = 0x5A;
  unsigned short word = 0x5AA5;
  OrvaStreamFormat format = kFormat;
};

const std::vector<std::function<ZemResult(void*, Outputs&)>> kCalls = {
    [](void* handle, Outputs& out) { return ORVAAPI_GetVersion(handle, &out.byte); },
    [](void* handle, Outputs& out) { return ORVAAPI_FirmwareBuildDay(handle, &out.word); },
    [](void* handle, Outputs&) { return ORVAAPI_SetStreamID(handle, 1); },
    [](void* handle, Outputs& out) { return ORVAAPI_GetEndpointSetting(handle, &out.byte); },
    [](void* handle, Outputs& out) {
      return ORVAAPI_StreamFormatProbeCommit(handle, &out.format, 0);
    },
    [](void* handle, Outputs& out) {
      return ORVAAPI_StreamFormatProbeCommit(handle, &out.format, 1);
    },
    [](void* handle, Outputs& out) {
      return ORVAAPI_StreamFormatProbeCommit(handle, &out.format, 2);
    },
    [](void* handle, Outputs& out) {
      return ORVAAPI_StreamFormatProbeCommit(handle, &out.format, 3);
    },
    [](void* handle, Outputs&) { return ORVAAPI_ToggleLayerControl(handle, 1); },
};

TEST_F(StreamUnitTest, FailureOfTheTransferIsReturnedAsItIs) {
  for (std::size_t index = 0; index < kCalls.size(); ++index) {
    SCOPED_TRACE(index);
    handle();
    Outputs outputs;
    FailTransfer(1);
    EXPECT_EQ(kCalls[index](handle(), outputs), kFailedTransfer);
    EXPECT_EQ(TakeWire().size(), 1U);
    EXPECT_EQ(outputs.byte, 0x5A);
    EXPECT_EQ(outputs.word, 0x5AA5);
    EXPECT_EQ(zem::simulator::liveComObjects, 1);
  }
}

TEST_F(StreamUnitTest, NullHandleSendsNothing) {
  for (std::size_t index = 0; index < kCalls.size(); ++index) {
    Outputs outputs;
    EXPECT_EQ(kCalls[index](nullptr, outputs), ZEM_E_NO_DEVICE) << index;
    EXPECT_EQ(outputs.byte, 0x5A);
    EXPECT_EQ(outputs.word, 0x5AA5);
    EXPECT_EQ(outputs.format.wWidth, kFormat.wWidth);
  }
  EXPECT_EQ(system().comInitializations, 0);
}

TEST_F(StreamUnitTest, CameraWithoutTopology) {
  handle();
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  for (std::size_t index = 0; index < kCalls.size(); ++index) {
    Outputs outputs;
    EXPECT_EQ(kCalls[index](handle(), outputs), zem::testing::RecordingGate::kRefusal) << index;
  }
  EXPECT_EQ(TakeWire(), Lines());
}

using StreamUnitAbsenceTest = zem::testing::DeviceTest;

// The Skype unit's GUID differs in byte order only: it is not taken for the stream unit.
TEST_F(StreamUnitAbsenceTest, AbsentUnitIsAskedAtTheNodeCountAndItsFailureReturned) {
  AddUnit(zem::SkypeXu);
  for (std::size_t index = 0; index < kCalls.size(); ++index) {
    Outputs outputs;
    EXPECT_EQ(kCalls[index](handle(), outputs), kUnknownControl) << index;
  }
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(kUnknownControl, 1, 3), SetLine(kUnknownControl, 13, 3),
                       SetLine(kUnknownControl, 13, 3), SetLine(kUnknownControl, 1, 3)}));
}

TEST_F(StreamUnitAbsenceTest, GuidIsTheSkypeUnitsWithItsFirstFieldsReversed) {
  const auto* const orva = reinterpret_cast<const std::uint8_t*>(&zem::OrvaXu);
  EXPECT_EQ(std::vector<std::uint8_t>(orva, orva + 16),
            (std::vector<std::uint8_t>{0xB4, 0x21, 0x53, 0xBD, 0x35, 0xD6, 0x45, 0xCA, 0xB2, 0x03,
                                       0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC}));
}

}  // namespace
