// The caller's own blocks on each of the four channels.
#include <array>

#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;

using Block = std::array<unsigned char, 8>;
using LongBlock = std::array<unsigned char, 16>;

// The two 8-byte channels behave alike.
struct ShortChannel {
  const char* name;
  std::uint16_t replySelector;
  ZemResult (*send)(void* handle, unsigned char* command, unsigned char* reply);
  Lines wire;
};
void PrintTo(const ShortChannel& channel, std::ostream* out) { *out << channel.name; }

class RawCommandTest : public DeviceTest, public ::testing::WithParamInterface<ShortChannel> {
 protected:
  ZemResult Send() { return GetParam().send(handle(), command.data(), reply.data()); }

  Block command = {1, 2, 3, 4, 5, 6, 7, 8};
  Block reply = {0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A};
};

TEST_P(RawCommandTest, SendsTheBlockAndHandsOutTheReplyWhateverItsStatus) {
  vendor().Answer(GetParam().replySelector, {0x77, 1, 2, 3, 4, 5, 6, 7});
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(reply, (Block{0x77, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(TakeWire(), GetParam().wire);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 8)});
}

TEST_P(RawCommandTest, FailedWriteIsReturnedAndLeavesTheReply) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Send(), kFailedTransfer);
  EXPECT_EQ(reply[0], 0x5A);
  EXPECT_EQ(TakeWire().size(), 1U);
}

TEST_P(RawCommandTest, FailedReadIsReturnedAndTheReplyIsZeros) {
  handle();
  FailTransfer(2);
  EXPECT_EQ(Send(), kFailedTransfer);
  EXPECT_EQ(reply, Block{});
}

TEST_P(RawCommandTest, PositiveResultOfTheReadIsReturnedAndThatOfTheWriteIsNoFailure) {
  handle();
  vendor().Answer(GetParam().replySelector, {0, 1, 2, 3, 4, 5, 6, 7});
  gate.AnswerEverything(7);
  EXPECT_EQ(Send(), 7);
  EXPECT_EQ(reply, (Block{0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(TakeWire(), GetParam().wire);
}

TEST_P(RawCommandTest, CommandAndReplyMayBeOneBuffer) {
  vendor().Answer(GetParam().replySelector, {9, 8, 7, 6, 5, 4, 3, 2});
  EXPECT_EQ(GetParam().send(handle(), command.data(), command.data()), 0);
  EXPECT_EQ(command, (Block{9, 8, 7, 6, 5, 4, 3, 2}));
  EXPECT_EQ(TakeWire(), GetParam().wire);
}

INSTANTIATE_TEST_SUITE_P(
    Channels, RawCommandTest,
    ::testing::Values(ShortChannel{"Isp",
                                   2,
                                   &ZEMAPI_IspCommand,
                                   {"set vendor 1: 01 02 03 04 05 06 07 08", "get vendor 2 [8]"}},
                      ShortChannel{"Vcp",
                                   5,
                                   &ZEMAPI_VcpCommand,
                                   {"set vendor 4: 01 02 03 04 05 06 07 08", "get vendor 5 [8]"}}),
    [](const auto& parameters) { return parameters.param.name; });

// So do the two extended ones.
using LongChannel = ShortChannel;

class ExtendedCommandTest : public DeviceTest, public ::testing::WithParamInterface<LongChannel> {
 protected:
  ZemResult Send() { return GetParam().send(handle(), command.data(), reply.data()); }

  LongBlock command = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  LongBlock reply = {0x5A, 0x5A};
};

TEST_P(ExtendedCommandTest, SendsTheBlockAndHandsOutTheReply) {
  vendor().Answer(GetParam().replySelector, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(reply, (LongBlock{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
  EXPECT_EQ(TakeWire(), GetParam().wire);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(0, 16)});
}

TEST_P(ExtendedCommandTest, RefusalStillHandsOutTheWholeReply) {
  vendor().Answer(GetParam().replySelector, {3, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
  EXPECT_EQ(Send(), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(reply, (LongBlock{3, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
}

TEST_P(ExtendedCommandTest, PositiveResultsAreASuccess) {
  handle();
  vendor().Answer(GetParam().replySelector, {0, 1, 2});
  gate.AnswerEverything(7);
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(reply, (LongBlock{0, 1, 2}));
  EXPECT_EQ(TakeWire(), GetParam().wire);
}

TEST_P(ExtendedCommandTest, FailedWrite) {
  handle();
  FailTransfer(1);
  EXPECT_EQ(Send(), ZEM_E_NO_DEVICE);
  EXPECT_EQ(reply[0], 0x5A);
  EXPECT_EQ(TakeWire().size(), 1U);
}

TEST_P(ExtendedCommandTest, FailedReadLooksLikeSuccess) {
  handle();
  FailTransfer(2);
  EXPECT_EQ(Send(), 0);
  EXPECT_EQ(reply, LongBlock{});
}

INSTANTIATE_TEST_SUITE_P(
    Channels, ExtendedCommandTest,
    ::testing::Values(LongChannel{"Isp",
                                  7,
                                  &ZEMAPI_IspCommandEx,
                                  {"set vendor 6: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                                   "get vendor 7 [16]"}},
                      LongChannel{"Vcp",
                                  15,
                                  &ZEMAPI_VcpCommandEx,
                                  {"set vendor 14: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                                   "get vendor 15 [16]"}}),
    [](const auto& parameters) { return parameters.param.name; });

}  // namespace
