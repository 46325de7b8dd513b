// The table exports that work on an open table handle.
#include <algorithm>
#include <iterator>

#include "tests/support/memory_limit.h"
#include "tests/transfer/table_fixture.h"

namespace {

using zem::testing::Bytes;
using zem::testing::kFailedTransfer;
using zem::testing::kImageSize;
using zem::testing::kWholeImageTransfers;
using zem::testing::Lines;
using zem::testing::MemoryExhausted;
using zem::testing::TableTest;
using zem::testing::ThreeTables;
using zem::testing::WideLines;
using zem::testing::Zeros;

class TableHandleTest : public TableTest {
 protected:
  // Opens, expects a failure, and that no handle is made.
  ZemResult FailToOpen() {
    std::uint8_t untouched = 0;
    std::uint8_t* table = &untouched;
    const ZemResult result = ZEMAPI_OpenTableHandle(handle(), &table);
    EXPECT_EQ(table, &untouched);
    return result;
  }

  std::uint16_t size = 0xBEEF;
  std::uint32_t longSize = 0xDEADBEEF;
};

TEST_F(TableHandleTest, OpenReads32BytesAndThenTheImage) {
  Store({0xEE, 0x00, 0x0A, 0x00, 0x00, 0x01, 0x06, 0x00, 0xA1, 0xA2});
  std::uint8_t* table = nullptr;
  ASSERT_EQ(ZEMAPI_OpenTableHandle(handle(), &table), 0);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: 00 00 9d" + Zeros(29), "get vendor 16 [32]",
                               "set vendor 16: 1d 00 83" + Zeros(29), "get vendor 16 [32]",
                               "set vendor 16: 00 00 8a" + Zeros(29), "get vendor 16 [32]"}));
  EXPECT_EQ(Bytes(table, table + 11),
            (Bytes{0xEE, 0x00, 0x0A, 0x00, 0x00, 0x01, 0x06, 0x00, 0xA1, 0xA2, 0xFF}));
  EXPECT_EQ(Bytes(table + 32, table + kImageSize), Bytes(kImageSize - 32, 0));
  EXPECT_EQ(ZEMAPI_CloseTableHandle(handle(), &table), 0);
  EXPECT_EQ(table, nullptr);
}

TEST_F(TableHandleTest, ImageWithoutItsMarkCannotBeOpened) {
  for (const std::uint8_t first : Bytes{0x00, 0xEF, 0xFF}) {
    Store({first, 0x00, 0x0A, 0x00, 0x00, 0x01, 0x06, 0x00, 0xA1, 0xA2});
    EXPECT_EQ(FailToOpen(), ZEM_E_REFUSED);
    EXPECT_EQ(TakeWire().size(), 4U);
  }
}

TEST_F(TableHandleTest, OpenBoundsTheImageAt8192Bytes) {
  Store({0xEE, 0x00, 0x00, 0x20});
  EXPECT_NE(table(), nullptr);
  for (const Bytes& mark : {Bytes{0xEE, 0x00, 0x01, 0x20}, Bytes{0xEE, 0x00, 0xFF, 0xFF}}) {
    Store(mark);
    EXPECT_EQ(FailToOpen(), ZEM_E_REFUSED);
    const Lines wire = TakeWire();
    ASSERT_EQ(wire.size(), 4 + kWholeImageTransfers);
    EXPECT_EQ(wire[wire.size() - 2], "set vendor 16: f2 1f 8e" + Zeros(29));
  }
}

TEST_F(TableHandleTest, ImageOfLengthZeroIsNotReadAgain) {
  Store({0xEE, 0x00, 0x00, 0x00});
  std::uint8_t* table = nullptr;
  ASSERT_EQ(ZEMAPI_OpenTableHandle(handle(), &table), 0);
  EXPECT_EQ(TakeWire().size(), 4U);
  EXPECT_EQ(ZEMAPI_GetTableSize(nullptr, table, 1, &size), ZEM_E_REFUSED);
  ZEMAPI_CloseTableHandle(nullptr, &table);
}

TEST_F(TableHandleTest, OpenUnderFailureOfEachRequest) {
  // A request that fails leaves the device with the answer it gave last.
  const struct {
    ZemResult result;
    std::size_t transfers;
  } kOutcomes[] = {{ZEM_E_REFUSED, 4},     // the mark's request: no mark
                   {ZEM_E_REFUSED, 2},     // its read
                   {0, 6},                 // the request for the rest of the 32 bytes
                   {0, 6},                 // its read: the mark has been seen
                   {0, 6},                 // the image's request
                   {kFailedTransfer, 6}};  // its read
  for (std::size_t index = 0; index < std::size(kOutcomes); ++index) {
    SCOPED_TRACE(index);
    // A unit that has not been asked before.
    zem::simulator::VendorUnit fresh;
    const Bytes image = {0xEE, 0x00, 0x0A, 0x00, 0x00, 0x01, 0x06, 0x00, 0xA1, 0xA2};
    std::copy(image.begin(), image.end(), fresh.state.nvmem.begin());
    vendor().Delegate(16, fresh);
    FailTransfer(static_cast<std::uint32_t>(index) + 1);
    std::uint8_t* table = nullptr;
    EXPECT_EQ(ZEMAPI_OpenTableHandle(handle(), &table), kOutcomes[index].result);
    EXPECT_EQ(table != nullptr, kOutcomes[index].result == 0);
    EXPECT_EQ(TakeWire().size(), kOutcomes[index].transfers);
    ZEMAPI_CloseTableHandle(nullptr, &table);
  }
}

