// Loading a firmware image into the camera's memory, with its check sums.
#include "romboot/memory_load.h"

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::PaddedToSectors;
using zem::testing::PutLe32;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::WideLines;

TEST(WordSumTest, AddsLittleEndianWordsModulo32Bits) {
  EXPECT_EQ(zem::WordSum({}), 0U);
  EXPECT_EQ(zem::WordSum(Bytes{0x78, 0x56, 0x34, 0x12}), 0x12345678U);
  EXPECT_EQ(zem::WordSum(Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0, 0, 0}), 1U);
  EXPECT_EQ(zem::WordSum(Bytes(32768, 0xFF)), 0xFFFFE000U);
}

TEST(WordSumTest, BytesBehindTheLastWholeWordDoNotCount) {
  EXPECT_EQ(zem::WordSum(Bytes{9, 9, 9}), 0U);
  EXPECT_EQ(zem::WordSum(Bytes{1, 0, 0, 0, 9, 9, 9}), 1U);
}

TEST(WordSumTest, AnyLengthAndAlignment) {
  const Bytes bytes = SomeBytes(300);
  for (std::size_t start = 0; start < 17; ++start) {
    for (std::size_t length = 0; length < 200; ++length) {
      std::uint32_t sum = 0;
      for (std::size_t index = 0; index < length / 4 * 4; ++index) {
        sum += std::uint32_t{bytes[start + index]} << (index % 4 * 8);
      }
      EXPECT_EQ(zem::WordSum({bytes.data() + start, length}), sum) << start << " " << length;
    }
  }
}

class MemoryLoadTest : public RomBootTest {
 protected:
  ZemResult Load(const Bytes& file) {
    return ZEMROMAPI_LoadFW2Memory(session(), WriteFile("file", file).c_str(), &address);
  }
  unsigned int address = 0x777;
};

TEST_F(MemoryLoadTest, CheckSumBeforeEachPiece) {
  Bytes file(32768 + 1000, 0);
  PutLe32(file, 0, 0xFFFFFFFF);
  PutLe32(file, 32764, 0x12345679);
  PutLe32(file, 32768, 0xABCD);
  file.back() = 0x80;
  EXPECT_EQ(Load(file), 1);
  EXPECT_EQ(address, 32768U + 1024U);
  EXPECT_EQ(Stored(0, 33792), PaddedToSectors(file));
  EXPECT_EQ(TakeCommands(), (Lines{"out fa 55 66 08 00 00 00 00 00 40 00 00 00 00 00 00 [32768]",
                                   "out fa 55 66 08 00 00 80 00 00 02 00 00 00 00 00 00 [1024]"}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"ChkSum=0x12345678\r\n", L"Adr=0x0, Len=0x8000 Flag=0x0\r\n",
                       L"ChkSum=0x8000ABCD\r\n", L"Adr=0x8000, Len=0x400 Flag=0x0\r\n"}));
}

TEST_F(MemoryLoadTest, AnEmptyFile) {
  EXPECT_EQ(Load({}), 1);
  EXPECT_EQ(address, 0U);
  EXPECT_EQ(TakeCommands(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(MemoryLoadTest, NothingIsMirrored) {
  const std::wstring dump = WriteFile("dump", Bytes(100, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(Load(SomeBytes(600)), 1);
  EXPECT_EQ(ReadFile(dump), Bytes(100, 0x11));
}

TEST_F(MemoryLoadTest, StopsAtTheCommandThatFails) {
  for (std::size_t failing = 1; failing <= 3; ++failing) {
    session();
    volume.Fail(failing, kTimeout);
    EXPECT_EQ(Load(SomeBytes(70000)), ZEM_E_FAIL);
    EXPECT_EQ(address, (failing - 1) * 0x8000U);
    EXPECT_EQ(TakeCommands().size(), failing);
    const WideLines lines = TakeDebuggerLines();
    EXPECT_EQ(lines.size(), 2 * failing + 2);
    EXPECT_EQ(lines.back(), L"Failed to transfer data to device.\r\n");
  }
}

TEST_F(MemoryLoadTest, NullsAndMissingFiles) {
  const std::wstring path = WriteFile("file", SomeBytes(100));
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(nullptr, path.c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), path.c_str(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), nullptr, &address), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), PathOf("none").c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(address, 0x777U);
  EXPECT_EQ(TakeCommands(), Lines());
}

}  // namespace
