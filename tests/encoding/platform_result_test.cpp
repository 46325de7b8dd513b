// Results that a camera's driver rarely gives: positive ones, which are no failures and are passed
// on where the platform's result is, and failures of reads that hand out bytes all the same.
#include <algorithm>
#include <deque>
#include <map>
#include <string>
#include <utility>

#include "encoding/h264_frame_list.h"
#include "tests/encoding/log_test.h"
#include "tests/support/bare_camera.h"
#include "tests/support/h264_list_bytes.h"

namespace {

using zem::testing::HexText;
using zem::testing::Lines;
using zem::testing::ListBytes;
using zem::testing::ListEntry;
using zem::testing::ListOf;
using zem::testing::ScriptedUnit;
using zem::testing::ServeList;

constexpr HRESULT kPositive = 7;

// Answers what the test wrote down for each selector, of whichever unit, and ends each transfer
// with the result that the test chose.
class OddCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length, ULONG* moved) override {
    const auto selector = static_cast<std::uint16_t>(request.Property.Id);
    auto* const bytes = static_cast<std::uint8_t*>(data);
    if (request.Property.Flags == 0x10000002) {
      wire.push_back("set " + std::to_string(selector) + ": " + HexText({bytes, bytes + length}));
    } else {
      wire.push_back("get " + std::to_string(selector) + " [" + std::to_string(length) + "]");
      ListBytes answer;
      answers.Get(selector, length, answer);
      std::copy(answer.begin(), answer.end(), bytes);
      *moved = static_cast<ULONG>(answer.size());
    }
    const auto single = results.find(wire.size());
    return single != results.end() ? single->second : result;
  }

  ScriptedUnit answers{GUID{}};
  HRESULT result = S_OK;
  std::map<std::size_t, HRESULT> results;  // of single transfers, counted from 1
  Lines wire;
};

class OddPlatformTest : public zem::testing::LogTest {
 protected:
  OddPlatformTest() { ZEMAPI_OpenDeviceBySourceFilter(&camera_, &opened_); }
  ~OddPlatformTest() override { ZEMAPI_CloseDevice(&opened_); }

  // What the encoding-unit family takes.
  void* device() { return static_cast<IBaseFilter*>(&camera_); }

  OddCamera camera_;
  void* opened_ = nullptr;
};

// ---- Positive results ----

TEST_F(OddPlatformTest, PositiveResultsOfTheStreamUnitArePassedOn) {
  camera_.result = kPositive;
  unsigned char byte = 0;
  unsigned short word = 0;
  OrvaStreamFormat format = {};
  EXPECT_EQ(ORVAAPI_GetVersion(opened_, &byte), 7);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(opened_, &word), 7);
  EXPECT_EQ(ORVAAPI_SetStreamID(opened_, 1), 7);
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(opened_, &byte), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(opened_, &format, 0), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(opened_, &format, 1), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(opened_, &format, 2), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(opened_, &format, 3), 7);
  EXPECT_EQ(ORVAAPI_ToggleLayerControl(opened_, 1), 7);
  EXPECT_EQ(camera_.wire.size(), 9U);
}

TEST_F(OddPlatformTest, PositiveResultsOfMulticast) {
  camera_.result = kPositive;
  EXPECT_EQ(ZEMAPI_MulticastStreamID(opened_, 1), 7);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(opened_, 1), 7);
  EXPECT_EQ(ZEMAPI_MulticastCommit(opened_, 1, 2, 3, 4, 5), 0) << "the status alone counts";
  EXPECT_EQ(camera_.wire, (Lines{"set 4: 23 01 00 00 00 00 00 00", "set 4: 24 01 00 00 00 00 00 00",
                                 "set 4: 25 01 02 00 03 00 a4 00", "get 5 [8]"}));
}

TEST_F(OddPlatformTest, PositiveResultsOfEncoderSettings) {
  camera_.result = kPositive;
  EXPECT_EQ(ZEMAPI_SetFps(opened_, 30), 0);
  EXPECT_EQ(ZEMAPI_SetBitRate(opened_, 30), 0);
  EXPECT_EQ(ZEMAPI_ForceIFrame(opened_), 0);
  EXPECT_EQ(camera_.wire.size(), 6U) << "each reads its reply";
}

