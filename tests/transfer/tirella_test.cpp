// The TIRELLA unit's memory and LED: each block on the wire, counts, failures.
#include <algorithm>
#include <numeric>

#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::kUnknownControl;
using zem::testing::kUntouched;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;
using zem::testing::Zeros;
using Bytes = std::vector<std::uint8_t>;

class TirellaTest : public DeviceTest {
 protected:
  TirellaTest() : unit_(AddUnit(zem::TirellaXu)) {
    std::iota(data.begin(), data.end(), std::uint8_t{0});
    handle();
  }

  zem::testing::ScriptedUnit& unit() { return unit_; }

  Bytes data = Bytes(1000);
  std::uint32_t count = kUntouched;

 private:
  zem::testing::ScriptedUnit& unit_;
};

TEST_F(TirellaTest, WriteOf255BytesIsRefused) {
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 255, &count), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 0, &count), ZEM_E_REFUSED);
  EXPECT_EQ(count, kUntouched);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TirellaTest, WriteOf256BytesIsNineBlocks) {
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 256, &count), 0);
  EXPECT_EQ(count, 256U);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 9U);
  EXPECT_EQ(wire[0],
            "set tirella 4: 00 00 1d 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f"
            " 10 11 12 13 14 15 16 17 18 19 1a 1b 1c");
  EXPECT_EQ(wire[1],
            "set tirella 4: 1d 00 1d 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c"
            " 2d 2e 2f 30 31 32 33 34 35 36 37 38 39");
  EXPECT_EQ(wire[7],
            "set tirella 4: cb 00 1d cb cc cd ce cf d0 d1 d2 d3 d4 d5 d6 d7 d8 d9 da"
            " db dc dd de df e0 e1 e2 e3 e4 e5 e6 e7");
  EXPECT_EQ(wire[8],
            "set tirella 4: e8 00 18 e8 e9 ea eb ec ed ee ef f0 f1 f2 f3 f4 f5 f6 f7"
            " f8 f9 fa fb fc fd fe ff 00 00 00 00 00");
  EXPECT_EQ(TakeDebuggerLines(), WideLines(9, SetLine(0, 32, 2)));
}

TEST_F(TirellaTest, PiecesPastTheEndGoOutEmpty) {
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 300, &count), 0);
  EXPECT_EQ(count, 256U);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 11U);
  EXPECT_EQ(wire[9], "set tirella 4: 00 01 00" + Zeros(29));
  EXPECT_EQ(wire[10], "set tirella 4: 00 01 00" + Zeros(29));
}

TEST_F(TirellaTest, NumberOfPiecesFollowsTheLength) {
  const struct {
    std::uint32_t length;
    std::size_t pieces;
  } kCases[] = {{257, 9}, {261, 9}, {262, 10}, {290, 10}, {291, 11}};
  for (const auto& [length, pieces] : kCases) {
    EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), length, &count), 0);
    EXPECT_EQ(TakeWire().size(), pieces) << length;
  }
}

TEST_F(TirellaTest, WriteEndsWithTheFailureOfEachPiece) {
  for (std::uint32_t failing = 1; failing <= 11; ++failing) {
    SCOPED_TRACE(failing);
    FailTransfer(failing);
    EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 300, &count), kFailedTransfer);
    EXPECT_EQ(count, kUntouched);
    EXPECT_EQ(TakeWire().size(), failing);
  }
}

TEST_F(TirellaTest, LengthsCloseTo32BitsAreNotTakenForShortOnes) {
  for (const std::uint32_t length : {0xFFFFFFE3U, 0xFFFFFFE4U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(length);
    FailTransfer(12);
    EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), length, &count), kFailedTransfer);
    EXPECT_EQ(count, kUntouched);
    EXPECT_EQ(TakeWire().size(), 12U);
    Bytes buffer(256);
    EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), buffer.data(), length, &count), 0);
    EXPECT_EQ(count, 256U);
    EXPECT_EQ(TakeWire().size(), 18U);
    count = kUntouched;
  }
}

TEST_F(TirellaTest, ReadOf30BytesSendsTwoRequests) {
  Bytes first(32, 0xA0);
  unit().Answer(4, first);
  unit().Answer(4, {9, 9, 9, 0xB0, 0xB1});
  Bytes buffer(31, 0x55);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), buffer.data(), 30, &count), 0);
  EXPECT_EQ(count, 30U);
  EXPECT_EQ(TakeWire(), (Lines{"set tirella 4: 00 00 9d" + Zeros(29), "get tirella 4 [32]",
                               "set tirella 4: 1d 00 81" + Zeros(29), "get tirella 4 [32]"}));
  Bytes wanted(29, 0xA0);
  wanted.push_back(0xB0);
  wanted.push_back(0x55);
  EXPECT_EQ(buffer, wanted);
}

TEST_F(TirellaTest, ReadOf1000BytesReads256) {
  unit().AlwaysAnswer(4, Bytes(32, 0xA0));
  Bytes buffer(1000, 0x55);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), buffer.data(), 1000, &count), 0);
  EXPECT_EQ(count, 256U);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 18U);
  EXPECT_EQ(wire[16], "set tirella 4: e8 00 98" + Zeros(29));
  Bytes wanted(256, 0xA0);
  wanted.resize(1000, 0x55);
  EXPECT_EQ(buffer, wanted);
}

TEST_F(TirellaTest, ReadOfNothingSendsNothing) {
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), data.data(), 0, &count), 0);
  EXPECT_EQ(count, 0U);
  count = kUntouched;
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), nullptr, 0, &count), 0);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TirellaTest, LedIsOneByteOnSelector2) {
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(handle(), 0xA5), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set tirella 2: a5"}));
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 1, 2)}));
}

TEST_F(TirellaTest, LedThatCannotBeReachedIsNoFailure) {
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(handle(), 1), 0);
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(kFailedTransfer, 1, 2)}));
}

TEST_F(TirellaTest, NullPointersAreRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(nullptr, nullptr, 0, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(nullptr, nullptr, 0, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(nullptr, 1), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), nullptr, 256, &count), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), data.data(), 256, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), nullptr, 256, &count), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), data.data(), 256, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(count, kUntouched);
  EXPECT_EQ(TakeWire(), Lines());
}

using NoTirellaTest = DeviceTest;

TEST_F(NoTirellaTest, CameraWithoutTheUnit) {
  Bytes bytes(256);
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(handle(), bytes.data(), 256, &count), kUnknownControl);
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(handle(), bytes.data(), 256, &count), kUnknownControl);
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(handle(), 1), 0);
}

}  // namespace
