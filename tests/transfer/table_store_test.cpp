// The table exports that work on the device's memory as it is at the time.
#include <algorithm>

#include "tests/support/memory_limit.h"
#include "tests/transfer/table_fixture.h"

namespace {

using zem::testing::Bytes;
using zem::testing::kImageSize;
using zem::testing::kUntouched;
using zem::testing::kWholeImageTransfers;
using zem::testing::Lines;
using zem::testing::MemoryExhausted;
using zem::testing::TableTest;
using zem::testing::ThreeTables;
using zem::testing::Zeros;

class TableStoreTest : public TableTest {
 protected:
  TableStoreTest() { Store(ThreeTables()); }

  // What was sent behind the whole-image read.
  Lines TakeWireBehindTheRead() {
    const Lines wire = TakeWire();
    EXPECT_GE(wire.size(), kWholeImageTransfers);
    return wire.size() < kWholeImageTransfers
               ? wire
               : Lines(wire.begin() + kWholeImageTransfers, wire.end());
  }

  Bytes out = Bytes(50, 0x55);
  std::uint32_t size = kUntouched;
};

TEST_F(TableStoreTest, ReadTableReadsAll8192BytesEachTime) {
  for (int call = 0; call < 2; ++call) {
    EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x01, out.data(), 0, &size), 0);
    const Lines wire = TakeWire();
    ASSERT_EQ(wire.size(), kWholeImageTransfers);
    EXPECT_EQ(wire[0], "set vendor 16: 00 00 9d" + Zeros(29));
    EXPECT_EQ(wire[1], "get vendor 16 [32]");
    EXPECT_EQ(wire[2], "set vendor 16: 1d 00 9d" + Zeros(29));
    EXPECT_EQ(wire[564], "set vendor 16: f2 1f 8e" + Zeros(29));
    EXPECT_EQ(wire[565], "get vendor 16 [32]");
  }
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(Bytes(out.begin(), out.begin() + 4), (Bytes{0xA1, 0xA2, 0xA3, 0x55}));
}

TEST_F(TableStoreTest, ReadTableNeedsNoMark) {
  Bytes unmarked = ThreeTables();
  unmarked[0] = 0xFF;
  Store(unmarked);
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x30, out.data(), 50, &size), 0);
  EXPECT_EQ(size, 40U);
  EXPECT_EQ(Bytes(out.begin(), out.begin() + 40), Bytes(40, 0xB0));
  EXPECT_EQ(out[40], 0x55);
}

TEST_F(TableStoreTest, ReadTableOfAnAbsentTableTouchesNothing) {
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x03, out.data(), 50, &size), 0);
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(out, Bytes(50, 0x55));
}

TEST_F(TableStoreTest, WriteTableWritesTheWholeEntry) {
  const Bytes data = {0xC1, 0xC2, 0xC3, 0xC4};
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x01, data.data(), 0, &size), 0);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(TakeWireBehindTheRead(),
            (Lines{"set vendor 16: 04 00 07 71 01 07 00 c1 c2 c3" + Zeros(22)}));
  Bytes wanted = ThreeTables();
  std::copy_n(data.begin(), 3, wanted.begin() + 8);
  wanted.resize(kImageSize, 0xFF);
  EXPECT_EQ(memory(), wanted);
}

TEST_F(TableStoreTest, WriteTableOfAnEmptyTableWritesItsHeader) {
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x02, out.data(), 0, &size), 0);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(TakeWireBehindTheRead(), (Lines{"set vendor 16: 0b 00 04 72 02 04 00" + Zeros(25)}));
}

TEST_F(TableStoreTest, WriteTableOfAnAbsentTableWritesNothing) {
  const Bytes before = memory();
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x03, out.data(), 50, &size), ZEM_E_REFUSED);
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(TakeWireBehindTheRead(), Lines());
  EXPECT_EQ(memory(), before);
}

TEST_F(TableStoreTest, PositiveResultOfAReadIsReturnedAsItIs) {
  const Bytes before = memory();
  for (const std::size_t k : {std::size_t{2}, kWholeImageTransfers}) {
    SCOPED_TRACE(k);
    gate.EndTransfer(k, 1);
    EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x01, out.data(), 50, &size), 1);
    EXPECT_EQ(TakeWire().size(), k);
    gate.EndTransfer(k, 1);
    EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x01, out.data(), 50, &size), 1);
    EXPECT_EQ(TakeWire().size(), k);
  }
  EXPECT_EQ(out, Bytes(50, 0x55));
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(memory(), before);
}

TEST_F(TableStoreTest, PositiveResultOfAWriteIsReturnedAsItIs) {
  gate.EndTransfer(kWholeImageTransfers + 1, 1);
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x30, out.data(), 50, &size), 1);
  EXPECT_EQ(size, 40U);
  EXPECT_EQ(TakeWireBehindTheRead().size(), 1U) << "the second piece is not sent";
}

TEST_F(TableStoreTest, ErasedMemoryHasNoTable) {
  Store({});
  const Bytes before = memory();
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x01, out.data(), 50, &size), 0);
  TakeWire();
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x01, out.data(), 50, &size), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWireBehindTheRead(), Lines());
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0xFF, out.data(), 50, &size), ZEM_E_FAIL)
      << "the id that erased memory has is that of an entry which reaches out of it";
  EXPECT_EQ(out, Bytes(50, 0x55));
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(memory(), before);
}

TEST_F(TableStoreTest, WithoutMemoryNothingIsSent) {
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 0x01, out.data(), 50, &size), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x01, out.data(), 50, &size), ZEM_E_REFUSED);
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TableStoreTest, NullPointersAreRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(ZEMAPI_ReadTable(nullptr, 1, nullptr, 0, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_WriteTable(nullptr, 1, nullptr, 0, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 1, nullptr, 0, &size), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadTable(handle(), 1, out.data(), 0, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 1, nullptr, 0, &size), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteTable(handle(), 1, out.data(), 0, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
