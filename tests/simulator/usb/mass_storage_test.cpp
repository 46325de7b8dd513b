// The boot loader as USB mass storage, byte by byte.
#include "simulator/usb/mass_storage.h"

#include <gtest/gtest.h>

#include "tests/support/joined.h"

namespace {

using zem::simulator::BootLoader;
using zem::simulator::BootLoaderOptions;
using zem::simulator::CameraOptions;
using zem::simulator::Fault;
using zem::simulator::usb::Answer;
using zem::simulator::usb::Bytes;
using zem::simulator::usb::SetupPacket;
using zem::simulator::usb::UsbBootLoader;
using zem::testing::Joined;

class MassStorageTest : public ::testing::Test {
 protected:
  // A command block: tag 0x11223344.
  static Bytes Command(const Bytes& cdb, std::uint32_t length, bool isIn) {
    Bytes block = {'U',
                   'S',
                   'B',
                   'C',
                   0x44,
                   0x33,
                   0x22,
                   0x11,
                   static_cast<std::uint8_t>(length),
                   static_cast<std::uint8_t>(length >> 8),
                   static_cast<std::uint8_t>(length >> 16),
                   static_cast<std::uint8_t>(length >> 24),
                   static_cast<std::uint8_t>(isIn ? 0x80 : 0),
                   0,
                   static_cast<std::uint8_t>(cdb.size())};
    block.insert(block.end(), cdb.begin(), cdb.end());
    block.resize(31);
    return block;
  }

  static Bytes Status(std::uint8_t residue, std::uint8_t status) {
    return {'U', 'S', 'B', 'S', 0x44, 0x33, 0x22, 0x11, residue, 0, 0, 0, status};
  }

  Answer::Kind Send(const Bytes& bytes) { return device_.Send(2, bytes).kind; }
  void SendDone(const Bytes& bytes) { EXPECT_EQ(Send(bytes), Answer::Kind::kDone); }

  Answer Control(const SetupPacket& setup) { return device_.Control(setup, {}); }

  std::optional<Answer> Ask(std::size_t length) { return device_.Receive(0x81, length, {}); }

  Bytes Receive(std::size_t length) {
    const auto answer = Ask(length);
    EXPECT_TRUE(answer && answer->kind == Answer::Kind::kDone);
    return answer ? answer->data : Bytes();
  }

  static Bytes Vendor(std::uint8_t code, const Bytes& parameters = {}) {
    Bytes cdb = Joined({{0xFA, 0x55, 0x66, code}, parameters});
    cdb.resize(16);
    return cdb;
  }

