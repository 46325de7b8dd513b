// Announcing data and sending it over the low-speed control.
#include "tests/support/transfer_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;

// A whole chunk of counting bytes, and the eight that follow it, padded with zeros and not.
constexpr const char* kFirstChunk =
    "set vendor 3: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 "
    "11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20";
constexpr const char* kPaddedChunk =
    "set vendor 3: 21 22 23 24 25 26 27 28 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* kUnpaddedChunk =
    "set vendor 3: 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 "
    "31 32 33 34 35 36 37 38 39 3a 3b 3c 3d 3e 3f 40";
// What is announced of 40 bytes with the parameters 0xAA and 0xBB.
constexpr const char* kAnnounce = "set vendor 4: 01 00 aa bb 28 00 00 00";

std::string Failed(const char* line) { return std::string(line) + " failed"; }

class SendDataTest : public TransferTest {
 protected:
  // Forty of 64 bytes.
  ZemResult Send() { return ZEMAPI_SendData(handle(), data.data(), 40, nullptr, 0, 0xAA, 0xBB); }

  Bytes data = CountingBytes(64);
};

TEST_F(SendDataTest, AnnouncesAndSendsChunksOf32WithAPaddedLast) {
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeWire(), (Lines{kAnnounce, kFirstChunk, kPaddedChunk, "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 8), SetLine(0, 32), SetLine(0, 32),
                                            L" Size(40bytes)Time =0ms.\r\n"}));
}

TEST_F(SendDataTest, ProgressIsWhatIsLeftDividedByTheLengthOfTheChunk) {
  EXPECT_EQ(ZEMAPI_SendData(handle(), CountingBytes(104).data(), 104, Report, user(), 0, 0), 0);
  const Bytes sent = CountingBytes(104);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 00 00 68 00 00 00", ChunkLine(3, sent, 0, 32),
                               "progress 225", "drain", ChunkLine(3, sent, 32, 32), "progress 125",
                               "drain", ChunkLine(3, sent, 64, 32), "progress 25", "drain",
                               ChunkLine(3, sent, 96, 32), "progress 0", "drain", "drain"}));
}

TEST_F(SendDataTest, ProgressOfWholeChunksIsAHundredForEachStillToSend) {
  EXPECT_EQ(ZEMAPI_SendData(handle(), CountingBytes(128).data(), 128, Report, user(), 0, 0), 0);
  EXPECT_EQ(TakeProgress(), (Lines{"progress 300", "progress 200", "progress 100", "progress 0"}));
}

TEST_F(SendDataTest, ProgressIsCutTo32BitsBeforeTheDivision) {
  handle();
  // All but the announce and the first chunk fails, so no more than two chunks are looked at.
  camera().AddFault({zem::simulator::Fault::Kind::kFail, 3, 6, 0});
  EXPECT_EQ(ZEMAPI_SendData(handle(), data.data(), 43000000, Report, user(), 0, 0), 0);
  // 42,999,968 * 100 is 4,299,996,800, which leaves 5,029,504.
  EXPECT_EQ(TakeProgress(), Lines{"progress 157172"});
}

TEST_F(SendDataTest, NothingToSendIsAnnouncedAllTheSame) {
  EXPECT_EQ(ZEMAPI_SendData(handle(), data.data(), 0, Report, user(), 1, 2), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 01 02 00 00 00 00", "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 8), L" Size(0bytes)Time =0ms.\r\n"}));
  EXPECT_EQ(ZEMAPI_SendData(handle(), nullptr, 0, nullptr, 0, 1, 2), 0);
}

TEST_F(SendDataTest, SixteenBitsOfTheLengthAreAnnouncedAndAllBytesSent) {
  const Bytes sent = CountingBytes(70016);
  EXPECT_EQ(ZEMAPI_SendData(handle(), sent.data(), 70000, nullptr, 0, 0, 0), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 1 + 2188 + 1U);
  EXPECT_EQ(wire[0], "set vendor 4: 01 00 00 00 70 11 00 00");
  EXPECT_EQ(wire[2187], ChunkLine(3, sent, 69952, 32));
  EXPECT_EQ(wire[2188], ChunkLine(3, CountingBytes(70000), 69984, 32));
  EXPECT_EQ(TakeDebuggerLines().back(), L" Size(70000bytes)Time =0ms.\r\n");
}

TEST_F(SendDataTest, FailedAnnounceEndsIt) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Send(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines{Failed(kAnnounce)});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(kFailedTransfer, 8)});
}

