// H.264 formats, the stream unit and multicast through the DLL, on simulated cameras.
#include <cstring>
#include <string>
#include <vector>

#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::DebuggerCapture;
using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;
using Texts = std::vector<std::wstring>;

// Units come in this order behind two plain nodes: vendor, H.264, Skype, ORVA.
constexpr const char* kAllUnits =
    R"({"cameras": [{"h264Unit": true, "skypeUnit": true, "orvaUnit": true}]})";

TEST(EncodingTest, DefaultListIsACopyThatTheDllFrees) {
  const SimulatorGuard simulator;
  void* list = nullptr;
  {
    const OpenedCamera camera;
    EXPECT_EQ(ZEMAPI_GetH264FrameList(camera, &list), 808);
  }
  H264FrameList head = {};
  std::memcpy(&head, list, sizeof(head));
  EXPECT_EQ(head.wTotalLength, 808);
  EXPECT_EQ(head.wCount, 25);
  const auto* const formats =
      reinterpret_cast<const H264FrameInfo*>(static_cast<const H264FrameList*>(list) + 1);
  EXPECT_EQ(formats[13].wHeight, 244);
  EXPECT_EQ(formats[24].bListMark, 1);
  ZEMAPI_ReleaseH264FrameList(list);
}

TEST(EncodingTest, ListOfTheCamera) {
  const SimulatorGuard simulator(R"({"cameras": [{"h264Formats": [
      {"index": 3, "width": 640, "height": 480}, {"type": 0}, {"type": 2, "index": 9}]}]})");
  const OpenedCamera camera;
  void* list = nullptr;
  ASSERT_EQ(ZEMAPI_GetH264FrameList(camera, &list), 102);
  const auto* const formats =
      reinterpret_cast<const H264FrameInfo*>(static_cast<const H264FrameList*>(list) + 1);
  EXPECT_EQ(static_cast<const H264FrameList*>(list)->wCount, 2);
  EXPECT_EQ(formats[0].wFrameIndex, 3);
  EXPECT_EQ(formats[0].bListMark, 1);
  EXPECT_EQ(formats[1].wFrameIndex, 9);
  EXPECT_EQ(formats[1].bListMark, 0);
  ZEMAPI_ReleaseH264FrameList(list);
}

TEST(EncodingTest, StartsInEachDialect) {
  const SimulatorGuard simulator(kAllUnits);
  const OpenedCamera camera;
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(camera, 0), 0);
  EXPECT_EQ(debugger.Take(), (Texts{L"[EXT_Set]Node ID = 2, hr = 0, Len:8\r\n",
                                    L"[EXT_Set]Node ID = 3, hr = 0, Len:48\r\n",
                                    L"[EXT_Set]Node ID = 3, hr = 0, Len:48\r\n",
                                    L"[EXT_Set]Node ID = 3, hr = 0, Len:48\r\n",
                                    L"[EXT_Set]Node ID = 3, hr = 0, Len:48\r\n"}));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(camera, 23), 0);
  EXPECT_EQ(debugger.Take(), (Texts{L"[EXT_Set]Node ID = 4, hr = 0, Len:1\r\n",
                                    L"[EXT_Set]Node ID = 4, hr = 0, Len:1\r\n"}));
  EXPECT_EQ(ZEMAPI_SetH264Mode(camera, 0, 0), 1);
  EXPECT_EQ(debugger.Take(), (Texts{L"[EXT_Set]Node ID = 4, hr = 0, Len:1\r\n"}));
}

TEST(EncodingTest, NewerSkypeUnitMakesStartsGoThroughTheVendorUnit) {
  const SimulatorGuard simulator(R"({"cameras": [{"skypeUnit": true, "skypeVersion": 20}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMAPI_SetH264Mode(camera, 640, 480), 1);
  EXPECT_EQ(debugger.Take(), (Texts{L"[EXT_Set]Node ID = 2, hr = 0, Len:8\r\n",
                                    L"[EXT_Set]Node ID = 2, hr = 0, Len:8\r\n"}));
}

TEST(EncodingTest, EncoderSettings) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_SetFps(camera, 30), 0);
  EXPECT_EQ(ZEMAPI_SetBitRate(camera, 2500), 0);
  EXPECT_EQ(ZEMAPI_ForceIFrame(camera), 0);
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMAPI_SetPframeCount(camera, 0xFFFFFFFF), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(debugger.Take(), Texts{L"Set POC=-1\r\n"});
}

TEST(EncodingTest, PayloadFormats) {
  unsigned short width = 0;
  unsigned short height = 0;
  GUID subtype = {};
  EXPECT_EQ(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 2, &width, &height, &subtype), 0);
  EXPECT_EQ(width, 1280);
  EXPECT_EQ(height, 720);
  EXPECT_EQ(subtype.Data1, 0x47504A4DU);
  EXPECT_EQ(ZEMAPI_GetH264_UVC_PayloadFormat(nullptr, 3, &width, &height, &subtype), 1);
  EXPECT_EQ(width, 0);
}

TEST(EncodingTest, StreamFormatsAreKeptByTheStreamUnit) {
  const SimulatorGuard simulator(kAllUnits);
  const OpenedCamera camera;
  unsigned char byte = 0;
  unsigned short day = 0;
  EXPECT_EQ(ORVAAPI_GetVersion(camera, &byte), 0);
  EXPECT_EQ(byte, 0x10);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(camera, &day), 0);
  EXPECT_EQ(day, 0x0C1F);
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(camera, &byte), 0);
  EXPECT_EQ(byte, 1);
  EXPECT_EQ(ORVAAPI_SetStreamID(camera, 2), 0);
  OrvaStreamFormat written = {3, 0x1234, 0x5678, 0x9ABCDEF0, 0x13579BDF};
  OrvaStreamFormat probed = {};
  OrvaStreamFormat committed = {};
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, &written, 0), 0);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, &probed, 1), 0);
  EXPECT_EQ(probed.bStreamFormat, 3);
  EXPECT_EQ(probed.wWidth, 0x1234);
  EXPECT_EQ(probed.wHeight, 0x5678);
  EXPECT_EQ(probed.dwFrameInterval, 0x9ABCDEF0U);
  EXPECT_EQ(probed.dwBitRate, 0x13579BDFU);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, nullptr, 2), 0);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, &committed, 3), 0);
  EXPECT_EQ(committed.wWidth, 0);
  EXPECT_EQ(ORVAAPI_ToggleLayerControl(camera, 1), 0);
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, &written, 4), 0);
}

TEST(EncodingTest, NullEndpointSettingIsThePlatformsToRefuse) {
  const SimulatorGuard simulator(kAllUnits);
  const OpenedCamera camera;
  EXPECT_EQ(ORVAAPI_GetEndpointSetting(camera, nullptr), static_cast<ZemResult>(0x800703E6));
}

TEST(EncodingTest, AbsentStreamUnit) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  unsigned char version = 0;
  EXPECT_EQ(ORVAAPI_GetVersion(camera, &version), static_cast<ZemResult>(0x80070490));
  EXPECT_EQ(ORVAAPI_SetStreamID(camera, 1), static_cast<ZemResult>(0x80070490));
}

TEST(EncodingTest, Multicast) {
  const SimulatorGuard simulator(R"({"cameras": [{"faults": ["refuse@4"]}]})");
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_MulticastStreamID(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_MulticastCommit(camera, 1, 1280, 720, 0x1F, 0x7FF), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_MulticastCommit(camera, 1, 1280, 720, 0x1F, 0x7FF), 0);
}

}  // namespace
