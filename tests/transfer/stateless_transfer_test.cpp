// Transfers and firmware updates without a handle.
#include <utility>

#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::Failed;
using zem::testing::kFailedTransfer;
using zem::testing::kPoll;
using zem::testing::kStatus;
using zem::testing::Lines;
using zem::testing::Repeated;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;
using zem::testing::operator+;

constexpr const char* kDataProbe = "get vendor 3 [64]";

class StatelessTransferTest : public TransferTest {
 protected:
  std::size_t TakeOpenings() {
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
    return std::exchange(boundFilters, {}).size();
  }

  // Hundred bytes of an image are in two chunks of 64 bytes.
  Bytes image = CountingBytes(128);
};

class StatelessWriteTest : public StatelessTransferTest {};

TEST_F(StatelessWriteTest, SendsWholeChunksOf64FromTheCallersMemory) {
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 100, Report, user()), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{kDataProbe, "sleep 300", ChunkLine(3, image, 0, 64), "progress 36", "drain",
                   ChunkLine(3, image, 64, 64), "progress 0", "drain", "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 64), SetLine(0, 64)}))
      << "the speed is not reported";
  EXPECT_EQ(TakeOpenings(), 1U);
  EXPECT_EQ(system().profileReads.size(), 2U);
  EXPECT_EQ(system().comInitializations, 2) << "the opening and the probe";
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_F(StatelessWriteTest, CameraThatDoesNotMove64BytesGetsChunksOf32) {
  vendor().Answer(3, Bytes(32));
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 40, Report, user()), 0);
  const std::string first =
      "set vendor 3: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 "
      "11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20";
  const std::string second =
      "set vendor 3: 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 "
      "31 32 33 34 35 36 37 38 39 3a 3b 3c 3d 3e 3f 40";
  EXPECT_EQ(TakeWire(), (Lines{kDataProbe, "sleep 300", first, "progress 20", "drain", second,
                               "progress 0", "drain", "drain"}));
}

TEST_F(StatelessWriteTest, OnlyASuccessWithExactly64BytesMeansChunksOf64) {
  std::uint32_t transfers = 0;
  for (const std::uint32_t reported : {0U, 63U, 65U, 0xFFFFFFFFU}) {
    camera().AddFault({Fault::Kind::kLength, ++transfers, 1, reported});
    ++transfers;
    EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 1, nullptr, 0), 0);
    EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 32)}) << reported;
  }
  FailTransfer(1);
  camera().AddFault({Fault::Kind::kLength, ++transfers, 1, 64});
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 1, nullptr, 0), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 32)});
}

TEST_F(StatelessWriteTest, NothingToSend) {
  for (const std::int32_t length : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), length, Report, user()), 0);
    EXPECT_EQ(TakeWire(), (Lines{kDataProbe, "sleep 300", "drain"})) << length;
  }
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(nullptr, 0, Report, user()), 0);
}

TEST_F(StatelessWriteTest, WithoutACallbackTheQueueIsDrainedOnce) {
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 128, nullptr, 0), 0);
  EXPECT_EQ(system().queueDrains, 1);
}

TEST_F(StatelessWriteTest, FailedChunkEndsIt) {
  FailTransfer(3);
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 128, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), (Lines{kDataProbe, "sleep 300", ChunkLine(3, image, 0, 64), "progress 50",
                               "drain", Failed(ChunkLine(3, image, 64, 64)), "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 64), SetLine(kFailedTransfer, 64),
                                            L"[ERR] Send Data Len = 64, hr = 8007001F\r\n"}));
  EXPECT_EQ(TakeOpenings(), 1U);
}

TEST_F(StatelessWriteTest, OneFailureAnywhere) {
  for (std::uint32_t k = 1; k <= 3; ++k) {
    FailTransfer(k);
    // After a failed probe there are four chunks of 32.
    EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 128, Report, user()),
              k == 1 ? 0 : ZEM_E_NO_DEVICE);
    const std::size_t lines[] = {2 + 4 * 3 + 1, 2 + 1 + 1, 2 + 3 + 1 + 1};
    EXPECT_EQ(TakeWire().size(), lines[k - 1]) << k;
    EXPECT_EQ(TakeOpenings(), 1U);
  }
}

