// Reading a piece of the camera's flash.
#include "tests/support/transfer_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::CountingBytes;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;

class ReadPartialFlashDataTest : public TransferTest {
 protected:
  ZemResult Read(std::uint32_t address, std::uint32_t size) {
    buffer.assign(size, 0x5A);
    return ZEMAPI_ReadPartialFlashData(handle(), address, size, buffer.data(), &outSize, Report,
                                       user());
  }

  Bytes buffer;
  std::uint32_t outSize = 0x5A5A5A5A;
};

TEST_F(ReadPartialFlashDataTest, FastCameraIsReadInChunksOf512) {
  vendor().Answer(8, Bytes(512, 0xA1));
  vendor().Answer(8, Bytes(512, 0xA2));
  EXPECT_EQ(Read(0x12345678, 1024), 0);
  EXPECT_EQ(outSize, 1024U);
  EXPECT_EQ(buffer[511], 0xA1);
  EXPECT_EQ(buffer[512], 0xA2);
  EXPECT_EQ(TakeWire(),
            (Lines{"set vendor 4: 01 10 78 56 34 12 00 04", "get vendor 13 [512]", "progress 0",
                   "get vendor 8 [512]", "progress 50", "get vendor 8 [512]"}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"ZEMAPI_ReadPartialFlashData:Size(1024)\r\n", SetLine(0, 8),
                       L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n",
                       L"ZEMAPI_ReadPartialFlashData readdata:Size(1024),Time =0ms.\r\n"}));
  EXPECT_EQ(system().queueDrains, 0);
}

TEST_F(ReadPartialFlashDataTest, SlowCameraIsReadInChunksOf32) {
  vendor().Answer(13, Bytes(32));
  vendor().Answer(11, CountingBytes(32));
  vendor().Answer(11, {0x91, 0x92, 0x93});
  EXPECT_EQ(Read(0, 35), 0);
  Bytes expected = CountingBytes(32);
  expected.insert(expected.end(), {0x91, 0x92, 0x93});
  EXPECT_EQ(buffer, expected);
  EXPECT_EQ(TakeWire(),
            (Lines{"set vendor 4: 01 10 00 00 00 00 23 00", "get vendor 13 [512]", "progress 0",
                   "get vendor 11 [32]", "progress 91", "get vendor 11 [32]"}));
  EXPECT_EQ(TakeDebuggerLines()[2], L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n");
}

TEST_F(ReadPartialFlashDataTest, ProgressIsComputedInSinglePrecision) {
  MakeSlow();
  EXPECT_EQ(Read(0, 3200), 0);
  const Lines progress = TakeProgress();
  ASSERT_EQ(progress.size(), 100U);
  EXPECT_EQ(progress[52], "progress 52");
  EXPECT_EQ(progress[53], "progress 52") << "1696 of 3200 are 53 %, but for the rounding";
  EXPECT_EQ(progress[54], "progress 54");
  EXPECT_EQ(progress[99], "progress 99");
}

TEST_F(ReadPartialFlashDataTest, SixteenBitsOfTheSizeAreAnnouncedAndAllBytesRead) {
  EXPECT_EQ(Read(0xFFFFFFFF, 0x12345), 0);
  EXPECT_EQ(outSize, 0x12345U);
  const Lines wire = TakeWire();
  EXPECT_EQ(wire[0], "set vendor 4: 01 10 ff ff ff ff 45 23");
  EXPECT_EQ(wire.size(), 2 + 146 * 2U);
}

TEST_F(ReadPartialFlashDataTest, NothingToRead) {
  std::uint8_t byte = 0x5A;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), 1, 0, &byte, &outSize, Report, user()), 0);
  EXPECT_EQ(outSize, 0U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 10 01 00 00 00 00 00", "get vendor 13 [512]"}));
  EXPECT_EQ(byte, 0x5A);
}

TEST_F(ReadPartialFlashDataTest, SizeThatIsNegativeAsASignedNumberReadsNothing) {
  std::uint8_t byte = 0x5A;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), 1, 0x80000001, &byte, &outSize, Report, user()),
            0);
  EXPECT_EQ(outSize, 0x80000001U);
  EXPECT_EQ(byte, 0x5A);
  EXPECT_EQ(TakeWire().size(), 2U);
  EXPECT_EQ(TakeDebuggerLines()[0], L"ZEMAPI_ReadPartialFlashData:Size(-2147483647)\r\n");
}

TEST_F(ReadPartialFlashDataTest, FailedAnnounce) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Read(0, 512), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(outSize, 0x5A5A5A5AU);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 01 10 00 00 00 00 00 02 failed"});
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"ZEMAPI_ReadPartialFlashData:Size(512)\r\n", SetLine(kFailedTransfer, 8)}));
}

