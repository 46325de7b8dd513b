// The memory exports of the vendor unit: each block on the wire, counts, failures.
#include <algorithm>
#include <numeric>

#include "tests/support/bare_camera.h"
#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;
using Bytes = std::vector<std::uint8_t>;

// first, first + 1, ...
Bytes Counting(std::uint8_t first, std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

// A block's text, filled up with zeros.
std::string Block(std::string text) {
  while (text.size() < 32 * 3 - 1) {
    text += " 00";
  }
  return text;
}

// What the device answers: a header that nobody looks at, and data.
Bytes Answer(const Bytes& data) {
  Bytes block = {0x11, 0x22, 0x33};
  block.insert(block.end(), data.begin(), data.end());
  block.resize(32, 0x99);
  return block;
}

class NvmemTest : public DeviceTest {
 protected:
  NvmemTest() { handle(); }

  std::uint32_t count = 0xDEADBEEF;
};

TEST_F(NvmemTest, WriteOfOnePieceIsOneBlock) {
  const Bytes data = {0xA1, 0xA2, 0xA3};
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0x1234, data.data(), 3, &count), 0);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: " + Block("34 12 03 a1 a2 a3")}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 32)}));
}

TEST_F(NvmemTest, ShortLastPieceCarriesTheTailOfThePieceBeforeIt) {
  const Bytes data = Counting(0x01, 31);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0x00F0, data.data(), 31, &count), 0);
  EXPECT_EQ(count, 31U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: f0 00 1d"
                               " 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f"
                               " 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d",
                               "set vendor 16: 0d 01 02"
                               " 1e 1f 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f"
                               " 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d"}));
}

TEST_F(NvmemTest, WholePiecesHaveNoEmptyOneBehindThem) {
  const Bytes data = Counting(0, 58);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0, data.data(), 58, &count), 0);
  EXPECT_EQ(count, 58U);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0, Bytes(58).data(), 58, &count), 0);
  EXPECT_EQ(count, 58U);
  EXPECT_EQ(TakeWire().size(), 4U);
}

TEST_F(NvmemTest, AddressesWrapAt16Bits) {
  const Bytes data(30, 0);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0xFFF0, data.data(), 30, &count), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{"set vendor 16: " + Block("f0 ff 1d"), "set vendor 16: " + Block("0d 00 01")}));
  Bytes buffer(30);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0xFFF0, buffer.data(), 30, &count), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: " + Block("f0 ff 9d"), "get vendor 16 [32]",
                               "set vendor 16: " + Block("0d 00 81"), "get vendor 16 [32]"}));
}

TEST_F(NvmemTest, LengthZeroSendsNothing) {
  std::uint8_t byte = 0x42;
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 5, &byte, 0, &count), 0);
  EXPECT_EQ(count, 0U);
  count = 7;
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 5, &byte, 0, &count), 0);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(byte, 0x42);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(NvmemTest, LengthZeroNeedsNoData) {
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 5, nullptr, 0, &count), 0);
  EXPECT_EQ(count, 0U);
  count = 7;
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 5, nullptr, 0, &count), 0);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 5, nullptr, 0, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 5, nullptr, 0, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(nullptr, 5, nullptr, 0, &count), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(nullptr, 5, nullptr, 0, &count), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(NvmemTest, LengthsCloseTo32BitsAreNotTakenForShortOnes) {
  // The third piece fails, so no more than three are looked at.
  Bytes buffer(3 * 29);
  for (const std::uint32_t length : {0xFFFFFFE3U, 0xFFFFFFE4U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(length);
    FailTransfer(3);
    EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0, buffer.data(), length, &count), kFailedTransfer);
    EXPECT_EQ(count, 58U);
    EXPECT_EQ(TakeWire().size(), 3U);
    FailTransfer(6);
    EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0, buffer.data(), length, &count), kFailedTransfer);
    EXPECT_EQ(count, 58U);
    EXPECT_EQ(TakeWire().size(), 6U);
  }
}

TEST_F(NvmemTest, ReadOf30BytesSendsTwoRequests) {
  vendor().Answer(16, Answer(Counting(0x40, 29)));
  vendor().Answer(16, Answer({0x80, 0xEE}));
  Bytes buffer(31, 0x55);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0x1234, buffer.data(), 30, &count), 0);
  EXPECT_EQ(count, 30U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 16: " + Block("34 12 9d"), "get vendor 16 [32]",
                               "set vendor 16: " + Block("51 12 81"), "get vendor 16 [32]"}));
  Bytes wanted = Counting(0x40, 29);
  wanted.push_back(0x80);
  wanted.push_back(0x55);
  EXPECT_EQ(buffer, wanted);
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 32), SetLine(0, 32)}));
}

TEST_F(NvmemTest, BytesThatAShortReadLeavesOutAreZero) {
  vendor().Answer(16, {0, 0, 0x83, 0x77});
  Bytes buffer(3, 0x55);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0, buffer.data(), 3, &count), 0);
  EXPECT_EQ(buffer, (Bytes{0x77, 0, 0}));
}

TEST_F(NvmemTest, NullPointersAreRefusedBeforeAnythingIsSent) {
  std::uint8_t byte = 0;
  EXPECT_EQ(ZEMAPI_WriteNVMEM(nullptr, 0, nullptr, 1, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(nullptr, 0, nullptr, 1, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(nullptr, 0, &byte, 1, &count), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(nullptr, 0, &byte, 1, &count), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0, nullptr, 1, &count), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle(), 0, &byte, 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0, nullptr, 1, &count), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle(), 0, &byte, 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(count, 0xDEADBEEF);
  EXPECT_EQ(TakeWire(), Lines());
}

// Answers each request for a control with the same positive result.
class PositiveCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* /*data*/, ULONG /*length*/,
                  ULONG* /*bytesReturned*/) override {
    return request.Property.Id == 0 ? S_OK : (++requests, 1);
  }
  int requests = 0;
};

TEST(NvmemResultTest, PositiveResultEndsTheOperationAsItStands) {
  zem::platform::simulated::Reset();
  PositiveCamera camera;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  Bytes bytes(256);
  std::uint32_t count = 7;
  EXPECT_EQ(ZEMAPI_WriteNVMEM(handle, 0, bytes.data(), 60, &count), 1);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(camera.requests, 1);
  count = 7;
  EXPECT_EQ(ZEMAPI_ReadNVMEM(handle, 0, bytes.data(), 60, &count), 1);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(camera.requests, 3);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle, bytes.data(), 256, &count), 1);
  EXPECT_EQ(camera.requests, 4);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle, bytes.data(), 256, &count), 1);
  EXPECT_EQ(camera.requests, 6);
  ZEMAPI_CloseDevice(&handle);
  zem::platform::simulated::Reset();
}

}  // namespace
