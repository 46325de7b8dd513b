// No command allocates heap memory between the entry of its export and its return.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "device/extension_units.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/allocation_count.h"
#include "tests/support/free_camera.h"

namespace {

using zem::testing::AllocationCount;

TEST(AllocationTest, CounterCounts) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "needs the address sanitizer";
  }
  const std::uint64_t before = AllocationCount();
  const auto memory = std::make_unique<std::vector<int>>(10);
  EXPECT_EQ(AllocationCount() - before, 2U);
}

TEST(AllocationTest, CommandsAllocateNothing) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "needs the address sanitizer";
  }
  zem::platform::simulated::Reset();
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  zem::testing::FreeCamera camera;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  unsigned char bytes[16] = {};
  char chars[8] = {};
  char date[12] = {};
  unsigned char serial[32] = {};
  unsigned values[9] = {};
  unsigned short word = 0;
  ZemULong moved = 0;
  OrvaStreamFormat format = {};
  std::vector<std::uint8_t> memory(256);
  std::uint32_t count = 0;
  const std::vector<std::function<ZemResult()>> commands = {
      [&] { return ZEMAPI_UvcExtSet(handle, &zem::VendorXu, 1, bytes, 8, &moved); },
      [&] { return ZEMAPI_UvcExtGet(handle, &zem::VendorXu, 1, bytes, 8, &moved); },
      [&] { return ZEMAPI_ZemExtSet(handle, 1, bytes, 8, &moved); },
      [&] { return ZEMAPI_ZemExtGet(handle, 1, bytes, 8, &moved); },
      [&] { return ZEMAPI_UvcCheckXuGuid(handle, &zem::VendorXu); },
      [&] { return ZEMAPI_SetRegister(handle, 1, 2); },
      [&] { return ZEMAPI_GetRegister(handle, 1, &word); },
      [&] { return ZEMAPI_SetSensorRegister(handle, 1, 2); },
      [&] { return ZEMAPI_GetSensorRegister(handle, 1, bytes); },
      [&] { return ZEMAPI_SetSensorRegisterW(handle, 1, 2); },
      [&] { return ZEMAPI_GetSensorRegisterW(handle, 1, &word); },
      [&] { return ZEMAPI_SetVCMRegister(handle, 1, 2); },
      [&] { return ZEMAPI_GetVCMRegister(handle, 1, &word); },
      [&] { return ZEMAPI_SetLensPos(handle, 1); },
      [&] { return ZEMAPI_GetFWVersion(handle, bytes); },
      [&] { return ZEMAPI_GetFWVersion(handle, chars); },
      [&] { return ZEMAPI_GetCheckSumResult(handle); },
      [&] { return ZEMAPI_ReadCodecReg(handle, 1, bytes); },
      [&] { return ZEMAPI_WriteCodecReg(handle, 1, 2); },
      [&] { return ZEMAPI_IspCommand(handle, bytes, bytes); },
      [&] { return ZEMAPI_VcpCommand(handle, bytes, bytes); },
      [&] { return ZEMAPI_IspCommandEx(handle, bytes, bytes); },
      [&] { return ZEMAPI_VcpCommandEx(handle, bytes, bytes); },
      [&] { return ZEMAPI_GetDeviceInfo(handle, bytes); },
      [&] { return ZEMAPI_GetFWBuildDate(handle, date); },
      [&] { return ZEMAPI_EnableAF(handle, 1); },
      [&] { return ZEMAPI_EnableAE(handle, 1); },
      [&] { return ZEMAPI_GetAFACC(handle, values); },
      [&] { return ZEMAPI_SetVideoRecMode(handle, 1); },
      [&] { return ZEMAPI_SetAWBGain(handle, 1, 2, 3); },
      [&] { return ZEMAPI_GetAWBGain(handle, &word, &word, &word); },
      [&] { return ZEMAPI_SetShadding(handle, 1); },
      [&] { return ZEMAPI_SetMiscSetting(handle, bytes); },
      [&] { return ZEMAPI_GetMiscSetting(handle, bytes); },
      [&] { return ZEMAPI_SetMjpgQuality(handle); },
      [&] { return ZEMAPI_SetImageEffect(handle, 1); },
      [&] { return ZEMAPI_SetMaxQP(handle, 1); },
      [&] { return ZEMAPI_SetMinQP(handle, 1); },
      [&] { return ZEMAPI_GetSensorSN(handle, serial); },
      [&] { return ZEMAPI_GetSkypeXUVersion(handle, bytes); },
      [&] { return ZEMAPI_SetFps(handle, 30); },
      [&] { return ZEMAPI_SetBitRate(handle, 1000); },
      [&] { return ZEMAPI_ForceIFrame(handle); },
      [&] { return ZEMAPI_SetH264Mode(handle, 640, 480) - 1; },
      [&] { return ORVAAPI_GetVersion(handle, bytes); },
      [&] { return ORVAAPI_FirmwareBuildDay(handle, &word); },
      [&] { return ORVAAPI_SetStreamID(handle, 1); },
      [&] { return ORVAAPI_GetEndpointSetting(handle, bytes); },
      [&] { return ORVAAPI_StreamFormatProbeCommit(handle, &format, 0); },
      [&] { return ORVAAPI_StreamFormatProbeCommit(handle, &format, 3); },
      [&] { return ORVAAPI_ToggleLayerControl(handle, 1); },
      [&] { return ZEMAPI_MulticastStreamID(handle, 1); },
      [&] { return ZEMAPI_MulticasToggleLayer(handle, 1); },
      [&] { return ZEMAPI_MulticastCommit(handle, 1, 2, 3, 4, 5); },
      [&] { return ZEMAPI_WriteNVMEM(handle, 0, memory.data(), 256, &count); },
      [&] { return ZEMAPI_ReadNVMEM(handle, 0, memory.data(), 256, &count); },
      [&] { return ZEMAPI_TIRELLA_WriteNVMEM(handle, memory.data(), 256, &count); },
      [&] { return ZEMAPI_TIRELLA_ReadNVMEM(handle, memory.data(), 256, &count); },
      [&] { return ZEMAPI_TIRELLA_LedCtrl(handle, 1); },
  };
  for (std::size_t index = 0; index < commands.size(); ++index) {
    const std::uint64_t before = AllocationCount();
    const ZemResult result = commands[index]();
    const std::uint64_t made = AllocationCount() - before;
    EXPECT_EQ(result, 0) << index;
    EXPECT_EQ(made, 0U) << index;
  }
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(camera.references, 1);
}

}  // namespace
