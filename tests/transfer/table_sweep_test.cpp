// Operations on tables with each of their transfers failing in turn, up to the 566 of a whole
// image.
#include <algorithm>
#include <cstring>
#include <optional>

#include "simulator/nvmem_control.h"
#include "tests/support/bare_camera.h"
#include "tests/transfer/table_fixture.h"

namespace {

using zem::testing::Bytes;
using zem::testing::kFailedTransfer;
using zem::testing::kImageSize;
using zem::testing::kUntouched;
using zem::testing::kWholeImageTransfers;
using zem::testing::ThreeTables;

constexpr std::size_t kPieceBytes = 29;

// A camera with nothing but the memory, quick enough for every transfer of every whole image. A
// request that fails leaves it with the answer that it gave last, at first with zeros.
class MemoryCamera : public zem::testing::BareCamera {
 public:
  MemoryCamera() { nodeCount = 1; }

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
    if (request.Property.Flags == 0x10000002) {
      return OutcomeOf(control_->Set({static_cast<const std::uint8_t*>(data), length}));
    }
    const HRESULT result = OutcomeOf(control_->Get(block_));
    std::copy(block_.begin(), block_.end(), static_cast<std::uint8_t*>(data));
    return result;
  }

  // A memory that begins with `image` and has not been asked yet. Its n-th transfer fails.
  void StartOver(const Bytes& image, std::uint32_t n) {
    memory.assign(kImageSize, 0xFF);
    std::copy(image.begin(), image.end(), memory.begin());
    control_.emplace(memory);
    failing = n;
    transfers = 0;
  }

  Bytes memory;
  std::uint32_t failing = 0;
  std::uint32_t transfers = 0;

 private:
  static HRESULT OutcomeOf(zem::simulator::Outcome outcome) {
    return outcome == zem::simulator::Outcome::kDone ? S_OK : kFailedTransfer;
  }

  std::optional<zem::simulator::NvmemControl> control_;
  Bytes block_;
};

// Table 0x30 alone, as long as an image can hold it; no piece is like another.
Bytes LongestTable() {
  Bytes image(kImageSize);
  for (std::size_t index = 0; index < kImageSize; ++index) {
    image[index] = static_cast<std::uint8_t>(index * 31 + index / 251);
  }
  const std::uint8_t headers[] = {0xEE, 0x77, 0x00, 0x20, 0x71, 0x30, 0xFC, 0x1F};
  std::copy(std::begin(headers), std::end(headers), image.begin());
  return image;
}

// `image` with `count` bytes from `offset` on replaced by `value`.
Bytes Filled(Bytes image, std::size_t offset, std::size_t count, std::uint8_t value) {
  image.resize(kImageSize, 0xFF);
  std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(offset), count, value);
  return image;
}

class TableSweepTest : public ::testing::Test {
 protected:
  TableSweepTest() {
    zem::platform::simulated::Reset();
    zem::platform::simulated::TheSystem().recordDebuggerLines = false;
    EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
    references_ = camera.references;
  }
  ~TableSweepTest() override {
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(camera.references, 1);
    zem::platform::simulated::Reset();
  }

  void Start(const Bytes& image, std::uint32_t failing) {
    camera.StartOver(image, failing);
    size = kUntouched;
    out.assign(kImageSize, 0x55);
  }

  // After an operation: how many transfers it made, and that it released what it took.
  std::uint32_t Transfers() {
    EXPECT_EQ(camera.references, references_);
    return camera.transfers;
  }

  MemoryCamera camera;
  void* handle = nullptr;
  Bytes out;
  std::uint32_t size = kUntouched;

 private:
  int references_ = 0;
};

TEST_F(TableSweepTest, ReadTable) {
  const Bytes untouched(kImageSize, 0x55);
  Bytes table(40, 0xB0);
  table.resize(kImageSize, 0x55);
  for (std::uint32_t failing = 1; failing <= kWholeImageTransfers; ++failing) {
    SCOPED_TRACE(failing);
    Start(ThreeTables(), failing);
    const ZemResult result = ZEMAPI_ReadTable(handle, 0x30, out.data(), 40, &size);
    const bool isRead = failing % 2 == 0;
    ASSERT_EQ(result, isRead ? kFailedTransfer : 0);
    ASSERT_EQ(Transfers(), isRead ? failing : kWholeImageTransfers);
    // Without the first request the image has no total, hence no table.
    const bool isFound = !isRead && failing != 1;
    ASSERT_EQ(size, isFound ? 40 : kUntouched);
    if (failing == 3) {
      // The second piece comes out as the first once more.
      const Bytes image = ThreeTables();
      ASSERT_TRUE(std::equal(image.begin(), image.begin() + kPieceBytes, out.begin() + 10));
    } else {
      ASSERT_EQ(out, isFound ? table : untouched);
    }
  }
}

