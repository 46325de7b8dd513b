// Sending data that the caller has announced over the fastest control, and the speed probe.
#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::TransferTest;
using zem::testing::WideLines;

constexpr const wchar_t* kFastLine = L"[MSG] Set Speeed:: 512Bytes, CS=0xD, Len=0x200\r\n";
constexpr const wchar_t* kSlowLine = L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n";

class WriteFWDataTest : public TransferTest {
 protected:
  ZemResult Write(const Bytes& data) {
    return ZEMAPI_WriteFWData(handle(), data.data(), static_cast<std::uint32_t>(data.size()),
                              Report, user());
  }
};

TEST_F(WriteFWDataTest, FastCameraGetsChunksOf512OnTheFastControl) {
  const Bytes data = CountingBytes(1024);
  EXPECT_EQ(Write(data), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{"get vendor 13 [512]", ChunkLine(13, data, 0, 512), "progress 50", "drain",
                   ChunkLine(13, data, 512, 512), "progress 0", "drain", "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{kFastLine, SetLine(0, 512), SetLine(0, 512)}));
}

TEST_F(WriteFWDataTest, SlowCameraGetsChunksOf32OnTheSlowControl) {
  MakeSlow();
  const Bytes data = CountingBytes(34);
  EXPECT_EQ(Write(data), 0);
  constexpr const char* kWhole =
      "set vendor 3: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 "
      "11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20";
  constexpr const char* kPadded =
      "set vendor 3: 21 22 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 13 [512] failed", kWhole, "progress 5", "drain", kPadded,
                               "progress 0", "drain", "drain"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{kSlowLine, SetLine(0, 32), SetLine(0, 32)}));
}

TEST_F(WriteFWDataTest, OnlyExactly512BytesAreFast) {
  handle();
  std::uint32_t transfers = 0;
  for (const std::uint32_t reported : {0U, 32U, 511U, 513U, 0xFFFFFFFFU}) {
    camera().AddFault({Fault::Kind::kLength, ++transfers, 1, reported});
    EXPECT_EQ(Write({}), 0);
    EXPECT_EQ(TakeDebuggerLines(), WideLines{kSlowLine}) << reported;
  }
  vendor().Answer(13, Bytes(511));
  EXPECT_EQ(Write({}), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{kSlowLine});
}

TEST_F(WriteFWDataTest, FailedProbeThatReports512BytesIsSlow) {
  handle();
  FailTransfer(1);
  camera().AddFault({Fault::Kind::kLength, 1, 1, 512});
  EXPECT_EQ(Write({}), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{kSlowLine});
}

TEST_F(WriteFWDataTest, LastChunkIsPaddedWithZeros) {
  const Bytes data = CountingBytes(1000);
  EXPECT_EQ(Write(data), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 8U);
  EXPECT_EQ(wire[4], ChunkLine(13, data, 512, 512));
  EXPECT_TRUE(
      wire[4].ends_with("e6 e7 e8 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                        "00 00 00 00 00"))
      << wire[4];
}

TEST_F(WriteFWDataTest, NothingToSendIsProbedOnly) {
  EXPECT_EQ(Write({}), 0);
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 13 [512]", "drain"}));
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), nullptr, 0, nullptr, 0), 0);
}

TEST_F(WriteFWDataTest, WithoutACallbackTheQueueIsDrainedOnce) {
  const Bytes data = CountingBytes(1536);
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), data.data(), 1536, nullptr, 0), 0);
  EXPECT_EQ(system().queueDrains, 1);
  EXPECT_EQ(TakeWire().size(), 1 + 3 + 1U);
}

TEST_F(WriteFWDataTest, FailedChunkEndsItWithoutARetry) {
  handle();
  FailTransfer(3);
  const Bytes data = CountingBytes(1536);
  EXPECT_EQ(Write(data), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 13 [512]", ChunkLine(13, data, 0, 512), "progress 66",
                               "drain", ChunkLine(13, data, 512, 512) + " failed", "drain"}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{kFastLine, SetLine(0, 512), SetLine(kFailedTransfer, 512),
                       L"[ERR] ZEMAPI_WriteFWData: Len = 512, hr = 8007001F\r\n"}));
  EXPECT_EQ(system().sleeps.size(), 0U);
}

TEST_F(WriteFWDataTest, FailedSlowChunk) {
  MakeSlow();
  handle();
  FailTransfer(2);
  EXPECT_EQ(Write(CountingBytes(10)), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeDebuggerLines().back(), L"[ERR] ZEMAPI_WriteFWData: Len = 32, hr = 8007001F\r\n");
}

TEST_F(WriteFWDataTest, ProgressOfALongImageDoesNotOverflow) {
  handle();
  FailTransfer(3);
  const Bytes data = CountingBytes(1024);
  // The second chunk fails, so no more than two are looked at.
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), data.data(), 0xFFFFFFFF, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeProgress(), Lines{"progress 99"});
}

TEST_F(WriteFWDataTest, OneFailureAnywhere) {
  handle();
  for (std::uint32_t k = 1; k <= 4; ++k) {
    FailTransfer(k);
    const ZemResult result = Write(CountingBytes(1536));
    if (k == 1) {
      // A failed probe means 48 chunks of 32.
      EXPECT_EQ(result, 0);
      EXPECT_EQ(TakeWire().size(), 1 + 48 * 3 + 1U);
    } else {
      EXPECT_EQ(result, ZEM_E_NO_DEVICE) << k;
      EXPECT_EQ(TakeWire().size(), 1 + (k - 2) * 3 + 1 + 1) << k;
    }
  }
}

TEST_F(WriteFWDataTest, NullHandleAndNullData) {
  const Bytes data = CountingBytes(8);
  EXPECT_EQ(ZEMAPI_WriteFWData(nullptr, data.data(), 8, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), nullptr, 1, Report, user()), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
