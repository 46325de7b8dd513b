// Multicast commands on the vendor unit.
#include "tests/support/device_test.h"

namespace {

using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;

using MulticastTest = zem::testing::DeviceTest;

TEST_F(MulticastTest, StreamIdReadsNoStatus) {
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_MulticastStreamID(handle(), 0xA5), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 23 a5 00 00 00 00 00 00"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(MulticastTest, LayerReadsNoStatus) {
  vendor().AlwaysAnswer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(handle(), 0x5A), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 24 5a 00 00 00 00 00 00"});
}

TEST_F(MulticastTest, FailureIsReturnedAsItIs) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_MulticastStreamID(handle(), 1), kFailedTransfer);
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(handle(), 1), kFailedTransfer);
}

TEST_F(MulticastTest, CommitIsPacked) {
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 0x11, 0x2233, 0x4455, 0x15, 0x0400), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 25 11 33 22 55 44 15 80", "get vendor 5 [8]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_F(MulticastTest, CommitKeepsFiveBitsAndEleven) {
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 0, 0, 0, 0x3F, 0x0801), 0);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 0, 0, 0, 0xFF, 0xFFFF), 0);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 0, 0, 0, 0xE0, 0xF800), 0);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 0, 0, 0, 0x00, 0x0001), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 25 00 00 00 00 00 3f 00", "get vendor 5 [8]",
                               "set vendor 4: 25 00 00 00 00 00 ff ff", "get vendor 5 [8]",
                               "set vendor 4: 25 00 00 00 00 00 00 00", "get vendor 5 [8]",
                               "set vendor 4: 25 00 00 00 00 00 20 00", "get vendor 5 [8]"}));
}

TEST_F(MulticastTest, NullHandleSendsNothing) {
  EXPECT_EQ(ZEMAPI_MulticastStreamID(nullptr, 1), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(nullptr, 1), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_MulticastCommit(nullptr, 1, 2, 3, 4, 5), ZEM_E_NO_DEVICE);
  EXPECT_EQ(system().comInitializations, 0);
}

TEST_F(MulticastTest, CameraWithoutTopology) {
  handle();
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  EXPECT_EQ(ZEMAPI_MulticastStreamID(handle(), 1), zem::testing::RecordingGate::kRefusal);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(handle(), 1), zem::testing::RecordingGate::kRefusal);
  EXPECT_EQ(ZEMAPI_MulticastCommit(handle(), 1, 2, 3, 4, 5), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

}  // namespace