TEST_F(TableSweepTest, WriteTable) {
  const Bytes before = Filled(ThreeTables(), 0, 0, 0);
  const Bytes after = Filled(ThreeTables(), 19, 40, 0xC0);
  const Bytes firstPieceOnly = Filled(ThreeTables(), 19, kPieceBytes - 4, 0xC0);
  const Bytes data(40, 0xC0);
  for (std::uint32_t failing = 1; failing <= kWholeImageTransfers + 2; ++failing) {
    SCOPED_TRACE(failing);
    Start(ThreeTables(), failing);
    const ZemResult result = ZEMAPI_WriteTable(handle, 0x30, data.data(), 40, &size);
    if (failing > kWholeImageTransfers) {
      ASSERT_EQ(result, kFailedTransfer);
      ASSERT_EQ(Transfers(), failing);
      ASSERT_EQ(size, 40U);
      ASSERT_EQ(camera.memory, failing == kWholeImageTransfers + 1 ? before : firstPieceOnly);
    } else if (failing % 2 == 0) {
      ASSERT_EQ(result, kFailedTransfer);
      ASSERT_EQ(Transfers(), failing);
      ASSERT_EQ(size, kUntouched);
      ASSERT_EQ(camera.memory, before);
    } else if (failing == 1) {
      ASSERT_EQ(result, ZEM_E_REFUSED) << "the image has no total, hence no table";
      ASSERT_EQ(Transfers(), kWholeImageTransfers);
      ASSERT_EQ(size, kUntouched);
      ASSERT_EQ(camera.memory, before);
    } else {
      ASSERT_EQ(result, 0);
      ASSERT_EQ(Transfers(), kWholeImageTransfers + 2);
      ASSERT_EQ(size, 40U);
      ASSERT_EQ(camera.memory, after);
    }
  }
}

TEST_F(TableSweepTest, OpenTableHandle) {
  // The mark's 32 bytes take two pieces.
  constexpr std::uint32_t kMarkRead = 4;
  const Bytes image = LongestTable();
  for (std::uint32_t failing = 1; failing <= kMarkRead + kWholeImageTransfers; ++failing) {
    SCOPED_TRACE(failing);
    Start(image, failing);
    std::uint8_t* table = nullptr;
    const ZemResult result = ZEMAPI_OpenTableHandle(handle, &table);
    const bool isOpened = failing > 2 && (failing == kMarkRead || failing % 2 != 0);
    ASSERT_EQ(result, isOpened ? 0 : failing > kMarkRead ? kFailedTransfer : ZEM_E_REFUSED);
    ASSERT_EQ(table != nullptr, isOpened);
    ASSERT_EQ(Transfers(), isOpened       ? kMarkRead + kWholeImageTransfers
                           : failing == 1 ? kMarkRead  // no mark, which shows at the end
                                          : failing);
    if (isOpened) {
      Bytes wanted = image;
      if (failing > kMarkRead + 1) {
        // A piece that was not asked for comes out as the one before it once more.
        const std::size_t place = (failing - kMarkRead - 1) / 2 * kPieceBytes;
        std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(place - kPieceBytes),
                    std::min(kPieceBytes, kImageSize - place),
                    wanted.begin() + static_cast<std::ptrdiff_t>(place));
      } else if (failing == kMarkRead + 1) {
        // As the last one of the probe did, which had three bytes.
        std::fill_n(std::copy_n(image.begin() + kPieceBytes, 3, wanted.begin()), kPieceBytes - 3,
                    0);
      }
      ASSERT_EQ(Bytes(table, table + kImageSize), wanted);
      ZEMAPI_CloseTableHandle(handle, &table);
    }
  }
}

TEST_F(TableSweepTest, WriteTableExOfTheLongestTable) {
  constexpr std::uint32_t kPieces = 283;
  const Bytes image = LongestTable();
  const Bytes changed = Filled(image, 8, 8184, 0xC0);
  const Bytes data(8184, 0xC0);
  // One more than there are: none fails.
  for (std::uint32_t failing = 1; failing <= kPieces + 1; ++failing) {
    SCOPED_TRACE(failing);
    Start(image, failing);
    Bytes table = image;
    ASSERT_EQ(ZEMAPI_WriteTableEx(handle, table.data(), 0x30, data.data(), 0, &size), 0);
    ASSERT_EQ(size, 8184U);
    ASSERT_EQ(table, changed) << "the handle has the new table";
    ASSERT_EQ(Transfers(), std::min(failing, kPieces));
    const std::size_t taken = std::min<std::size_t>((failing - 1) * kPieceBytes, 8188);
    ASSERT_EQ(camera.memory, Filled(image, 8, taken > 4 ? taken - 4 : 0, 0xC0));
  }
}

}  // namespace
