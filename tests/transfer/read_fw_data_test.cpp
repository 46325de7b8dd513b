// Reading all the data that the camera has ready.
#include <algorithm>

#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::CountingBytes;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::TransferTest;
using zem::testing::WideLines;

constexpr const char* kBeginRead = "set vendor 4: 01 02 00 00 00 00 00 00";

class ReadFWDataTest : public TransferTest {
 protected:
  // The camera has `total` bytes and moves `chunk` of them at once.
  void Offer(std::uint32_t total, std::size_t chunk) {
    vendor().Answer(3, Bytes(chunk, 0xEE));
    vendor().Answer(
        5, {0, 0x77, static_cast<std::uint8_t>(total), static_cast<std::uint8_t>(total >> 8),
            static_cast<std::uint8_t>(total >> 16), static_cast<std::uint8_t>(total >> 24), 0x77,
            0x77});
  }

  ZemResult Read(std::uint32_t bufferSize) {
    buffer.assign(bufferSize, 0x5A);
    return ZEMAPI_ReadFWData(handle(), buffer.data(), bufferSize, &length, Report, user());
  }

  Bytes buffer;
  std::uint32_t length = 0x5A5A5A5A;
};

TEST_F(ReadFWDataTest, ReadsChunksOfTheLengthThatTheProbeReports) {
  Offer(5, 2);
  vendor().Answer(3, {1, 2});
  vendor().Answer(3, {3, 4});
  vendor().Answer(3, {5, 6});
  EXPECT_EQ(Read(9), 0);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4, 5, 0x5A, 0x5A, 0x5A, 0x5A}));
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 3 [9]", kBeginRead, "get vendor 5 [8]", "progress 100",
                               "get vendor 3 [2]", "progress 60", "get vendor 3 [2]", "progress 20",
                               "get vendor 3 [2]"}));
  EXPECT_EQ(TakeDebuggerLines().size(), 1U) << "the write of the order, and nothing else";
  EXPECT_EQ(system().queueDrains, 0);
}

TEST_F(ReadFWDataTest, LengthIsLittleEndianInBytes2To5) {
  Offer(0x00010203, 1000);
  EXPECT_EQ(Read(0x00010202), ZEM_E_BUFFER_TOO_SMALL);
  Offer(0x00010203, 1000);
  EXPECT_EQ(Read(0x00010203), 0);
  EXPECT_EQ(length, 0x00010203U);
}

TEST_F(ReadFWDataTest, ExactlyTheBufferFitsAndOneMoreDoesNot) {
  Offer(8, 8);
  vendor().Answer(3, CountingBytes(8));
  EXPECT_EQ(Read(8), 0);
  EXPECT_EQ(buffer, CountingBytes(8));
  length = 7;
  Offer(9, 8);
  TakeWire();
  EXPECT_EQ(Read(8), ZEM_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(length, 7U) << "untouched";
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 3 [8]", kBeginRead, "get vendor 5 [8]"}));
}

TEST_F(ReadFWDataTest, WithoutACallback) {
  Offer(3, 8);
  vendor().Answer(3, CountingBytes(8));
  buffer.assign(8, 0);
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), buffer.data(), 8, &length, nullptr, 0), 0);
  EXPECT_EQ(buffer[2], 3);
}

TEST_F(ReadFWDataTest, NoDataIsASuccess) {
  Offer(0, 32);
  EXPECT_EQ(Read(64), 0);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(TakeWire().size(), 3U);
}

TEST_F(ReadFWDataTest, LengthThatIsNegativeAsASignedNumberReadsNothing) {
  Offer(0x80000000, 1);
  buffer.assign(1, 0);
  // The buffer is not as long as it is said to be; nothing but the probe's byte may be written.
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), buffer.data(), 0xFFFFFFFF, &length, Report, user()), 0);
  EXPECT_EQ(length, 0x80000000U);
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 3 [4294967295]", kBeginRead, "get vendor 5 [8]"}));
}

TEST_F(ReadFWDataTest, FailedProbeWithoutBytesIsARefusal) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Read(8), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), Lines{"get vendor 3 [8] failed"});
  EXPECT_EQ(length, 0x5A5A5A5AU);
}

TEST_F(ReadFWDataTest, FailedProbeWithACountIsTaken) {
  handle();
  FailTransfer(1);
  camera().AddFault({Fault::Kind::kLength, 1, 1, 4});
  vendor().Answer(5, {0, 0, 4, 0, 0, 0, 0, 0});
  vendor().Answer(3, {1, 2, 3, 4});
  EXPECT_EQ(Read(4), 0);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(TakeWire().back(), "get vendor 3 [4]");
}