TEST_F(TableHandleTest, OpenUnderAPositiveResultOfEachRead) {
  Store({0xEE, 0x00, 0x0A, 0x00, 0x00, 0x01, 0x06, 0x00, 0xA1, 0xA2});
  gate.EndTransfer(2, 1);
  EXPECT_EQ(FailToOpen(), ZEM_E_REFUSED) << "the mark has not been seen";
  EXPECT_EQ(TakeWire().size(), 2U);
  gate.EndTransfer(6, 1);
  EXPECT_EQ(FailToOpen(), 1);
  EXPECT_EQ(TakeWire().size(), 6U);
  gate.EndTransfer(4, 1);
  EXPECT_NE(table(), nullptr) << "the mark has been seen";
}

TEST_F(TableHandleTest, OpenWithoutMemorySendsNothing) {
  const MemoryExhausted memory;
  EXPECT_EQ(FailToOpen(), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TableHandleTest, OpenWithoutDeviceOrPlace) {
  std::uint8_t* table = nullptr;
  EXPECT_EQ(ZEMAPI_OpenTableHandle(nullptr, &table), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_OpenTableHandle(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_OpenTableHandle(handle(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(table, nullptr);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TableHandleTest, CloseOfNothing) {
  std::uint8_t* table = nullptr;
  EXPECT_EQ(ZEMAPI_CloseTableHandle(nullptr, &table), 0);
  EXPECT_EQ(ZEMAPI_CloseTableHandle(handle(), &table), 0);
  EXPECT_EQ(ZEMAPI_CloseTableHandle(handle(), nullptr), ZEM_E_REFUSED);
}

TEST_F(TableHandleTest, SizesOfTables) {
  Store(ThreeTables());
  EXPECT_EQ(ZEMAPI_GetTableSize(handle(), table(), 0x01, &size), 0);
  EXPECT_EQ(size, 3);
  EXPECT_EQ(ZEMAPI_GetTableSize(nullptr, table(), 0x02, &size), 0);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(ZEMAPI_GetTableSize(nullptr, table(), 0x30, &size), 0);
  EXPECT_EQ(size, 40);
  EXPECT_EQ(ZEMAPI_GetTableSize(nullptr, table(), 0x03, &size), ZEM_E_REFUSED);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(TableHandleTest, SizeOfANullTableHandleIsZero) {
  EXPECT_EQ(ZEMAPI_GetTableSize(handle(), nullptr, 1, &size), ZEM_E_REFUSED);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(ZEMAPI_GetTableSize(handle(), Image(ThreeTables()), 1, nullptr), ZEM_E_REFUSED);
}

TEST_F(TableHandleTest, ReadTableExCopiesTheTable) {
  Store(ThreeTables());
  Bytes out(41, 0x55);
  // The size of the caller's buffer is not looked at.
  EXPECT_EQ(ZEMAPI_ReadTableEx(nullptr, table(), 0x30, out.data(), 0, &longSize), 0);
  EXPECT_EQ(longSize, 40U);
  Bytes wanted(40, 0xB0);
  wanted.push_back(0x55);
  EXPECT_EQ(out, wanted);
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), table(), 0x01, out.data(), 3, nullptr), 0);
  EXPECT_EQ(Bytes(out.begin(), out.begin() + 4), (Bytes{0xA1, 0xA2, 0xA3, 0xB0}));
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), table(), 0x02, out.data(), 3, &longSize), 0);
  EXPECT_EQ(longSize, 0U);
  EXPECT_EQ(TakeWire(), Lines()) << "the image was read when the handle was opened";
}

TEST_F(TableHandleTest, ReadTableExOfAnAbsentTableTouchesNothing) {
  std::uint8_t out = 0x55;
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), Image(ThreeTables()), 0x03, &out, 1, &longSize), 0);
  EXPECT_EQ(
      ZEMAPI_ReadTableEx(handle(), Image({0xEE, 0, 4, 0, 0, 3, 5, 0, 9}), 3, &out, 1, &longSize), 0)
      << "an image without entries";
  EXPECT_EQ(out, 0x55);
  EXPECT_EQ(longSize, 0xDEADBEEF);
}

