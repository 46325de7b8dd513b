// Memory, LED and table store of a simulated camera, through the DLL.
#include <array>
#include <numeric>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "tests/windows/support/debugger_capture.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::DebuggerCapture;
using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;
using Bytes = std::vector<std::uint8_t>;

TEST(TableTest, MemoryOfBothUnitsKeepsWhatIsWritten) {
  const SimulatorGuard simulator(R"({"cameras": [{"tirellaUnit": true}]})");
  const OpenedCamera camera;
  Bytes data(300);
  std::iota(data.begin(), data.end(), std::uint8_t{1});
  Bytes read(300);
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_WriteNVMEM(camera, 0x1000, data.data(), 300, &count), 0);
  EXPECT_EQ(count, 300U);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(camera, 0x1000, read.data(), 300, &count), 0);
  EXPECT_EQ(count, 300U);
  EXPECT_EQ(read, data);
  data.resize(256);
  read.assign(256, 0);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(camera, data.data(), 256, &count), 0);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(camera, read.data(), 256, &count), 0);
  EXPECT_EQ(count, 256U);
  EXPECT_EQ(read, data);
}

TEST(TableTest, EveryPieceGivesOneDebuggerLine) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  DebuggerCapture debugger;
  Bytes data(30);
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_ReadNVMEM(camera, 0, data.data(), 30, &count), 0);
  EXPECT_EQ(debugger.Take(),
            (std::vector<std::wstring>{L"[EXT_Set]Node ID = 2, hr = 0, Len:32\r\n",
                                       L"[EXT_Set]Node ID = 2, hr = 0, Len:32\r\n"}));
}

TEST(TableTest, LedReachesItsUnit) {
  const SimulatorGuard simulator(R"({"cameras": [{"tirellaUnit": true}]})");
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(camera, 0xA5), 0);
  const GUID tirella = ZEM_TIRELLA_XU;
  std::uint8_t led = 0;
  ZemULong moved = 0;
  EXPECT_EQ(ZEMAPI_UvcExtGet(camera, &tirella, 2, &led, 1, &moved), 0);
  EXPECT_EQ(led, 0xA5);
}

TEST(TableTest, TablesAreReadAndReplaced) {
  const SimulatorGuard simulator(
      R"({"cameras": [{"tables": [{"id": 7, "data": [1, 2, 3]}, {"id": 8}]}]})");
  const OpenedCamera camera;
  std::uint8_t* table = nullptr;
  ASSERT_EQ(ZEMAPI_OpenTableHandle(camera, &table), 0);
  std::uint16_t size = 0;
  EXPECT_EQ(ZEMAPI_GetTableSize(camera, table, 7, &size), 0);
  EXPECT_EQ(size, 3);
  EXPECT_EQ(ZEMAPI_GetTableSize(camera, table, 9, &size), ZEM_E_REFUSED);
  std::array<std::uint8_t, 3> out = {};
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_ReadTableEx(camera, table, 7, out.data(), 3, &count), 0);
  EXPECT_EQ(out, (std::array<std::uint8_t, 3>{1, 2, 3}));
  const std::array<std::uint8_t, 3> first = {4, 5, 6};
  EXPECT_EQ(ZEMAPI_WriteTableEx(camera, table, 7, first.data(), 3, &count), 0);
  EXPECT_EQ(ZEMAPI_ReadTable(camera, 7, out.data(), 3, &count), 0);
  EXPECT_EQ(out, first);
  const std::array<std::uint8_t, 3> second = {7, 8, 9};
  EXPECT_EQ(ZEMAPI_WriteTable(camera, 7, second.data(), 3, &count), 0);
  EXPECT_EQ(ZEMAPI_ReadTableEx(camera, table, 7, out.data(), 3, &count), 0);
  EXPECT_EQ(out, first) << "the handle does not see the write";
  Bytes image(100);
  EXPECT_EQ(ZEMAPI_DumpWholeTable(camera, table, image.data(), 100, &count), 0);
  image.resize(count);
  EXPECT_EQ(image, (Bytes{0xEE, 0, 15, 0, 0, 7, 7, 0, 4, 5, 6, 0, 8, 4, 0}));
  EXPECT_EQ(ZEMAPI_CloseTableHandle(camera, &table), 0);
  EXPECT_EQ(table, nullptr);
}

TEST(TableTest, CameraWithoutATableStore) {
  const SimulatorGuard simulator(R"({"cameras": [{"nvmem": []}]})");
  const OpenedCamera camera;
  std::uint8_t* table = nullptr;
  EXPECT_EQ(ZEMAPI_OpenTableHandle(camera, &table), ZEM_E_REFUSED);
  EXPECT_EQ(table, nullptr);
  std::uint8_t out = 0x55;
  std::uint32_t count = 0x5A;
  EXPECT_EQ(ZEMAPI_ReadTable(camera, 7, &out, 1, &count), 0) << "erased memory has no table";
  EXPECT_EQ(out, 0x55);
  EXPECT_EQ(count, 0x5AU);
}

TEST(TableTest, WholeStoreIsReplaced) {
  const SimulatorGuard simulator(R"({"cameras": [{"nvmem": []}]})");
  const OpenedCamera camera;
  const Bytes image = {0xEE, 0, 11, 0, 0, 5, 7, 0, 1, 2, 3};
  ASSERT_EQ(ZEMAPI_WriteInitialTable(camera, image.data(), 11), 0);
  // The camera writes by itself; asking for its state lets the simulated one come to an end.
  std::array<std::uint8_t, 8> status = {};
  ZemULong moved = 0;
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 5, status.data(), 8, &moved), 0);
  EXPECT_EQ(status[0], 0);
  std::array<std::uint8_t, 3> out = {};
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_ReadTable(camera, 5, out.data(), 3, &count), 0);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(out, (std::array<std::uint8_t, 3>{1, 2, 3}));
}

}  // namespace