TEST_F(StatelessWriteTest, ProgressOfALongImageDoesNotOverflow) {
  FailTransfer(3);
  // The second chunk fails, so no more than two are looked at.
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 0x7FFFFFFF, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeProgress(), Lines{"progress 99"});
}

TEST_F(StatelessWriteTest, NoCameraAndNullData) {
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(nullptr, 1, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(nullptr, -1, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeOpenings(), 0U);
  ListNothing();
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 1, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines()) << "neither a sleep nor a drain";
}

class StatelessReadTest : public StatelessTransferTest {
 protected:
  ZemResult Read(std::uint32_t bufferSize) {
    buffer.assign(bufferSize, 0x5A);
    return ZEMUVCEXT_ReadFWData(buffer.data(), bufferSize, &length, Report, user());
  }

  Bytes buffer;
  std::uint32_t length = 0x5A5A5A5A;
};

TEST_F(StatelessReadTest, KeepsTheCameraForTheDataAndOpensItAnewForTheOrder) {
  vendor().Answer(3, {0xEE, 0xEE});
  vendor().Answer(5, {0, 0, 3, 0, 0, 0, 0, 0});
  vendor().Answer(3, {1, 2});
  vendor().Answer(3, {3, 4});
  EXPECT_EQ(Read(4), 0);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(buffer, (Bytes{1, 2, 3, 0x5A}));
  EXPECT_EQ(TakeWire(),
            (Lines{"get vendor 3 [4]", "set vendor 4: 01 02 00 00 00 00 00 00", kStatus,
                   "progress 100", "get vendor 3 [2]", "progress 33", "get vendor 3 [2]"}));
  EXPECT_EQ(TakeOpenings(), 3U);
  EXPECT_EQ(system().queueDrains, 0);
}

