// Erasing, and the mirror that the dump file is.
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::kTimeout;
using zem::testing::kTransferFailedEvent;
using zem::testing::Lines;
using zem::testing::NotWritten;
using zem::testing::RomBootTest;
using zem::testing::Written;

using EraseTest = RomBootTest;

TEST_F(EraseTest, WholeSectorsInTheStorageAndTheBytesAskedForInTheDumpFile) {
  const std::wstring dump = WriteFile("dump", Bytes(0x1400, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0x1000, 100), 0);
  EXPECT_EQ(volume.controls.at(0).sent, Bytes(512, 0xFF));
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x1000, Len=0x200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 10 00 00 01 00 00 00 00 00 00 [512]"}));
  Bytes mirrored(0x1400, 0x11);
  std::fill_n(mirrored.begin() + 0x1000, 100, std::uint8_t{0xFF});
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(EraseTest, GoesByCommandsOf32768Bytes) {
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0x12345, 65536 + 513), 0);
  for (const auto& control : volume.controls) {
    EXPECT_EQ(control.sent, Bytes(control.length, 0xFF));
  }
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x12345, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 23 45 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0x1A345, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 a3 45 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0x22345, Len=0x400 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 02 23 45 00 02 00 00 00 00 00 00 [1024]"}));
}

TEST_F(EraseTest, OfNothingSendsNothing) {
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0x1000, 0), 0);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(EraseTest, ReachesTheLastAddressAndNotTheFirstBehindIt) {
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0xFFFFFE00, 512), 0);
  EXPECT_EQ(TakeEvents(), Written(0xFFFFFE00, 1));
  const std::wstring dump = WriteFile("dump", {1});
  ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0xFFFFFE00, 513), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0xFFFFFE01, 1), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 512, 0xFFFFFFFF), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_EQ(ReadFile(dump), Bytes{1});
}

TEST_F(EraseTest, OfAllAddressesEndsBehindTheLast) {
  session();
  volume.Fail(3, kTimeout);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 0xFFFFFFFF), ZEM_E_FAIL);
  EXPECT_EQ(
      TakeEvents(),
      InOrder(
          {Written(0, 64), Written(0x8000, 64), NotWritten(0x10000, 64), {kTransferFailedEvent}}));
}

TEST_F(EraseTest, MirrorsBeforeItSendsAlsoWhatFailsThen) {
  const std::wstring dump = WriteFile("dump", Bytes(600, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  volume.Fail(1, kTimeout);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 512), ZEM_E_FAIL);
  Bytes mirrored(600, 0x11);
  std::fill_n(mirrored.begin(), 512, std::uint8_t{0xFF});
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(EraseTest, TheDumpFileGrowsToWhatIsMirroredAndIsNotMadeAnew) {
  const std::wstring dump = WriteFile("dump", {1, 2});
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 4, 10000), 0);
  Bytes mirrored = {1, 2, 0, 0};
  mirrored.resize(10004, 0xFF);
  EXPECT_EQ(ReadFile(dump), mirrored);
  std::filesystem::remove(dump);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 512), 0);
  EXPECT_FALSE(Exists("dump"));
}

TEST_F(EraseTest, NullSessionIsAFault) { EXPECT_DEATH(ZEMROMAPI_Erase(nullptr, 0, 512), ""); }

}  // namespace
