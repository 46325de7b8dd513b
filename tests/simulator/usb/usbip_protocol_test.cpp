// USB/IP messages, byte by byte.
#include "simulator/usb/usbip_protocol.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/joined.h"

namespace {

using zem::simulator::usb::Bytes;
using zem::simulator::usb::ExportedDevice;
using zem::simulator::usb::ImportRefusal;
using zem::simulator::usb::ImportReply;
using zem::simulator::usb::ImportRequest;
using zem::simulator::usb::IsoPacket;
using zem::simulator::usb::ListReply;
using zem::simulator::usb::ListRequest;
using zem::simulator::usb::ProtocolError;
using zem::simulator::usb::Reader;
using zem::simulator::usb::SubmitCommand;
using zem::simulator::usb::SubmitReply;
using zem::simulator::usb::UnlinkCommand;
using zem::simulator::usb::UnlinkReply;
using zem::testing::Joined;

Bytes Padded(std::string_view text, std::size_t size) {
  Bytes field(text.begin(), text.end());
  field.resize(size);
  return field;
}

const ExportedDevice kCamera = {"/sim/1-1", "1-1", 1, 2, 3, 0x5A45, 0x8C00,
                                0x0102,     0xEF,  2, 1, 1, 1,      {{0x0E, 1, 0}, {0x0E, 2, 0}}};

const Bytes kCameraFields = Joined({Padded("/sim/1-1", 256),
                                    Padded("1-1", 32),
                                    {0,    0,    0,    1,    0,    0,    0,    2, 0, 0, 0, 3,
                                     0x5A, 0x45, 0x8C, 0x00, 0x01, 0x02, 0xEF, 2, 1, 1, 1, 2}});

const Bytes kSetup = {0x81, 0x06, 0x00, 0x01, 0x00, 0x00, 0x12, 0x00};

// Submit: sequence 7, device 1.2, endpoint 0.
Bytes Submit(std::uint8_t direction, std::uint32_t length, std::uint32_t packets = 0xFFFFFFFF,
             std::uint8_t endpoint = 0) {
  const auto big = [](std::uint32_t number) {
    return Bytes{static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
                 static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
  };
  return Joined(
      {{0, 0, 0, 1, 0, 0, 0, 7, 0, 1, 0, 2, 0, 0, 0, direction, 0, 0, 0, endpoint, 0, 0, 2, 0},
       big(length),
       {0, 0, 0, 9},
       big(packets),
       {0, 0, 0, 4},
       kSetup});
}

TEST(UsbIpTest, ListOfDevices) {
  EXPECT_EQ(ListReply({}), (Bytes{1, 0x11, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0}));
  const ExportedDevice devices[] = {kCamera};
  EXPECT_EQ(ListReply(devices), Joined({{1, 0x11, 0, 5, 0, 0, 0, 0, 0, 0, 0, 1},
                                        kCameraFields,
                                        {0x0E, 1, 0, 0, 0x0E, 2, 0, 0}}));
  EXPECT_EQ(kCamera.id(), 0x00010002U);
}

TEST(UsbIpTest, AnImportIsAnsweredWithTheDeviceOrRefused) {
  EXPECT_EQ(ImportReply(kCamera), Joined({{1, 0x11, 0, 3, 0, 0, 0, 0}, kCameraFields}));
  EXPECT_EQ(ImportReply(kCamera).size(), 320U);
  EXPECT_EQ(ImportRefusal(), (Bytes{1, 0x11, 0, 3, 0, 0, 0, 1}));
}

TEST(UsbIpTest, TextsThatAreTooLongAreCutBeforeTheirEnd) {
  ExportedDevice device = kCamera;
  device.path = std::string(300, 'p');
  device.busId = std::string(40, 'b');
  const Bytes reply = ImportReply(device);
  EXPECT_EQ(reply.size(), 320U);
  EXPECT_EQ(reply[8 + 254], 'p');
  EXPECT_EQ(reply[8 + 255], 0);
  EXPECT_EQ(reply[8 + 256 + 30], 'b');
  EXPECT_EQ(reply[8 + 256 + 31], 0);
}

TEST(UsbIpTest, RequestsInPiecesOfEverySize) {
  const Bytes stream =
      Joined({{1, 0x11, 0x80, 5, 0, 0, 0, 0}, {1, 0x11, 0x80, 3, 0, 0, 0, 0}, Padded("1-1", 32)});
  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    Reader reader;
    int lists = 0;
    std::vector<std::string> imports;
    for (std::size_t position = 0; position < stream.size(); position += piece) {
      reader.Feed(std::span(stream).subspan(position, std::min(piece, stream.size() - position)));
      while (const auto request = reader.NextRequest()) {
        if (const auto* const import = std::get_if<ImportRequest>(&*request)) {
          imports.push_back(import->busId);
        } else {
          ++lists;
        }
      }
    }
    EXPECT_EQ(lists, 1) << piece;
    EXPECT_EQ(imports, std::vector<std::string>{"1-1"}) << piece;
    EXPECT_EQ(reader.waiting(), 0U) << piece;
  }
}

TEST(UsbIpTest, ABusIdWithoutAnEndIsTheWholeField) {
  Reader reader;
  reader.Feed(Joined({{1, 0x11, 0x80, 3, 0, 0, 0, 0}, Bytes(32, 'x')}));
  EXPECT_EQ(std::get<ImportRequest>(*reader.NextRequest()).busId, std::string(32, 'x'));
}

TEST(UsbIpTest, WhatIsNoRequestEndsTheConnection) {
  for (const Bytes& message :
       {Bytes{1, 0x10, 0x80, 5, 0, 0, 0, 0}, Bytes{1, 0x11, 0x80, 4, 0, 0, 0, 0},
        Bytes{'G', 'E', 'T', ' ', '/', ' ', 'H', 'T'}}) {
    Reader reader;
    reader.Feed(message);
    EXPECT_THROW(static_cast<void>(reader.NextRequest()), ProtocolError);
  }
}

TEST(UsbIpTest, ATransferIn) {
  Reader reader;
  reader.Feed(Submit(1, 18));
  const auto command = std::get<SubmitCommand>(*reader.NextCommand());
  EXPECT_EQ(command.sequence, 7U);
  EXPECT_EQ(command.device, 0x00010002U);
  EXPECT_TRUE(command.isIn);
  EXPECT_EQ(command.endpoint, 0U);
  EXPECT_EQ(command.flags, 0x200U);
  EXPECT_EQ(command.length, 18U);
  EXPECT_EQ(command.startFrame, 9U);
  EXPECT_EQ(command.interval, 4U);
  EXPECT_TRUE(std::equal(kSetup.begin(), kSetup.end(), command.setup.begin()));
  EXPECT_TRUE(command.data.empty());
  EXPECT_TRUE(command.packets.empty());
  EXPECT_EQ(SubmitReply(command, 0, Bytes{0xA0, 0xA1, 0xA2}),
            Joined({{0, 0, 0, 3, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                     0, 0, 0, 3, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                    {0xA0, 0xA1, 0xA2}}));
}

TEST(UsbIpTest, ATransferOutInPiecesOfEverySize) {
  const Bytes stream = Joined({Submit(0, 3, 0), {1, 2, 3}, Submit(0, 0), Submit(1, 4)});
  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    Reader reader;
    std::vector<SubmitCommand> commands;
    for (std::size_t position = 0; position < stream.size(); position += piece) {
      reader.Feed(std::span(stream).subspan(position, std::min(piece, stream.size() - position)));
      while (const auto command = reader.NextCommand()) {
        commands.push_back(std::get<SubmitCommand>(*command));
      }
    }
    ASSERT_EQ(commands.size(), 3U) << piece;
    EXPECT_EQ(commands[0].data, (Bytes{1, 2, 3}));
    EXPECT_FALSE(commands[0].isIn);
    EXPECT_TRUE(commands[1].data.empty());
    EXPECT_TRUE(commands[2].isIn);
  }
}

TEST(UsbIpTest, TheEndOfATransferOutHasACountAndNoBytes) {
  SubmitCommand command;
  command.sequence = 0x01020304;
  EXPECT_EQ(
      SubmitReply(command, -32, {}, 5),
      (Bytes{0, 0, 0, 3, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xE0,
             0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0,    0}));
}

TEST(UsbIpTest, AnIsochronousTransferHasItsPackets) {
  Reader reader;
  reader.Feed(Joined({Submit(1, 20, 2),
                      {0, 0, 0, 0, 0, 0, 0, 12, 0, 0, 0, 1, 0, 0, 0, 2},
                      {0, 0, 0, 12, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0}}));
  const auto command = std::get<SubmitCommand>(*reader.NextCommand());
  ASSERT_EQ(command.packets.size(), 2U);
  EXPECT_EQ(command.packets[0].length, 12U);
  EXPECT_EQ(command.packets[0].actualLength, 1U);
  EXPECT_EQ(command.packets[0].status, 2U);
  EXPECT_EQ(command.packets[1].offset, 12U);
  const IsoPacket packets[] = {{0, 12, 2, 0}, {12, 8, 0, 0}};
  const Bytes reply = SubmitReply(command, 0, Bytes{7, 8}, 0, packets);
  ASSERT_EQ(reply.size(), 48U + 2 + 32);
  EXPECT_EQ(reply[27], 2) << "bytes that moved";
  EXPECT_EQ(reply[35], 2) << "packets";
  EXPECT_EQ(Bytes(reply.begin() + 48, reply.begin() + 66),
            (Bytes{7, 8, 0, 0, 0, 0, 0, 0, 0, 12, 0, 0, 0, 2, 0, 0, 0, 0}));
}

TEST(UsbIpTest, ATransferIsTakenBack) {
  Reader reader;
  Bytes message = {0, 0, 0, 2, 0, 0, 0, 8, 0, 1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
  message.resize(48);
  reader.Feed(message);
  const auto command = std::get<UnlinkCommand>(*reader.NextCommand());
  EXPECT_EQ(command.sequence, 8U);
  EXPECT_EQ(command.device, 0x00010002U);
  EXPECT_EQ(command.target, 7U);
  EXPECT_EQ(reader.waiting(), 0U);
  Bytes expected = {0, 0, 0, 4, 0, 0, 0, 8, 0,    0,    0,    0,
                    0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x98};
  expected.resize(48);
  EXPECT_EQ(UnlinkReply(command, -104), expected);
}

TEST(UsbIpTest, CommandsThatCannotBeEndTheConnection) {
  Bytes unknown(48);
  unknown[3] = 9;
  const Bytes kMessages[] = {unknown,
                             Submit(2, 0),               // no direction
                             Submit(1, (1U << 20) + 1),  // more than any transfer needs
                             Submit(0, 0xFFFFFFFF),
                             Submit(1, 0, 1025),  // packets
                             Submit(1, 0, 0xFFFFFFFE),
                             Submit(1, 0, 0, 16)};  // no endpoint
  for (const Bytes& message : kMessages) {
    Reader reader;
    reader.Feed(message);
    EXPECT_THROW(static_cast<void>(reader.NextCommand()), ProtocolError);
  }
  // Packets that reach out of their transfer.
  for (const Bytes& packet : {Bytes{0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                              Bytes{0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0},
                              Bytes{0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0}}) {
    Reader reader;
    reader.Feed(Joined({Submit(1, 4, 1), packet}));
    EXPECT_THROW(static_cast<void>(reader.NextCommand()), ProtocolError);
  }
  // The most that may be.
  Reader reader;
  reader.Feed(Submit(1, 1U << 20, 0, 15));
  EXPECT_TRUE(reader.NextCommand().has_value());
}

}  // namespace
