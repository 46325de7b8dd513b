// The table exports that work on the device's memory as it is at the time.
#include <cstring>

#include "simulator/nvmem_control.h"
#include "tests/support/bare_camera.h"
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

constexpr std::uint32_t kUntouched = 0xDEADBEEF;

std::string Zeros(std::size_t count) {
  std::string text;
  for (std::size_t index = 0; index < count; ++index) {
    text += " 00";
  }
  return text;
}

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

TEST_F(TableStoreTest, WriteTableReturnsTheFailureOfEachPiece) {
  const Bytes data(40, 0xC0);
  for (std::uint32_t failing = 1; failing <= 2; ++failing) {
    SCOPED_TRACE(failing);
    FailTransfer(static_cast<std::uint32_t>(kWholeImageTransfers) + failing);
    size = kUntouched;
    EXPECT_EQ(ZEMAPI_WriteTable(handle(), 0x30, data.data(), 40, &size), kFailedTransfer);
    EXPECT_EQ(size, 40U);
    EXPECT_EQ(TakeWireBehindTheRead().size(), failing);
  }
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

// A camera with nothing but the memory, quick enough for a sweep over every transfer of a whole
// image.
class MemoryCamera : public zem::testing::BareCamera {
 public:
  MemoryCamera() {
    nodeCount = 1;
    const Bytes image = ThreeTables();
    std::copy(image.begin(), image.end(), memory.begin());
  }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    *bytesReturned = length;
    if (request.Property.Id == 0) {
      if (length >= sizeof(GUID)) {
        std::memcpy(data, &zem::VendorXu, sizeof(GUID));
      }
      *bytesReturned = sizeof(GUID);
      return S_OK;
    }
    if (++transfers == failing) {
      return kFailedTransfer;
    }
    const bool isSet = request.Property.Flags == 0x10000002;
    writes += isSet && (static_cast<const std::uint8_t*>(data)[2] & 0x80) == 0 ? 1 : 0;
    if (isSet) {
      return OutcomeOf(control_.Set({static_cast<const std::uint8_t*>(data), length}));
    }
    const HRESULT result = OutcomeOf(control_.Get(block_));
    std::copy(block_.begin(), block_.end(), static_cast<std::uint8_t*>(data));
    return result;
  }

  Bytes memory = Bytes(kImageSize, 0xFF);
  std::uint32_t failing = 0;
  std::uint32_t transfers = 0;
  std::uint32_t writes = 0;

 private:
  static HRESULT OutcomeOf(zem::simulator::Outcome outcome) {
    return outcome == zem::simulator::Outcome::kDone ? S_OK : kFailedTransfer;
  }

  zem::simulator::NvmemControl control_{memory};
  Bytes block_;
};

class TableSweepTest : public ::testing::Test {
 protected:
  TableSweepTest() {
    zem::platform::simulated::Reset();
    zem::platform::simulated::TheSystem().recordDebuggerLines = false;
    EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  }
  ~TableSweepTest() override {
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(camera.references, 1);
    zem::platform::simulated::Reset();
  }

  // The n-th transfer from now on fails.
  void Fail(std::uint32_t n) {
    camera.failing = n;
    camera.transfers = 0;
    camera.writes = 0;
  }

  MemoryCamera camera;
  void* handle = nullptr;
  Bytes out = Bytes(50, 0x55);
  std::uint32_t size = kUntouched;
};

TEST_F(TableSweepTest, FailureOfEachReadIsReturnedAndNothingElseHappens) {
  const Bytes before = camera.memory;
  for (std::uint32_t failing = 2; failing <= kWholeImageTransfers; failing += 2) {
    SCOPED_TRACE(failing);
    Fail(failing);
    ASSERT_EQ(ZEMAPI_ReadTable(handle, 0x01, out.data(), 50, &size), kFailedTransfer);
    ASSERT_EQ(camera.transfers, failing);
    Fail(failing);
    ASSERT_EQ(ZEMAPI_WriteTable(handle, 0x01, Bytes(50).data(), 50, &size), kFailedTransfer);
    ASSERT_EQ(camera.transfers, failing);
    ASSERT_EQ(camera.writes, 0U);
  }
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(out, Bytes(50, 0x55));
  EXPECT_EQ(camera.memory, before);
}

TEST_F(TableSweepTest, RequestThatCannotBeSentIsPassedOver) {
  // The device answers the piece before once more. Behind the third piece there is no entry: what
  // is read there does not matter.
  for (std::uint32_t failing = 7; failing < kWholeImageTransfers; failing += 2) {
    SCOPED_TRACE(failing);
    Fail(failing);
    size = kUntouched;
    ASSERT_EQ(ZEMAPI_ReadTable(handle, 0x30, out.data(), 50, &size), 0);
    ASSERT_EQ(size, 40U);
    ASSERT_EQ(camera.transfers, kWholeImageTransfers);
    Fail(failing);
    ASSERT_EQ(ZEMAPI_WriteTable(handle, 0x01, Bytes(50, 0xC0).data(), 50, &size), 0);
    ASSERT_EQ(size, 3U);
    ASSERT_EQ(camera.transfers, kWholeImageTransfers + 1);
    ASSERT_EQ(camera.writes, 1U);
  }
}

TEST_F(TableSweepTest, PieceReadInPlaceOfAnotherIsSearchedAsItIs) {
  // The second piece comes out as the first once more, so that the third entry is not there.
  Fail(3);
  EXPECT_EQ(ZEMAPI_ReadTable(handle, 0x01, out.data(), 50, &size), 0);
  EXPECT_EQ(size, 3U);
  // Without the first request the image has no total.
  MemoryCamera fresh;
  void* other = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&fresh, &other), 0);
  fresh.failing = 1;
  size = kUntouched;
  EXPECT_EQ(ZEMAPI_ReadTable(other, 0x01, out.data(), 50, &size), 0);
  EXPECT_EQ(size, kUntouched);
  EXPECT_EQ(fresh.transfers, kWholeImageTransfers);
  ZEMAPI_CloseDevice(&other);
}

}  // namespace