TEST_F(StatelessReadTest, BufferTooSmall) {
  vendor().Answer(5, {0, 0, 5, 0, 0, 0, 0, 0});
  EXPECT_EQ(Read(4), ZEM_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(length, 0x5A5A5A5AU);
  EXPECT_EQ(TakeOpenings(), 3U);
}

TEST_F(StatelessReadTest, ProgressOfMuchDataDoesNotOverflow) {
  vendor().Answer(3, Bytes(65535));
  vendor().Answer(5, {0, 0, 0xC0, 0x20, 0x90, 0x02, 0, 0});
  EXPECT_EQ(Read(43000000), 0);
  EXPECT_EQ(length, 43000000U);
  const Lines progress = TakeProgress();
  ASSERT_EQ(progress.size(), 657U);
  EXPECT_EQ(progress[0], "progress 100") << "a hundred times the length is above 32 bits";
  EXPECT_EQ(progress[1], "progress 99");
}

TEST_F(StatelessReadTest, OneFailureAnywhere) {
  for (std::uint32_t k = 1; k <= 5; ++k) {
    length = 0x5A5A5A5A;
    vendor().AlwaysAnswer(3, {7, 7});
    vendor().AlwaysAnswer(5, {0, 0, 4, 0, 0, 0, 0, 0});
    FailTransfer(k);
    const ZemResult results[] = {ZEM_E_DEVICE_REFUSED, ZEM_E_DEVICE_REFUSED, 0, 0, 0};
    EXPECT_EQ(Read(4), results[k - 1]) << k;
    const std::uint32_t lengths[] = {0x5A5A5A5A, 0x5A5A5A5A, 0, 4, 4};
    EXPECT_EQ(length, lengths[k - 1]) << k;
    const Bytes buffers[] = {{0x5A, 0x5A, 0x5A, 0x5A},
                             {7, 7, 0x5A, 0x5A},
                             {7, 7, 0x5A, 0x5A},
                             {0, 0, 7, 7},
                             {7, 7, 0, 0}};
    EXPECT_EQ(buffer, buffers[k - 1]) << k;
    const std::size_t openings[] = {1, 2, 3, 3, 3};
    EXPECT_EQ(TakeOpenings(), openings[k - 1]) << k;
    TakeWire();
  }
}

TEST_F(StatelessReadTest, NoCameraAndNullPointers) {
  EXPECT_EQ(ZEMUVCEXT_ReadFWData(nullptr, 4, &length, nullptr, 0), ZEM_E_REFUSED);
  buffer.resize(4);
  EXPECT_EQ(ZEMUVCEXT_ReadFWData(buffer.data(), 4, nullptr, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(TakeOpenings(), 0U);
  ListNothing();
  EXPECT_EQ(Read(4), ZEM_E_NO_DEVICE);
}

// The updates, but for what they have in common with those that take a handle.
class StatelessUpdateTest : public StatelessTransferTest,
                            public ::testing::WithParamInterface<ZemResult (*)(
                                const std::uint8_t* image, std::uint32_t length,
                                ProgressCallback callback, std::uint64_t user)> {};

TEST_P(StatelessUpdateTest, EachAccessButTheDataOpensTheCamera) {
  EXPECT_EQ(GetParam()(image.data(), 100, Report, user()), 0);
  EXPECT_EQ(TakeOpenings(), 5U) << "announce, status, data, order, status";
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_P(StatelessUpdateTest, LengthThatIsNegativeAsASignedNumberSendsNothing) {
  EXPECT_EQ(GetParam()(image.data(), 0x80000000, Report, user()), 0);
  const Lines wire = TakeWire();
  ASSERT_GT(wire.size(), 6U);
  EXPECT_EQ(Lines(wire.begin() + 1, wire.begin() + 5),
            (Lines{kStatus, kDataProbe, "sleep 300", "drain"}));
  EXPECT_TRUE(wire[5].starts_with("set vendor 4: 01 01 ")) << "the burn is ordered: " << wire[5];
}

TEST_P(StatelessUpdateTest, NullImageOpensNothing) {
  EXPECT_EQ(GetParam()(nullptr, 1, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeOpenings(), 0U);
  EXPECT_EQ(GetParam()(nullptr, 0, Report, user()), 0);
}

INSTANTIATE_TEST_SUITE_P(Updates, StatelessUpdateTest,
                         ::testing::Values(ZEMUVCEXT_UpdateFW_with_progress,
                                           ZEMUVCEXT_UpdateFW_with_progressEx,
                                           [](const std::uint8_t* image, std::uint32_t length,
                                              ProgressCallback callback, std::uint64_t user) {
                                             return ZEMUVCEXT_UpdateFW_Vision(image, length, 1,
                                                                              callback, user);
                                           }));

TEST_F(StatelessTransferTest, UpdateWithoutACallbackIsDoneAfterEightSeconds) {
  EXPECT_EQ(ZEMUVCEXT_UpdateFW(image.data(), 100), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 00 00 00 00 00 00", kStatus, kDataProbe,
                               "sleep 300", ChunkLine(3, image, 0, 64), ChunkLine(3, image, 64, 64),
                               "drain", "set vendor 4: 01 01 00 00 00 00 00 00"} +
                         kPoll + Repeated(80, {"sleep 100", "drain"})));
  EXPECT_EQ(system().clockMilliseconds, 300 + 30 + 8000U);
}

TEST_F(StatelessTransferTest, VisionUpdateLooksOnceAfterTenSeconds) {
  vendor().Answer(5, {0});
  vendor().Answer(5, {0});
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_Vision(image.data(), 64, 0xA7, Report, user()), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{"set vendor 4: 01 00 a7 00 00 00 00 00", kStatus, kDataProbe, "sleep 300",
                   ChunkLine(3, image, 0, 64), "progress 0", "drain", "drain",
                   "set vendor 4: 01 01 a7 00 00 00 00 00", "sleep 10000", kStatus}));
}

TEST_F(StatelessTransferTest, VisionUpdateThatIsNotDoneHasFailedWithoutAMessage) {
  for (const std::uint8_t state : Bytes{0x01, 0x82, 0xFF}) {
    vendor().Answer(5, {0});
    vendor().Answer(5, {state});
    EXPECT_EQ(ZEMUVCEXT_UpdateFW_Vision(image.data(), 64, 1, nullptr, 0), ZEM_E_DEVICE_REFUSED);
    EXPECT_EQ(TakeDebuggerLines().back(), SetLine(0, 8));
  }
  FailTransfer(6);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_Vision(image.data(), 64, 1, nullptr, 0), ZEM_E_DEVICE_REFUSED)
      << "a status that cannot be read is no success";
  gate.EndTransfer(6, kFailedTransfer);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_Vision(image.data(), 64, 1, nullptr, 0), ZEM_E_DEVICE_REFUSED)
      << "nor is one that a failed read brings";
}

}  // namespace
