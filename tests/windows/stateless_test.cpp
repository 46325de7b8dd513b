// The calls without a handle, each access of which finds the camera through the system.
#include <array>
#include <cstdint>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::DebuggerCapture;
using zem::testing::SimulatorGuard;

using Bytes = std::vector<std::uint8_t>;

TEST(StatelessTest, NoCamera) {
  const SimulatorGuard simulator(R"({"cameras": []})");
  std::array<std::uint8_t, 16> bytes = {};
  std::uint32_t length = 0;
  EXPECT_EQ(ZEMUVCEXT_SetFps(30), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMUVCEXT_GetRegister(0, bytes.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMUVCEXT_GetChipInfo(bytes.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(bytes.data(), 16), ZEM_E_FAIL);
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(bytes.data(), 16, nullptr, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMUVCEXT_ReadFWData(bytes.data(), 16, &length, nullptr, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW(bytes.data(), 16), ZEM_E_NO_DEVICE);
}

TEST(StatelessTest, Commands) {
  const SimulatorGuard simulator;
  std::uint8_t value = 0;
  EXPECT_EQ(ZEMUVCEXT_SetRegister(0x1234, 0xAB), 0);
  EXPECT_EQ(ZEMUVCEXT_GetRegister(0x1234, &value), 0);
  EXPECT_EQ(value, 0xAB);
  std::uint16_t word = 0;
  EXPECT_EQ(ZEMUVCEXT_SetSensorRegisterW(0x10, 0x1234), 0);
  EXPECT_EQ(ZEMUVCEXT_GetSensorRegisterW(0x10, &word), 0);
  EXPECT_EQ(word, 0x1234);
  std::array<std::uint8_t, 6> version = {};
  EXPECT_EQ(ZEMUVCEXT_GetFWVersion(version.data()), 0);
  EXPECT_EQ(version, (std::array<std::uint8_t, 6>{1, 2, 3, 4, 5, 6}));
}

TEST(StatelessTest, WriteGivesOneLineAndARawCommandMayGoWithoutAReply) {
  const SimulatorGuard simulator;
  DebuggerCapture debugger;
  const std::array<std::uint8_t, 8> checkSum = {0x06};
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(checkSum.data(), nullptr), 0);
  EXPECT_EQ(debugger.Take(), std::vector<std::wstring>{L"[EXT_Set]Node ID = 2, hr = 0, Len:8\r\n"});
}

TEST(StatelessTest, ProcessorMemoryIsReadBack) {
  const SimulatorGuard simulator;
  Bytes data(20, 0x5A);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 20), 0);
  // Any command makes the simulated camera's window on its memory start over.
  std::array<std::uint8_t, 6> version = {};
  EXPECT_EQ(ZEMUVCEXT_GetFWVersion(version.data()), 0);
  Bytes read(20);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(read.data(), 20), 0);
  EXPECT_EQ(read, data);
}

TEST(StatelessTest, FirmwareIsUpdatedAndReadBack) {
  const SimulatorGuard simulator(
      R"({"cameras": [{"chip": "516x", "dataLength": 64, "burnPolls": 1}]})");
  Bytes image(128);
  for (std::size_t index = 0; index < image.size(); ++index) {
    image[index] = static_cast<std::uint8_t>(index);
  }
  std::vector<std::uint32_t> values;
  const auto keep = [](std::uint32_t value, std::uint64_t user) {
    reinterpret_cast<std::vector<std::uint32_t>*>(user)->push_back(value);
  };
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_with_progress(image.data(), 128, keep,
                                             reinterpret_cast<std::uint64_t>(&values)),
            0);
  EXPECT_EQ(values, (std::vector<std::uint32_t>{50, 0}));
  Bytes read(256);
  std::uint32_t length = 0;
  EXPECT_EQ(ZEMUVCEXT_ReadFWData(read.data(), 256, &length, nullptr, 0), 0);
  EXPECT_EQ(length, 128U);
  read.resize(128);
  EXPECT_EQ(read, image);
}

TEST(StatelessTest, BurnError) {
  const SimulatorGuard simulator(R"({"cameras": [{"chip": "516x", "burnError": true}]})");
  DebuggerCapture debugger;
  const Bytes image(64);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_with_progressEx(image.data(), 64, nullptr, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(debugger.Take().back(), L"[ERR] Firmware burning error\r\n");
}

}  // namespace
