// The simulated camera's answers to commands.
#include "simulator/vendor_unit.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using zem::simulator::Outcome;
using zem::simulator::VendorUnit;
using Bytes = std::vector<std::uint8_t>;

class VendorUnitTest : public ::testing::Test {
 protected:
  // Sends a command and reads the reply.
  Bytes Ask(std::uint16_t commandSelector, const Bytes& command, std::uint16_t replySelector) {
    EXPECT_EQ(unit.Set(commandSelector, command), Outcome::kDone);
    Bytes reply;
    EXPECT_EQ(unit.Get(replySelector, command.size(), reply), Outcome::kDone);
    return reply;
  }
  Bytes AskIsp(const Bytes& command) { return Ask(1, command, 2); }
  Bytes AskVcp(const Bytes& command) { return Ask(4, command, 5); }

  VendorUnit unit;
};

TEST_F(VendorUnitTest, RegisterSpacesAreApart) {
  AskIsp({0x0A, 0x01, 0x56, 0x34, 0xCD, 0xAB, 0x12, 0});
  AskIsp({0x0A, 0x03, 0x56, 0x34, 0x11, 0x00, 0, 0});
  AskIsp({0x0A, 0x05, 0x56, 0x34, 0x22, 0x33, 0, 0});
  EXPECT_EQ(AskIsp({0x0A, 0x00, 0x56, 0x34, 0, 0, 0x12, 0}), (Bytes{0, 0, 0xCD, 0xAB, 0, 0, 0, 0}));
  EXPECT_EQ(AskIsp({0x0A, 0x00, 0x56, 0x34, 0, 0, 0, 0}), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(AskIsp({0x0A, 0x02, 0x56, 0x34, 0, 0, 0, 0}), (Bytes{0, 0, 0x11, 0, 0, 0, 0, 0}));
  EXPECT_EQ(AskIsp({0x0A, 0x04, 0x56, 0x34, 0, 0, 0, 0}), (Bytes{0, 0, 0x22, 0x33, 0, 0, 0, 0}));
  EXPECT_EQ(AskIsp({0x0A, 0x06, 0, 0, 0, 0, 0, 0})[0], 1) << "no such space";
}

TEST_F(VendorUnitTest, LensPositionVersionCheckSumAndInformation) {
  AskIsp({0, 0, 0, 0, 4, 3, 2, 1});
  EXPECT_EQ(unit.state.lensPosition, 0x01020304U);
  EXPECT_EQ(AskIsp({0x0B, 0, 0, 0, 0, 0, 0, 0}), (Bytes{0, 0, 1, 2, 3, 4, 5, 6}));
  unit.state.checkSumStatus = 0x80;
  EXPECT_EQ(AskVcp({6, 0, 0, 0, 0, 0, 0, 0})[0], 0x80);
  Bytes info;
  EXPECT_EQ(unit.Get(10, 8, info), Outcome::kDone);
  EXPECT_EQ(info.size(), 8U);
}

TEST_F(VendorUnitTest, CodecRegistersNeedTheirSelection) {
  EXPECT_EQ(AskVcp({0xFF, 0x02, 0x12, 0x34, 0, 0, 0, 0})[0], 1);
  AskVcp({0xFF, 0x00, 0x14, 0, 0, 0, 0, 0});
  AskVcp({0xFF, 0x01, 0x12, 0x34, 0x5C, 0, 0, 0});
  EXPECT_EQ(AskVcp({0xFF, 0x02, 0x12, 0x34, 0, 0, 0, 0}), (Bytes{0, 0, 0x5C, 0, 0, 0, 0, 0}));
  EXPECT_EQ(unit.state.codecRegisters.at(0x1234), 0x5C);
  AskVcp({0xFF, 0x00, 0x15, 0, 0, 0, 0, 0});
  EXPECT_EQ(AskVcp({0xFF, 0x02, 0x12, 0x34, 0, 0, 0, 0})[0], 1);
}

TEST_F(VendorUnitTest, ExtendedChannelsEchoAndAccept) {
  Bytes command(16, 7);
  Bytes echo = command;
  echo[0] = 0;
  EXPECT_EQ(Ask(6, command, 7), echo);
  EXPECT_EQ(Ask(14, command, 15), echo);
}

TEST_F(VendorUnitTest, EitherCommandSendsItIntoRomBoot) {
  int entered = 0;
  unit.enterRomBoot = [&] { ++entered; };
  EXPECT_EQ(AskVcp({0x16, 0, 0, 0, 0, 0, 0, 0})[0], 0);
  EXPECT_EQ(entered, 1);
  Bytes command(16, 0);
  command[0] = 0xFF;
  EXPECT_EQ(Ask(14, command, 15)[0], 0);
  EXPECT_EQ(entered, 1);
  command[1] = 0x03;
  EXPECT_EQ(Ask(14, command, 15)[0], 0);
  EXPECT_EQ(entered, 2);
  Ask(6, command, 7);
  EXPECT_EQ(entered, 2) << "not on this channel";
  unit.enterRomBoot = nullptr;
  EXPECT_EQ(AskVcp({0x16, 0, 0, 0, 0, 0, 0, 0})[0], 1) << "no boot loader to go to";
}

TEST_F(VendorUnitTest, ProcessorMemoryStartsOverWithEachCommand) {
  EXPECT_EQ(unit.Set(9, Bytes(16, 0x11)), Outcome::kDone);
  EXPECT_EQ(unit.Set(9, Bytes(16, 0x22)), Outcome::kDone);
  EXPECT_EQ(unit.Set(9, Bytes(15)), Outcome::kWrongLength);
  AskIsp({0x0B, 0, 0, 0, 0, 0, 0, 0});
  for (const std::uint8_t expected : Bytes{0x11, 0x22, 0x00}) {
    Bytes piece;
    EXPECT_EQ(unit.Get(8, 16, piece), Outcome::kDone);
    EXPECT_EQ(piece, Bytes(16, expected));
  }
  Bytes piece;
  EXPECT_EQ(unit.Get(8, 8, piece), Outcome::kWrongLength);
  AskIsp({0x0B, 0, 0, 0, 0, 0, 0, 0});
  for (int index = 0; index < 4096; ++index) {
    EXPECT_EQ(unit.Set(9, Bytes(16)), Outcome::kDone);
  }
  EXPECT_EQ(unit.Set(9, Bytes(16)), Outcome::kFailed) << "the memory ends";
}

TEST_F(VendorUnitTest, ACommandsReplyTakesThePlaceOfTheTransferStatus) {
  EXPECT_EQ(AskVcp({1, 2, 0, 0, 0, 0, 0, 0}), Bytes(8));
  EXPECT_EQ(AskVcp({0x77, 0, 0, 0, 0, 0, 0, 0})[0], 1);
  EXPECT_EQ(AskVcp({1, 0, 3, 5, 0, 0, 0, 0})[0], 0);
}

TEST_F(VendorUnitTest, UnknownCommandsSelectorsAndLengths) {
  EXPECT_EQ(AskIsp({0x77, 0, 0, 0, 0, 0, 0, 0})[0], 1);
  EXPECT_EQ(AskVcp({0x77, 0, 0, 0, 0, 0, 0, 0})[0], 1);
  Bytes bytes;
  EXPECT_EQ(unit.Get(99, 8, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(1, 8, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(2, Bytes(8)), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(1, Bytes(7)), Outcome::kWrongLength);
}

}  // namespace