TEST_F(ReadFWDataTest, FailedOrderIsARefusal) {
  Offer(8, 8);
  handle();
  FailTransfer(2);
  EXPECT_EQ(Read(8), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(length, 0x5A5A5A5AU);
}

TEST_F(ReadFWDataTest, StatusThatCannotBeReadMeansNoData) {
  Offer(8, 8);
  handle();
  FailTransfer(3);
  EXPECT_EQ(Read(8), 0);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(TakeWire().size(), 3U);
}

TEST_F(ReadFWDataTest, ChunkThatCannotBeReadCountsAsZeros) {
  for (std::uint32_t k = 4; k <= 6; ++k) {
    Offer(6, 2);
    for (int chunk = 0; chunk < 3; ++chunk) {
      vendor().Answer(3, {9, 9});
    }
    handle();
    FailTransfer(k);
    EXPECT_EQ(Read(6), 0) << k;
    EXPECT_EQ(length, 6U);
    Bytes expected(6, 9);
    expected[2 * (k - 4)] = 0;
    expected[2 * (k - 4) + 1] = 0;
    EXPECT_EQ(buffer, expected) << k;
    // The failed chunk has left its answer.
    vendor().Answer(3, {});
    std::uint8_t unused[2] = {};
    EXPECT_EQ(ZEMAPI_ZemExtGet(handle(), 3, unused, 2, nullptr), 0);
    EXPECT_EQ(ZEMAPI_ZemExtGet(handle(), 3, unused, 2, nullptr), 0);
  }
}

TEST_F(ReadFWDataTest, WhatFailedReadsBringCounts) {
  Offer(4, 2);
  vendor().Answer(3, {1, 2});
  vendor().Answer(3, {3, 4});
  handle();
  // Status, first chunk.
  gate.EndTransfer(3, kFailedTransfer);
  gate.EndTransfer(4, kFailedTransfer);
  EXPECT_EQ(Read(4), 0);
  EXPECT_EQ(length, 4U);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
}

TEST_F(ReadFWDataTest, ChunkLengthOfZeroIsARefusalAndNoEndlessLoop) {
  handle();
  camera().AddFault({Fault::Kind::kLength, 1, 1, 0});
  vendor().Answer(5, {0, 0, 4, 0, 0, 0, 0, 0});
  EXPECT_EQ(Read(8), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(length, 0x5A5A5A5AU);
  EXPECT_EQ(TakeWire().size(), 3U);
}

TEST_F(ReadFWDataTest, ChunkLengthOfZeroIsHarmlessWhenThereIsNoData) {
  handle();
  camera().AddFault({Fault::Kind::kLength, 1, 1, 0});
  vendor().Answer(5, {0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Read(8), 0);
  EXPECT_EQ(length, 0U);
}

TEST_F(ReadFWDataTest, ChunkLongerThanTheDataAndTheBuffer) {
  handle();
  camera().AddFault({Fault::Kind::kLength, 1, 1, 600});
  vendor().Answer(3, {});
  vendor().Answer(5, {0, 0, 4, 0, 0, 0, 0, 0});
  vendor().Answer(3, CountingBytes(600));
  EXPECT_EQ(Read(4), 0);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(TakeWire().back(), "get vendor 3 [600]");
}

TEST_F(ReadFWDataTest, LongChunksAreAskedForWholeAndCopiedBySixteenBitsOfTheirCount) {
  struct Copy {
    std::uint32_t count;
    const char* progress;
  };
  const struct {
    std::uint32_t reported;
    std::uint32_t total;
    std::vector<Copy> copies;
  } kCases[] = {
      {65535, 65536, {{65535, "progress 100"}, {1, "progress 0"}}},
      {65536, 65536, {{65535, "progress 100"}, {1, "progress 0"}}},
      {65536, 65537, {{65535, "progress 100"}, {2, "progress 0"}}},
      {65537, 4, {{4, "progress 100"}}},
      {70000, 65537, {{1, "progress 100"}, {65535, "progress 99"}, {1, "progress 0"}}},
      {70000,
       70001,
       {{4464, "progress 100"}, {1, "progress 93"}, {65535, "progress 93"}, {1, "progress 0"}}},
      {131072,
       131072,
       {{65535, "progress 100"}, {1, "progress 50"}, {65535, "progress 50"}, {1, "progress 0"}}},
      {0x1000000, 65535, {{65535, "progress 100"}}},
  };
  handle();
  for (const auto& [reported, total, copies] : kCases) {
    SCOPED_TRACE(std::to_string(reported) + " " + std::to_string(total));
    Offer(total, 0);
    camera().AddFault({Fault::Kind::kLength, camera().transfers() + 1, 1, reported});
    const std::string get = "get vendor 3 [" + std::to_string(reported) + "]";
    Lines wire = {"get vendor 3 [" + std::to_string(total) + "]", kBeginRead, "get vendor 5 [8]"};
    Bytes expected;
    std::uint8_t mark = 0xA0;
    for (const auto& [count, progress] : copies) {
      vendor().Answer(3, Bytes(std::min(reported, 0x20000U), ++mark));
      expected.insert(expected.end(), count, mark);
      wire.insert(wire.end(), {progress, get});
    }
    EXPECT_EQ(Read(total), 0);
    EXPECT_EQ(length, total);
    EXPECT_TRUE(buffer == expected);
    EXPECT_EQ(TakeWire(), wire);
  }
}

TEST_F(ReadFWDataTest, ProgressOfMuchDataDoesNotOverflow) {
  handle();
  camera().AddFault({Fault::Kind::kLength, 1, 1, 65535});
  Offer(43000000, 0);
  EXPECT_EQ(Read(43000000), 0);
  const Lines progress = TakeProgress();
  ASSERT_EQ(progress.size(), 657U);
  EXPECT_EQ(progress[0], "progress 100") << "a hundred times the length is above 32 bits";
  EXPECT_EQ(progress[1], "progress 99");
  EXPECT_EQ(progress[328], "progress 50");
  EXPECT_EQ(progress[656], "progress 0");
}

TEST_F(ReadFWDataTest, ShortChunkLeavesZerosBehindItsBytes) {
  Offer(4, 4);
  vendor().Answer(3, {1, 2});
  EXPECT_EQ(Read(4), 0);
  EXPECT_EQ(buffer, (Bytes{1, 2, 0, 0}));
}

TEST_F(ReadFWDataTest, NullPointers) {
  std::uint8_t byte = 0;
  EXPECT_EQ(ZEMAPI_ReadFWData(nullptr, &byte, 1, &length, nullptr, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), nullptr, 1, &length, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), &byte, 1, nullptr, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