TEST_F(ReadPartialFlashDataTest, FailedChunkIsReadAgainAfter5Milliseconds) {
  handle();
  FailTransfer(3);
  FailTransfer(4);
  vendor().Answer(8, Bytes(512, 0xA1));
  EXPECT_EQ(Read(0, 512), 0);
  EXPECT_EQ(buffer, Bytes(512, 0xA1));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 10 00 00 00 00 00 02", "get vendor 13 [512]",
                               "progress 0", "get vendor 8 [512] failed", "sleep 5",
                               "get vendor 8 [512] failed", "sleep 5", "get vendor 8 [512]"}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"ZEMAPI_ReadPartialFlashData:Size(512)\r\n", SetLine(0, 8),
                       L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n",
                       L"[ReadData]: retry (0).\r\n", L"[ReadData]: retry (1).\r\n",
                       L"ZEMAPI_ReadPartialFlashData readdata:Size(512),Time =10ms.\r\n"}));
}

TEST_F(ReadPartialFlashDataTest, ChunkThatFailsSixTimesEndsItWithThePlatformsFailure) {
  handle();
  camera().AddFault({zem::simulator::Fault::Kind::kFail, 4, 6, 0});
  vendor().Answer(8, Bytes(512, 0xA1));
  EXPECT_EQ(Read(0, 1024), kFailedTransfer);
  EXPECT_EQ(outSize, 0x5A5A5A5AU);
  EXPECT_EQ(buffer[511], 0xA1);
  EXPECT_EQ(buffer[512], 0x5A) << "nothing of the failed chunk";
  Lines wire = {"set vendor 4: 01 10 00 00 00 00 00 04",
                "get vendor 13 [512]",
                "progress 0",
                "get vendor 8 [512]",
                "progress 50",
                "get vendor 8 [512] failed"};
  for (int retry = 0; retry < 5; ++retry) {
    wire.insert(wire.end(), {"sleep 5", "get vendor 8 [512] failed"});
  }
  EXPECT_EQ(TakeWire(), wire);
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{L"ZEMAPI_ReadPartialFlashData:Size(1024)\r\n", SetLine(0, 8),
                       L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n",
                       L"[ReadData]: retry (0).\r\n", L"[ReadData]: retry (1).\r\n",
                       L"[ReadData]: retry (2).\r\n", L"[ReadData]: retry (3).\r\n",
                       L"[ReadData]: retry (4).\r\n",
                       L"[ERR] ZEMAPI_ReadPartialFlashData: hr = 0x8007001f.\r\n"}));
}

TEST_F(ReadPartialFlashDataTest, OneFailureAnywhere) {
  handle();
  // Announce, probe, two chunks.
  for (std::uint32_t k = 1; k <= 4; ++k) {
    FailTransfer(k);
    outSize = 0;
    EXPECT_EQ(Read(0, 1024), k == 1 ? ZEM_E_DEVICE_REFUSED : 0) << k;
    EXPECT_EQ(outSize, k == 1 ? 0U : 1024U) << k;
    const std::size_t sizes[] = {1, 2 + 32 * 2, 2 + 2 * 2 + 2, 2 + 2 * 2 + 2};
    EXPECT_EQ(TakeWire().size(), sizes[k - 1]) << k;
  }
}

TEST_F(ReadPartialFlashDataTest, ShortChunkLeavesZerosBehindItsBytes) {
  vendor().Answer(8, Bytes(512, 0xA1));
  vendor().Answer(8, {0xA2});
  EXPECT_EQ(Read(0, 514), 0);
  EXPECT_EQ(buffer[512], 0xA2);
  EXPECT_EQ(buffer[513], 0);
}

TEST_F(ReadPartialFlashDataTest, TimeIsThatOfTheWholeOperation) {
  handle();
  transferMilliseconds = 7;
  EXPECT_EQ(Read(0, 1024), 0);
  EXPECT_EQ(TakeDebuggerLines().back(),
            L"ZEMAPI_ReadPartialFlashData readdata:Size(1024),Time =28ms.\r\n")
      << "announce, probe, two chunks";
}

TEST_F(ReadPartialFlashDataTest, NullPointers) {
  std::uint8_t byte = 0;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(nullptr, 0, 1, &byte, &outSize, nullptr, 0),
            ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), 0, 1, nullptr, &outSize, nullptr, 0),
            ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), 0, 1, &byte, nullptr, nullptr, 0), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

}  // namespace