  std::shared_ptr<BootLoader> loader_ = std::make_shared<BootLoader>(BootLoaderOptions());
  UsbBootLoader device_{CameraOptions(), loader_};
};

TEST_F(MassStorageTest, DescriptorsLiterally) {
  EXPECT_EQ(device_.descriptors().device,
            (Bytes{18, 1, 0, 2, 0, 0, 0, 64, 0x45, 0x5A, 0, 0x8C, 0, 1, 1, 2, 3, 1}));
  EXPECT_EQ(device_.descriptors().configuration,
            (Bytes{9,    2, 32, 0, 1,    1, 0, 0x80, 50, 9, 4, 0, 0, 2, 8, 6,
                   0x50, 0, 7,  5, 0x81, 2, 0, 2,    0,  7, 5, 2, 2, 0, 2, 0}));
  EXPECT_EQ(Control({0xA1, 0xFE, 0, 0, 0, 0, 1, 0}).data, Bytes{0}) << "one unit";
  EXPECT_EQ(Control({0x80, 6, 0, 1, 0, 0, 18, 0}).data, device_.descriptors().device);
  EXPECT_EQ(Control({0xA1, 0x42, 0, 0, 0, 0, 1, 0}).kind, Answer::Kind::kStalled);
}

TEST_F(MassStorageTest, AnInquiry) {
  SendDone(Command({0x12, 0, 0, 0, 0x24, 0}, 36, true));
  const Bytes inquiry = Receive(36);
  ASSERT_EQ(inquiry.size(), 36U);
  EXPECT_EQ(inquiry[3], 1);
  EXPECT_EQ(Receive(13), Status(0, 0));
  EXPECT_FALSE(Ask(13).has_value()) << "the host waits";
}

TEST_F(MassStorageTest, IdentifyInPiecesAndShorterThanOffered) {
  SendDone(Command(Vendor(1), 40, true));
  const Bytes first = Receive(8);
  EXPECT_EQ(first, (Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3'}));
  EXPECT_EQ(Receive(32).size(), 8U);
  EXPECT_EQ(Receive(13), Status(24, 0));
}

TEST_F(MassStorageTest, DataOutInPieces) {
  Bytes sectors(1024);
  sectors[0] = 0x31;
  sectors[1023] = 0x32;
  SendDone(Command(Vendor(2, {0, 2}), 1024, false));
  SendDone({sectors.begin(), sectors.begin() + 512});
  EXPECT_FALSE(Ask(13).has_value());
  SendDone({sectors.begin() + 512, sectors.end()});
  EXPECT_EQ(Receive(13), Status(0, 0));
  EXPECT_EQ(loader_->loadBuffer, sectors);
}

TEST_F(MassStorageTest, ARefusedCommandFailsWithSense) {
  SendDone(Command(Vendor(0x7E), 4, true));
  EXPECT_EQ(Receive(4), Bytes());
  EXPECT_EQ(Receive(13), Status(4, 1));
  SendDone(Command({3, 0, 0, 0, 18, 0}, 18, true));
  EXPECT_EQ(Receive(18), (Bytes{0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x24, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Receive(13), Status(0, 0));
  SendDone(Command({3, 0, 0, 0, 8, 0}, 8, true));
  EXPECT_EQ(Receive(8), (Bytes{0x70, 0, 0, 0, 0, 0, 0, 10})) << "told once";
  EXPECT_EQ(Receive(13), Status(0, 0));
}

TEST_F(MassStorageTest, CommandsToDisksDoNotReachTheBootLoader) {
  loader_->AddFault({Fault::Kind::kFail, 1, 1, 0});
  SendDone(Command({0, 0, 0, 0, 0, 0}, 0, false));
  EXPECT_EQ(Receive(13), Status(0, 1));
  SendDone(Command({3, 0, 0, 0, 18, 0}, 18, true));
  EXPECT_EQ(Receive(18)[12], 0x3A) << "no medium";
  EXPECT_EQ(Receive(13), Status(0, 0));
  SendDone(Command({0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 8, true));
  EXPECT_EQ(Receive(8), Bytes());
  EXPECT_EQ(Receive(13), Status(8, 1));
  // The first command of the boot loader's own is the one that fails.
  SendDone(Command(Vendor(1), 16, true));
  EXPECT_EQ(Receive(16), Bytes());
  EXPECT_EQ(Receive(13), Status(16, 2)) << "a phase error";
}

TEST_F(MassStorageTest, ADeviceThatLeavesAnswersNothing) {
  loader_->AddFault({Fault::Kind::kUnplug, 1, 1, 0});
  EXPECT_EQ(Send(Command(Vendor(1), 16, true)), Answer::Kind::kGone);
  EXPECT_EQ(Ask(16)->kind, Answer::Kind::kGone);
  EXPECT_EQ(Send(Command(Vendor(1), 16, true)), Answer::Kind::kGone);
  EXPECT_EQ(Control({0x80, 0, 0, 0, 0, 0, 2, 0}).kind, Answer::Kind::kGone);
}

TEST_F(MassStorageTest, WhatIsNoCommandHaltsUntilTheReset) {
  const auto changed = [](std::size_t place, std::uint8_t value) {
    Bytes block = Command(Vendor(1), 16, true);
    block[place] = value;
    return block;
  };
  const Bytes whole = Command(Vendor(1), 16, true);
  const Bytes kBlocks[] = {{},
                           {whole.begin(), whole.begin() + 30},
                           Joined({whole, {0}}),
                           changed(0, 'X'),
                           changed(13, 1),   // another unit
                           changed(14, 0),   // no command
                           changed(14, 17),  // longer than one
                           changed(11, 1)};  // more than any command moves
  for (const Bytes& block : kBlocks) {
    EXPECT_EQ(Send(block), Answer::Kind::kStalled);
    EXPECT_EQ(Ask(13)->kind, Answer::Kind::kStalled);
    EXPECT_EQ(Send(whole), Answer::Kind::kStalled);
    EXPECT_EQ(Control({0x21, 0xFF, 0, 0, 0, 0, 0, 0}).kind, Answer::Kind::kDone);
    SendDone(whole);
    EXPECT_EQ(Receive(16).size(), 16U);
    EXPECT_EQ(Receive(13), Status(0, 0));
  }
}

TEST_F(MassStorageTest, MoreDataThanAnnouncedHalts) {
  SendDone(Command(Vendor(2, {0, 1}), 512, false));
  EXPECT_EQ(Send(Bytes(513)), Answer::Kind::kStalled);
}

TEST_F(MassStorageTest, ASilentCommandHasNoStatusUntilTheReset) {
  loader_->AddFault({Fault::Kind::kSilent, 1, 2, 0});
  for (const SetupPacket& reset :
       {SetupPacket{0x21, 0xFF, 0, 0, 0, 0, 0, 0}, SetupPacket{0x00, 9, 1, 0, 0, 0, 0, 0}}) {
    SendDone(Command(Vendor(1), 16, true));
    EXPECT_FALSE(Ask(16).has_value());
    EXPECT_EQ(Control(reset).kind, Answer::Kind::kDone);
    EXPECT_FALSE(Ask(13).has_value());
  }
  SendDone(Command(Vendor(1), 16, true));
  EXPECT_EQ(Receive(16).size(), 16U);
  EXPECT_EQ(Receive(13), Status(0, 0));
}

TEST_F(MassStorageTest, ItLeavesBehindTheStatusOfItsLastCommand) {
  SendDone(Command(Vendor(2, {0, 1}), 512, false));
  SendDone(Bytes(512));
  device_.Leave();
  EXPECT_FALSE(device_.isGone());
  EXPECT_EQ(Receive(13), Status(0, 0));
  EXPECT_TRUE(device_.isGone());
  EXPECT_EQ(Ask(13)->kind, Answer::Kind::kGone);
  EXPECT_EQ(Send(Command(Vendor(1), 16, true)), Answer::Kind::kGone);
}

TEST_F(MassStorageTest, AHostThatLetsGoLeavesNoCommandBehind) {
  SendDone(Command(Vendor(2, {0, 1}), 512, false));
  device_.Release();
  SendDone(Command(Vendor(1), 16, true));
  EXPECT_EQ(Receive(16).size(), 16U);
}

TEST_F(MassStorageTest, ItHasTwoEndpoints) {
  EXPECT_EQ(device_.Receive(0x82, 16, {})->kind, Answer::Kind::kStalled);
  EXPECT_EQ(device_.Send(1, {}).kind, Answer::Kind::kStalled);
}

}  // namespace
