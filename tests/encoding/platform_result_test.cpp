// Results that a camera's driver rarely gives: positive ones, which are no failures and are passed
// on where the platform's result is, and failures of reads that hand out bytes all the same.
#include <array>
#include <string>
#include <utility>

#include "encoding/h264_frame_list.h"
#include "tests/encoding/log_test.h"
#include "tests/support/h264_list_bytes.h"

namespace {

using zem::testing::Header;
using zem::testing::HexText;
using zem::testing::Lines;
using zem::testing::ListBytes;
using zem::testing::ListEntry;
using zem::testing::ListOf;
using zem::testing::ScriptedUnit;
using zem::testing::ServeList;

// A camera with each unit of the encoding families.
class EncodingResultTest : public zem::testing::LogTest {
 protected:
  // The next transfers end with 7, whatever they come to. There are at most ten in a test.
  void MakeTransfersPositive() {
    for (std::size_t n = 1; n <= 10; ++n) {
      gate.EndTransfer(n, 7);
    }
  }

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
    static_cast<zem::DeviceHandle*>(handle())->frameList = std::move(list);
  }

  // What the encoding-unit family takes.
  void* device() { return static_cast<zem::DeviceHandle*>(handle())->filter; }

  ScriptedUnit& h264 = AddUnit(zem::H264Xu);
  ScriptedUnit& skype = AddUnit(zem::SkypeXu);
  ScriptedUnit& orva = AddUnit(zem::OrvaXu);
  ScriptedUnit& encoding = AddUnit(zem::EncodingUnitXu);
  ScriptedUnit& probe = AddUnit(zem::StreamProbeXu);
};

// ---- Positive results ----

TEST_F(EncodingResultTest, PositiveResultsOfTheStreamUnitArePassedOn) {
  MakeTransfersPositive();
  unsigned char byte = 0;
  unsigned short word = 0;
  OrvaStreamFormat format = {};
  EXPECT_EQ(ORVAAPI_GetVersion(handle(), &byte), 7);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(handle(), &word), 7);
  EXPECT_EQ(ORVAAPI_SetStreamID(handle(), 1), 7);
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(handle(), &byte), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 0), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 1), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 2), 7);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, 3), 7);
  EXPECT_EQ(ORVAAPI_ToggleLayerControl(handle(), 1), 7);
  EXPECT_EQ(TakeWire().size(), 9U);
}

TEST_F(EncodingResultTest, PositiveResultsOfMulticast) {
  MakeTransfersPositive();
  EXPECT_EQ(ZEMAPI_MulticastStreamID(handle(), 1), 7);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(handle(), 1), 7);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 1, 2, 3, 4, 5), 0) << "the status alone counts";
  EXPECT_EQ(TakeWire(),
            (Lines{"set vendor 4: 23 01 00 00 00 00 00 00", "set vendor 4: 24 01 00 00 00 00 00 00",
                   "set vendor 4: 25 01 02 00 03 00 a4 00", "get vendor 5 [8]"}));
}

TEST_F(EncodingResultTest, PositiveResultsOfEncoderSettings) {
  MakeTransfersPositive();
  EXPECT_EQ(ZEMAPI_SetFps(handle(), 30), 0);
  EXPECT_EQ(ZEMAPI_SetBitRate(handle(), 30), 0);
  EXPECT_EQ(ZEMAPI_ForceIFrame(handle()), 0);
  EXPECT_EQ(TakeWire().size(), 6U) << "each reads its reply";
}

TEST_F(EncodingResultTest, PositiveResultsOfTheEncodingUnitArePassedOnAndLogged) {
  MakeTransfersPositive();
  std::array<std::uint8_t, 51> block = {};
  EXPECT_EQ(WREN_EuSet(device(), 9, block.data(), 1), 7);
  EXPECT_EQ(WREN_EuGet(device(), 9, block.data(), 1), 7);
  EXPECT_EQ(TakeLog(), Header("Set", "00000007") + Header("Get", "00000007"));
  EXPECT_EQ(WREN_ProbeSet(device(), block.data()), 7);
  EXPECT_EQ(WREN_ProbeGet(device(), block.data()), 7);
  EXPECT_EQ(WREN_CommitSet(device(), block.data()), 7);
  EXPECT_EQ(WREN_CommitGet(device(), block.data()), 7);
  EXPECT_EQ(TakeWire().size(), 6U);
}

TEST_F(EncodingResultTest, PositiveResultsStillGiveTheCamerasList) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 640, 480), ListEntry(1, 5, 320, 240)}));
  MakeTransfersPositive();
  void* list = nullptr;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), 70);
  EXPECT_EQ(static_cast<const H264FrameList*>(list)->wCount, 2);
  ZEMAPI_ReleaseH264FrameList(list);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 0a 01 00 00 00 00 00 00", "get vendor 5 [8]",
                               "get vendor 11 [32]", "get vendor 11 [32]"}));
}

const char* const kGetVersion = "get skype 1 [1]";
const char* const kVendorCode3 = "set vendor 4: 0b 03 00 00 00 00 00 00";
const char* const kVendorSwitchOn = "set vendor 4: 0c 02 00 00 00 00 00 00";

TEST_F(EncodingResultTest, PositiveResultsOfAStartOfType0) {
  PutFormat(0);
  MakeTransfersPositive();
  skype.Answer(1, {19});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set skype 1: 03", "set skype 15: 02"}));
  skype.Answer(1, {20});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn}));
}

