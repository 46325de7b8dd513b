// Frame rate, bit rate, key frame, P-frame count; the table of payload formats.
#include <array>

#include "tests/support/device_test.h"

namespace {

using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;

using EncoderSettingsTest = zem::testing::DeviceTest;

TEST_F(EncoderSettingsTest, FrameRate) {
  EXPECT_EQ(ZEMAPI_SetFps(handle(), 0x1234), 0);
  EXPECT_EQ(ZEMAPI_SetFps(handle(), 30), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 02 34 12 00 00 00 00 00", "get vendor 2 [8]",
                               "set vendor 1: 02 1e 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(EncoderSettingsTest, BitRate) {
  EXPECT_EQ(ZEMAPI_SetBitRate(handle(), 0xABCD), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 08 ff cd ab 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(EncoderSettingsTest, KeyFrame) {
  EXPECT_EQ(ZEMAPI_ForceIFrame(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 04 00 00 00 00 00 00 00", "get vendor 2 [8]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(EncoderSettingsTest, PframeCountIsReportedAndNotSent) {
  EXPECT_EQ(ZEMAPI_SetPframeCount(handle(), 7), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_SetPframeCount(handle(), 0x7FFFFFFF), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_SetPframeCount(handle(), 0xFFFFFFFF), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"Set POC=7\r\n", L"Set POC=2147483647\r\n", L"Set POC=-1\r\n"}));
}

TEST_F(EncoderSettingsTest, PframeCountWithoutAHandleReportsNothing) {
  EXPECT_EQ(ZEMAPI_SetPframeCount(nullptr, 7), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

struct PayloadFormat {
  unsigned short width = 0xEEEE;
  unsigned short height = 0xEEEE;
  GUID subtype = {0xEEEEEEEE, 0xEEEE, 0xEEEE, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}};

  ZemResult Get(unsigned short index, void* handle = nullptr) {
    return ZEMAPI_GetH264_UVC_PayloadFormat(handle, index, &width, &height, &subtype);
  }
};

constexpr GUID kYuy2 = {
    0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr GUID kMjpg = {
    0x47504A4D, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

TEST(PayloadFormatTest, EachRow) {
  PayloadFormat format;
  EXPECT_EQ(format.Get(0), 0);
  EXPECT_EQ(format.width, 640);
  EXPECT_EQ(format.height, 480);
  EXPECT_TRUE(format.subtype == kYuy2);
  EXPECT_EQ(format.Get(1), 0);
  EXPECT_EQ(format.width, 640);
  EXPECT_EQ(format.height, 480);
  EXPECT_TRUE(format.subtype == kMjpg);
  EXPECT_EQ(format.Get(2), 0);
  EXPECT_EQ(format.width, 1280);
  EXPECT_EQ(format.height, 720);
  EXPECT_TRUE(format.subtype == kMjpg);
}

TEST(PayloadFormatTest, BehindTheLastIsOneAndZeros) {
  constexpr unsigned short kIndexes[] = {3, 4, 0x100, 0xFFFF};
  for (const unsigned short index : kIndexes) {
    PayloadFormat format;
    EXPECT_EQ(format.Get(index), 1);
    EXPECT_EQ(format.width, 0);
    EXPECT_EQ(format.height, 0);
    EXPECT_TRUE(format.subtype == GUID{});
  }
}

TEST(PayloadFormatTest, NullOutputsAreRefusedAndTheOthersUntouched) {
  PayloadFormat format;
  EXPECT_EQ(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 0, nullptr, &format.height, &format.subtype),
            ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 0, &format.width, nullptr, &format.subtype),
            ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 0, &format.width, &format.height, nullptr),
            ZEM_E_REFUSED);
  EXPECT_EQ(format.width, 0xEEEE);
  EXPECT_EQ(format.height, 0xEEEE);
  EXPECT_TRUE(format.subtype == PayloadFormat().subtype);
}

TEST_F(EncoderSettingsTest, PayloadFormatsDoNotUseTheDevice) {
  PayloadFormat format;
  EXPECT_EQ(format.Get(2, handle()), 0);
  EXPECT_EQ(format.width, 1280);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