TEST_F(OddPlatformTest, PositiveResultsOfTheEncodingUnitArePassedOnAndLogged) {
  camera_.result = kPositive;
  std::uint8_t block[51] = {};
  EXPECT_EQ(WREN_EuSet(device(), 9, block, 1), 7);
  EXPECT_EQ(WREN_EuGet(device(), 9, block, 1), 7);
  EXPECT_EQ(TakeLog(), zem::testing::Header("Set", "00000007") +
                           "2024/3/5 7:8:9 : Get : " + "HRESULT=0x00000007 :");
  EXPECT_EQ(WREN_ProbeSet(device(), block), 7);
  EXPECT_EQ(WREN_ProbeGet(device(), block), 7);
  EXPECT_EQ(WREN_CommitSet(device(), block), 7);
  EXPECT_EQ(WREN_CommitGet(device(), block), 7);
  EXPECT_EQ(camera_.wire.size(), 6U);
}

TEST_F(OddPlatformTest, PositiveResultsStillGiveTheCamerasList) {
  ServeList(camera_.answers, ListOf({ListEntry(1, 4, 640, 480), ListEntry(1, 5, 320, 240)}));
  camera_.result = kPositive;
  void* list = nullptr;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(opened_, &list), 70);
  EXPECT_EQ(static_cast<const H264FrameList*>(list)->wCount, 2);
  ZEMAPI_ReleaseH264FrameList(list);
  EXPECT_EQ(camera_.wire,
            (Lines{"set 4: 0a 01 00 00 00 00 00 00", "get 5 [8]", "get 11 [32]", "get 11 [32]"}));
}

// Starts send what they send where every result is 0, and come to the same.
class OddPlatformStartTest : public OddPlatformTest {
 protected:
  // Gives the handle a list of one format of this type, 640x480 and 320x240, with frame index 5.
  void PutFormat(std::uint16_t type) {
    zem::FrameListPtr list = zem::AllocateFrameList(36);
    list->wTotalLength = 36;
    H264FrameInfo format = {};
    format.wLength = 32;
    format.wType = type;
    format.wFrameIndex = 5;
    format.wWidth = 640;
    format.wHeight = 480;
    format.wSubWidth = 320;
    format.wSubHeight = 240;
    zem::AppendRecord(*list, format);
    static_cast<zem::DeviceHandle*>(opened_)->frameList = std::move(list);
    camera_.result = kPositive;
  }

  // The Skype unit's version from now on.
  void PutVersion(std::uint8_t version) { camera_.answers.AlwaysAnswer(1, {version}); }

  Lines TakeWire() { return std::exchange(camera_.wire, {}); }
};

const char* const kGetVersion = "get 1 [1]";
const char* const kVendorCode3 = "set 4: 0b 03 00 00 00 00 00 00";
const char* const kVendorSwitchOn = "set 4: 0c 02 00 00 00 00 00 00";

TEST_F(OddPlatformStartTest, Type0) {
  PutFormat(0);
  PutVersion(19);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set 1: 03", "set 15: 02"}));
  PutVersion(20);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn}));
}

TEST_F(OddPlatformStartTest, Type1) {
  PutFormat(1);
  PutVersion(19);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set 15: 02", "set 1: 03"}));
  PutVersion(20);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorSwitchOn, kVendorCode3}));
}

TEST_F(OddPlatformStartTest, Type2ReadsBackAndCommits) {
  PutFormat(2);
  camera_.answers.AlwaysAnswer(1, ListBytes(48, 0x77));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 6U);
  for (const std::size_t round : {0U, 3U}) {
    EXPECT_EQ(wire[round + 1], "get 1 [48]");
    EXPECT_EQ(wire[round + 2], "set 2: " + HexText(ListBytes(48, 0x77)));
  }
}

TEST_F(OddPlatformStartTest, OtherTypesSendNothing) {
  PutFormat(3);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(OddPlatformStartTest, ModeOnAndOff) {
  camera_.result = kPositive;
  PutVersion(19);
  EXPECT_EQ(ZEMAPI_SetH264Mode(opened_, 640, 480), 1);
  EXPECT_EQ(ZEMAPI_SetH264Mode(opened_, 640, 0), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set 1: 03", "set 15: 02", kGetVersion, "set 15: 01"}));
  PutVersion(20);
  EXPECT_EQ(ZEMAPI_SetH264Mode(opened_, 640, 480), 1);
  EXPECT_EQ(ZEMAPI_SetH264Mode(opened_, 0, 480), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn, kGetVersion,
                               "set 4: 0c 01 00 00 00 00 00 00"}));
}