TEST_F(SendDataTest, FailedChunkIsRepeatedAfter5Milliseconds) {
  handle();
  FailTransfer(2);
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{kAnnounce, Failed(kFirstChunk), "sleep 5", kFirstChunk, kPaddedChunk, "drain"}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(0, 8), SetLine(kFailedTransfer, 32), L"SendData: retry (0).\r\n",
                       SetLine(0, 32), SetLine(0, 32), L" Size(40bytes)Time =5ms.\r\n"}));
}

TEST_F(SendDataTest, RetryTakesTheWholeChunkFromTheCallersMemory) {
  handle();
  FailTransfer(3);
  FailTransfer(4);
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeWire(), (Lines{kAnnounce, kFirstChunk, Failed(kPaddedChunk), "sleep 5",
                               Failed(kUnpaddedChunk), "sleep 5", kUnpaddedChunk, "drain"}));
}

TEST_F(SendDataTest, ChunkThatFailsSixTimesEndsTheSendingButNotInFailure) {
  handle();
  camera().AddFault({zem::simulator::Fault::Kind::kFail, 2, 6, 0});
  EXPECT_EQ(ZEMAPI_SendData(handle(), data.data(), 40, Report, user(), 0xAA, 0xBB), 0);
  Lines wire = {kAnnounce, Failed(kFirstChunk)};
  for (int retry = 0; retry < 5; ++retry) {
    wire.insert(wire.end(), {"sleep 5", Failed(kFirstChunk)});
  }
  wire.emplace_back("drain");
  EXPECT_EQ(TakeWire(), wire) << "no progress is reported, and the queue drained once";
  WideLines lines = TakeDebuggerLines();
  ASSERT_EQ(lines.size(), 14U);
  EXPECT_EQ(lines[2], L"SendData: retry (0).\r\n");
  EXPECT_EQ(lines[4], L"SendData: retry (1).\r\n");
  EXPECT_EQ(lines[6], L"SendData: retry (2).\r\n");
  EXPECT_EQ(lines[8], L"SendData: retry (3).\r\n");
  EXPECT_EQ(lines[10], L"SendData: retry (4).\r\n");
  EXPECT_EQ(lines[13], L" Size(40bytes)Time =25ms.\r\n");
  // The format's first number is an address, its second the length in hexadecimal.
  const std::wstring error = lines[12];
  const std::wstring head = L"[ERR]Len = ";
  const std::wstring tail = L", hr = 20\r\n";
  ASSERT_EQ(error.substr(0, head.size()), head);
  ASSERT_EQ(error.substr(error.size() - tail.size()), tail);
  const std::wstring number = error.substr(head.size(), error.size() - head.size() - tail.size());
  EXPECT_FALSE(number.empty());
  EXPECT_EQ(number.find_first_not_of(L"-0123456789"), std::wstring::npos) << error.size();
}

TEST_F(SendDataTest, LastRetryMaySucceed) {
  handle();
  camera().AddFault({zem::simulator::Fault::Kind::kFail, 2, 5, 0});
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeWire().size(), 1 + 1 + 5 * 2 + 1 + 1U) << "the second chunk goes out as well";
  EXPECT_EQ(TakeDebuggerLines().back(), L" Size(40bytes)Time =25ms.\r\n");
}

TEST_F(SendDataTest, OneFailureAnywhere) {
  handle();
  const Lines perfect = {kAnnounce, kFirstChunk, kPaddedChunk, "drain"};
  for (std::uint32_t k = 1; k <= 3; ++k) {
    FailTransfer(k);
    EXPECT_EQ(Send(), k == 1 ? ZEM_E_NO_DEVICE : 0) << k;
    EXPECT_EQ(TakeWire().size(), k == 1 ? 1 : perfect.size() + 2) << k;
  }
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeWire(), perfect);
}

TEST_F(SendDataTest, TimeIsThatOfTheWholeOperation) {
  handle();
  transferMilliseconds = 7;
  // What the caller's windows do while the queue is drained counts as well.
  system().messages.push_back({[this] { system().clockMilliseconds += 100; }});
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(TakeDebuggerLines().back(), L" Size(40bytes)Time =121ms.\r\n")
      << "announce, two chunks, a message";
}

TEST_F(SendDataTest, NullHandleAndNullData) {
  EXPECT_EQ(ZEMAPI_SendData(nullptr, data.data(), 40, Report, user(), 0, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_SendData(handle(), nullptr, 1, Report, user(), 0, 0), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

}  // namespace