TEST_F(EncodingResultTest, PositiveResultsOfAStartOfType1) {
  PutFormat(1);
  MakeTransfersPositive();
  skype.Answer(1, {19});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set skype 15: 02", "set skype 1: 03"}));
  skype.Answer(1, {20});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorSwitchOn, kVendorCode3}));
}

TEST_F(EncodingResultTest, PositiveResultsOfAStartOfType2) {
  PutFormat(2);
  MakeTransfersPositive();
  h264.AlwaysAnswer(1, ListBytes(48, 0x77));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 6U);
  for (const std::size_t round : {0U, 3U}) {
    EXPECT_EQ(wire[round + 1], "get h264 1 [48]");
    EXPECT_EQ(wire[round + 2], "set h264 2: " + HexText(ListBytes(48, 0x77)));
  }
}

TEST_F(EncodingResultTest, PositiveResultsOfMode) {
  MakeTransfersPositive();
  skype.AlwaysAnswer(1, {19});
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), 1);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 0), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, "set skype 1: 03", "set skype 15: 02", kGetVersion,
                               "set skype 15: 01"}));
  skype.AlwaysAnswer(1, {20});
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), 1);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 0, 480), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn, kGetVersion,
                               "set vendor 4: 0c 01 00 00 00 00 00 00"}));
}

// ---- Failures of reads that hand out bytes ----

TEST_F(EncodingResultTest, OfferOfAFailedReadIsCommitted) {
  PutFormat(2);
  gate.EndTransfer(2, E_FAIL);
  gate.EndTransfer(5, E_FAIL);
  h264.Answer(1, ListBytes(48, 0x11));
  h264.Answer(1, ListBytes(48, 0x22));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 6U);
  EXPECT_EQ(wire[2], "set h264 2: " + HexText(ListBytes(48, 0x11)));
  EXPECT_EQ(wire[5], "set h264 2: " + HexText(ListBytes(48, 0x22)));
}

TEST_F(EncodingResultTest, LaterPieceOfAFailedReadIsPartOfTheList) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 640, 480), ListEntry(1, 5, 0x1234, 0x5678)}));
  gate.EndTransfer(4, E_FAIL);
  void* list = nullptr;
  ASSERT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), 70);
  const auto formats = zem::RecordsOf(*static_cast<const H264FrameList*>(list));
  ASSERT_EQ(formats.size(), 2U);
  EXPECT_EQ(formats[1].wHeight, 0x5678);
  EXPECT_EQ(formats[1].wMinFps, 5);
  ZEMAPI_ReleaseH264FrameList(list);
}

TEST_F(EncodingResultTest, FirstPieceOfAFailedReadIsNot) {
  ServeList(vendor(), ListOf({ListEntry(1, 4, 640, 480)}));
  gate.EndTransfer(3, E_FAIL);
  void* list = nullptr;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(handle(), &list), 808);
  ZEMAPI_ReleaseH264FrameList(list);
  EXPECT_EQ(TakeWire().size(), 3U);
}

TEST_F(EncodingResultTest, VersionOfAFailedReadIsNone) {
  skype.AlwaysAnswer(1, {19});
  gate.EndTransfer(1, E_FAIL);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), 1);
  EXPECT_EQ(TakeWire(), (Lines{kGetVersion, kVendorCode3, kVendorSwitchOn}));
}

TEST_F(EncodingResultTest, FormatOfAFailedReadIsHandedOut) {
  for (const auto& [operation, selector] : {std::pair<unsigned, std::uint16_t>{1, 8}, {3, 9}}) {
    orva.Answer(selector, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
    gate.EndTransfer(1, E_FAIL);
    OrvaStreamFormat format = {};
    EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(handle(), &format, operation), E_FAIL);
    EXPECT_EQ(format.bStreamFormat, 1);
    EXPECT_EQ(format.wWidth, 0x0302);
    EXPECT_EQ(format.wHeight, 0x0504);
    EXPECT_EQ(format.dwFrameInterval, 0x09080706U);
    EXPECT_EQ(format.dwBitRate, 0x0D0C0B0AU);
  }
}

TEST_F(EncodingResultTest, StatusOfAFailedReadCountsForTheCommit) {
  gate.EndTransfer(2, E_FAIL);
  gate.EndTransfer(4, E_FAIL);
  vendor().Answer(5, {1, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 1, 2, 3, 4, 5), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 1, 2, 3, 4, 5), 0);
}

TEST_F(EncodingResultTest, BytesOfAFailedReadAreLogged) {
  encoding.Answer(3, {1, 2, 3, 4, 5, 6, 7, 8});
  gate.EndTransfer(1, E_FAIL);
  std::array<std::uint8_t, 28> rate = {};
  EXPECT_EQ(WREN_EuGet(device(), 3, rate.data(), 28), ZEM_E_NO_DEVICE);
  const std::string begin = Header("Get", "80004005") +
                            "EU Rate Control \r\n"
                            "\t\tdwSliceMode=0x04030201\r\n"
                            "\t\tdwAverageBitRate=0x08070605\r\n"
                            "\t\tdwPeakBitRate=0x00000000\r\n";
  EXPECT_EQ(TakeLog().substr(0, begin.size()), begin);
}

}  // namespace