// ---- Failures of reads that hand out bytes ----

TEST_F(OddPlatformStartTest, OfferOfAFailedReadIsCommitted) {
  PutFormat(2);
  camera_.result = S_OK;
  camera_.results = {{2, E_FAIL}, {5, E_FAIL}};
  camera_.answers.Answer(1, ListBytes(48, 0x11));
  camera_.answers.Answer(1, ListBytes(48, 0x22));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(opened_, 5), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 6U);
  EXPECT_EQ(wire[2], "set 2: " + HexText(ListBytes(48, 0x11)));
  EXPECT_EQ(wire[5], "set 2: " + HexText(ListBytes(48, 0x22)));
}

TEST_F(OddPlatformTest, LaterPieceOfAFailedReadIsPartOfTheList) {
  ServeList(camera_.answers, ListOf({ListEntry(1, 4, 640, 480), ListEntry(1, 5, 0x1234, 0x5678)}));
  camera_.results = {{4, E_FAIL}};
  void* list = nullptr;
  ASSERT_EQ(ZEMAPI_GetH264FrameList(opened_, &list), 70);
  ASSERT_EQ(static_cast<const H264FrameList*>(list)->wCount, 2);
  const auto formats = zem::RecordsOf(*static_cast<const H264FrameList*>(list));
  EXPECT_EQ(formats[1].wHeight, 0x5678);
  EXPECT_EQ(formats[1].wMinFps, 5);
  ZEMAPI_ReleaseH264FrameList(list);
}

TEST_F(OddPlatformTest, FirstPieceOfAFailedReadIsNot) {
  ServeList(camera_.answers, ListOf({ListEntry(1, 4, 640, 480)}));
  camera_.results = {{3, E_FAIL}};
  void* list = nullptr;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(opened_, &list), 808);
  ZEMAPI_ReleaseH264FrameList(list);
  EXPECT_EQ(camera_.wire.size(), 3U);
}

TEST_F(OddPlatformStartTest, VersionOfAFailedReadIsNone) {
  PutVersion(19);
  camera_.results = {{1, E_FAIL}};
  EXPECT_EQ(ZEMAPI_SetH264Mode(opened_, 640, 480), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn}));
}

TEST_F(OddPlatformTest, FormatOfAFailedReadIsHandedOut) {
  camera_.result = E_FAIL;
  for (const auto& [operation, selector] : {std::pair<unsigned, std::uint16_t>{1, 8}, {3, 9}}) {
    camera_.answers.Answer(selector, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
    OrvaStreamFormat format = {};
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(opened_, &format, operation), E_FAIL);
    EXPECT_EQ(format.bStreamFormat, 1);
    EXPECT_EQ(format.wWidth, 0x0302);
    EXPECT_EQ(format.wHeight, 0x0504);
    EXPECT_EQ(format.dwFrameInterval, 0x09080706U);
    EXPECT_EQ(format.dwBitRate, 0x0D0C0B0AU);
  }
}

TEST_F(OddPlatformTest, CommitsStatusOfAFailedReadCounts) {
  camera_.results = {{2, E_FAIL}, {4, E_FAIL}};
  camera_.answers.Answer(5, {1, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_MulticastCommit(opened_, 1, 2, 3, 4, 5), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_MulticastCommit(opened_, 1, 2, 3, 4, 5), 0);
}

TEST_F(OddPlatformTest, BytesOfAFailedReadAreLogged) {
  camera_.result = E_FAIL;
  std::uint8_t rate[28] = {};
  camera_.answers.Answer(3, {1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(WREN_EuGet(device(), 3, rate, 28), ZEM_E_NO_DEVICE);
  const std::string begin = zem::testing::Header("Get", "80004005") +
                            "EU Rate Control \r\n"
                            "\t\tdwSliceMode=0x04030201\r\n"
                            "\t\tdwAverageBitRate=0x08070605\r\n"
                            "\t\tdwPeakBitRate=0x00000000\r\n";
  EXPECT_EQ(TakeLog().substr(0, begin.size()), begin);
}

}  // namespace
