// Bulk data and firmware update of the DLL, against the simulated camera's data channel.
#include <cstdint>
#include <string>
#include <vector>

#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::DebuggerCapture;
using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::wstring>;
using Values = std::vector<std::uint32_t>;

// Where the simulated camera keeps the data area, and by which bytes it is announced.
constexpr std::uint32_t kDataAddress = 0xC0000;
constexpr std::uint8_t kDataKind = 0x02;

Bytes CountingBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index + 1);
  }
  return bytes;
}

void Keep(std::uint32_t value, std::uint64_t user) {
  reinterpret_cast<Values*>(user)->push_back(value);
}
std::uint64_t UserOf(Values& values) { return reinterpret_cast<std::uint64_t>(&values); }

// The lines that the writes to controls do not give.
Lines OwnLines(DebuggerCapture& debugger) {
  Lines lines = debugger.Take();
  std::erase_if(lines, [](const std::wstring& line) { return line.starts_with(L"[EXT_Set]"); });
  return lines;
}

TEST(TransferTest, DataThatIsSentIsReadBack) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes sent = CountingBytes(96);
  Values values;
  EXPECT_EQ(ZEMAPI_SendData(camera, sent.data(), 80, Keep, UserOf(values), kDataKind, 0), 0);
  EXPECT_EQ(values, (Values{150, 50, 0}));
  Lines lines = OwnLines(debugger);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].starts_with(L" Size(80bytes)Time =")) << lines[0].size();
  EXPECT_TRUE(lines[0].ends_with(L"ms.\r\n"));

  values.clear();
  Bytes read(128);
  std::uint32_t length = 0;
  EXPECT_EQ(ZEMAPI_ReadFWData(camera, read.data(), 128, &length, Keep, UserOf(values)), 0);
  EXPECT_EQ(length, 80U);
  EXPECT_EQ(Bytes(read.begin(), read.begin() + 80), Bytes(sent.begin(), sent.begin() + 80));
  EXPECT_EQ(values, (Values{100, 60, 20}));
  EXPECT_EQ(ZEMAPI_ReadFWData(camera, read.data(), 79, &length, nullptr, 0),
            ZEM_E_BUFFER_TOO_SMALL);
}

TEST(TransferTest, FlashIsUpdatedAndReadBackAtHighSpeed) {
  const SimulatorGuard simulator(R"({"cameras": [{"burnPolls": 2}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes image = CountingBytes(1024);
  Values values;
  EXPECT_EQ(ZEMAPI_UpdateFlash(camera, image.data(), 1024, Keep, UserOf(values), kDataKind, 0), 0);
  EXPECT_EQ(values, (Values{50, 0}));
  EXPECT_EQ(OwnLines(debugger), Lines{L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n"});

  values.clear();
  Bytes read(1024);
  std::uint32_t size = 0;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(camera, kDataAddress, 1024, read.data(), &size, Keep,
                                        UserOf(values)),
            0);
  EXPECT_EQ(size, 1024U);
  EXPECT_EQ(read, image);
  EXPECT_EQ(values, (Values{0, 50}));
  const Lines lines = OwnLines(debugger);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], L"ZEMAPI_ReadPartialFlashData:Size(1024)\r\n");
  EXPECT_TRUE(lines[2].starts_with(L"ZEMAPI_ReadPartialFlashData readdata:Size(1024),Time ="));
}

TEST(TransferTest, FlashIsUpdatedAndReadBackAtLowSpeed) {
  const SimulatorGuard simulator(R"({"cameras": [{"burnPolls": 1, "highSpeed": false}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes image = CountingBytes(64);
  EXPECT_EQ(ZEMAPI_UpdateFlash(camera, image.data(), 64, nullptr, 0, kDataKind, 0), 0);
  EXPECT_EQ(OwnLines(debugger), Lines{L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n"});
  Bytes read(64);
  std::uint32_t size = 0;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(camera, kDataAddress, 64, read.data(), &size, nullptr, 0),
            0);
  EXPECT_EQ(read, image);
}

TEST(TransferTest, FirmwareOf516xAndItsBurnError) {
  const Bytes image = CountingBytes(600);
  {
    const SimulatorGuard simulator(R"({"cameras": [{"chip": "516x", "burnPolls": 1}]})");
    const OpenedCamera camera;
    EXPECT_EQ(ZEMAPI_UpdateFW_516x(camera, image.data(), 600, nullptr, 0, 0), 0);
  }
  const SimulatorGuard simulator(R"({"cameras": [{"chip": "516x", "burnError": true}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(camera, image.data(), 600, nullptr, 0, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(OwnLines(debugger).back(), L"[ERR] Firmware burning error.\r\n");
}

TEST(TransferTest, CalibrationDataBurnError) {
  const SimulatorGuard simulator(R"({"cameras": [{"burnError": true}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes data = CountingBytes(32);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(camera, data.data(), 32, nullptr, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(OwnLines(debugger).back(), L"[ERR] Calibration data burning error.\r\n");
}

TEST(TransferTest, FailedChunkIsRetriedInRealTime) {
  // Announce, chunk, five failures and the last retry.
  const SimulatorGuard simulator(R"({"cameras": [{"faults": ["fail@2+5"]}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes data = CountingBytes(32);
  EXPECT_EQ(ZEMAPI_SendData(camera, data.data(), 32, nullptr, 0, kDataKind, 0), 0);
  const Lines lines = OwnLines(debugger);
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[0], L"SendData: retry (0).\r\n");
  EXPECT_EQ(lines[4], L"SendData: retry (4).\r\n");
  const std::wstring time = L" Size(32bytes)Time =";
  ASSERT_TRUE(lines[5].starts_with(time));
  EXPECT_GE(std::stoi(lines[5].substr(time.size())), 5 * 5 - 5) << "but for the clock's steps";
}

TEST(TransferTest, ChunkThatKeepsFailingGivesTheOddLine) {
  const SimulatorGuard simulator(R"({"cameras": [{"faults": ["fail@2+6"]}]})");
  const OpenedCamera camera;
  DebuggerCapture debugger;
  const Bytes data = CountingBytes(32);
  EXPECT_EQ(ZEMAPI_SendData(camera, data.data(), 32, nullptr, 0, kDataKind, 0), 0);
  const Lines lines = OwnLines(debugger);
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_TRUE(lines[5].starts_with(L"[ERR]Len = "));
  EXPECT_TRUE(lines[5].ends_with(L", hr = 20\r\n"));
}

}  // namespace
