// Loading a firmware image into the camera's memory, with its check sums.
#include "romboot/memory_load.h"

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::Lines;
using zem::testing::PaddedToSectors;
using zem::testing::PartOf;
using zem::testing::PutLe32;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::Written;

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
  EXPECT_EQ(TakeEvents(),
            (Lines{"line ChkSum=0x12345678\r\n", "line Adr=0x0, Len=0x8000 Flag=0x0\r\n",
                   "sleep 10", "out fa 55 66 08 00 00 00 00 00 40 00 00 00 00 00 00 [32768]",
                   "line ChkSum=0x8000ABCD\r\n", "line Adr=0x8000, Len=0x400 Flag=0x0\r\n",
                   "sleep 10", "out fa 55 66 08 00 00 80 00 00 02 00 00 00 00 00 00 [1024]"}));
}

TEST_F(MemoryLoadTest, TheLastWordIsFilledWithZerosWhereTheFileEndsInsideIt) {
  struct Case {
    std::size_t size;
    std::string line;
  };
  for (const Case& test : std::vector<Case>{{1, "line ChkSum=0x11\r\n"},
                                            {2, "line ChkSum=0x2211\r\n"},
                                            {3, "line ChkSum=0x332211\r\n"},
                                            {4, "line ChkSum=0x44332211\r\n"},
                                            {5, "line ChkSum=0x44332266\r\n"},
                                            {6, "line ChkSum=0x44338866\r\n"},
                                            {7, "line ChkSum=0x44AA8866\r\n"}}) {
    EXPECT_EQ(Load(PartOf({0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}, 0, test.size)), 1);
    EXPECT_EQ(TakeEvents(), InOrder({{test.line}, Written(0, 1)})) << test.size;
    // The same behind a whole piece.
    Bytes file(32768, 0);
    for (std::size_t index = 0; index < test.size; ++index) {
      file.push_back(static_cast<std::uint8_t>(0x11 * (index + 1)));
    }
    EXPECT_EQ(Load(file), 1);
    EXPECT_EQ(TakeEvents(),
              InOrder({{"line ChkSum=0x0\r\n"}, Written(0, 64), {test.line}, Written(0x8000, 1)}))
        << test.size;
  }
}

TEST_F(MemoryLoadTest, AnEmptyFile) {
  EXPECT_EQ(Load({}), 1);
  EXPECT_EQ(address, 0U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(MemoryLoadTest, NothingIsMirrored) {
  const std::wstring dump = WriteFile("dump", Bytes(100, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(Load(SomeBytes(600)), 1);
  EXPECT_EQ(ReadFile(dump), Bytes(100, 0x11));
}

TEST_F(MemoryLoadTest, NullsAndMissingFiles) {
  const std::wstring path = WriteFile("file", SomeBytes(100));
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(nullptr, path.c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), path.c_str(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), nullptr, &address), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(session(), PathOf("none").c_str(), &address), ZEM_E_FAIL);
  EXPECT_EQ(address, 0x777U);
  EXPECT_EQ(TakeEvents(), Lines());
}

}  // namespace