TEST_F(TableHandleTest, ReadTableExNeedsAHandleAndABuffer) {
  std::uint8_t out = 0x55;
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), nullptr, 1, &out, 1, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), Image(ThreeTables()), 1, nullptr, 1, &longSize),
            ZEM_E_REFUSED);
  EXPECT_EQ(longSize, 0xDEADBEEF);
}

TEST_F(TableHandleTest, WriteTableExWritesTheWholeEntry) {
  Store(ThreeTables());
  const Bytes data = {0xC1, 0xC2, 0xC3, 0xC4};
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table(), 0x01, data.data(), 0, &longSize), 0);
  EXPECT_EQ(longSize, 3U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: 04 00 07 71 01 07 00 c1 c2 c3" + Zeros(22)}));
  Bytes wanted = ThreeTables();
  std::copy_n(data.begin(), 3, wanted.begin() + 8);
  wanted.resize(kImageSize, 0xFF);
  EXPECT_EQ(memory(), wanted);
  EXPECT_EQ(Bytes(table() + 4, table() + 11), (Bytes{0x71, 0x01, 0x07, 0x00, 0xC1, 0xC2, 0xC3}));
}

TEST_F(TableHandleTest, WriteTableExOfALongTableTakesSeveralPieces) {
  Store(ThreeTables());
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table(), 0x30, Bytes(40, 0xC0).data(), 40, nullptr), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: 0f 00 1d 73 30 2c 00"
                               " c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0"
                               " c0 c0 c0 c0 c0",
                               "set vendor 16: 2c 00 0f"
                               " c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0 c0"
                               " c0 c0 c0 c0 c0 c0 c0 c0 c0"}));
}

TEST_F(TableHandleTest, WriteTableExWithoutADeviceChangesTheHandleOnly) {
  const Bytes data = {0xC1, 0xC2, 0xC3};
  EXPECT_EQ(ZEMAPI_WriteTableEx(nullptr, Image(ThreeTables()), 1, data.data(), 3, &longSize), 0);
  EXPECT_EQ(longSize, 3U);
  EXPECT_EQ(Bytes(image().begin() + 8, image().begin() + 11), data);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines()) << "the default camera is not opened";
}

TEST_F(TableHandleTest, WriteTableExOfAnAbsentTableWritesNothing) {
  const Bytes data(40);
  std::uint8_t* const table = Image(ThreeTables());
  const Bytes before = image();
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table, 0x03, data.data(), 40, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), nullptr, 0x01, data.data(), 3, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table, 0x01, nullptr, 3, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(image(), before);
  EXPECT_EQ(longSize, 0xDEADBEEF);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TableHandleTest, HandlesDoNotSeeEachOthersWrites) {
  Store(ThreeTables());
  std::uint8_t* second = nullptr;
  ASSERT_EQ(ZEMAPI_OpenTableHandle(handle(), &second), 0);
  EXPECT_EQ(ZEMAPI_WriteTableEx(handle(), table(), 0x01, Bytes(3).data(), 3, nullptr), 0);
  Bytes out(3);
  EXPECT_EQ(ZEMAPI_ReadTableEx(handle(), second, 0x01, out.data(), 3, nullptr), 0);
  EXPECT_EQ(out, (Bytes{0xA1, 0xA2, 0xA3}));
  ZEMAPI_CloseTableHandle(handle(), &second);
}

TEST_F(TableHandleTest, DumpCopiesTheImageUpToTheCapacity) {
  Store(ThreeTables());
  for (const std::uint32_t capacity : {0U, 1U, 58U, 59U, 60U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(capacity);
    Bytes out(100, 0x55);
    EXPECT_EQ(ZEMAPI_DumpWholeTable(nullptr, table(), out.data(), capacity, &longSize), 0);
    const std::uint32_t copied = std::min(capacity, 59U);
    EXPECT_EQ(longSize, copied);
    Bytes wanted = ThreeTables();
    wanted.resize(copied);
    wanted.resize(100, 0x55);
    EXPECT_EQ(out, wanted);
  }
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TableHandleTest, DumpOfAnImageThatClaimsMoreThanItsBuffer) {
  Bytes out(0x10000, 0x55);
  std::uint8_t* const table = Image({0xEE, 0x00, 0xFF, 0xFF});
  EXPECT_EQ(ZEMAPI_DumpWholeTable(nullptr, table, out.data(), 0x10000, &longSize), 0);
  EXPECT_EQ(longSize, kImageSize);
  Bytes wanted = image();
  wanted.resize(0x10000, 0x55);
  EXPECT_EQ(out, wanted);
}

TEST_F(TableHandleTest, DumpNeedsAllItsPointers) {
  std::uint8_t out = 0x55;
  std::uint8_t* const table = Image(ThreeTables());
  EXPECT_EQ(ZEMAPI_DumpWholeTable(handle(), nullptr, &out, 1, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_DumpWholeTable(handle(), table, nullptr, 1, &longSize), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_DumpWholeTable(handle(), table, &out, 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(longSize, 0xDEADBEEF);
}

}  // namespace
