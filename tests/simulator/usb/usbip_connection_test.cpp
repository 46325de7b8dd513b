// One client of the server: its requests, transfers of every kind, and what a hostile one sends.
#include "simulator/usb/usbip_connection.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/joined.h"

namespace {

using zem::simulator::usb::Answer;
using zem::simulator::usb::Bytes;
using zem::simulator::usb::DescribeExport;
using zem::simulator::usb::DeviceDescriptors;
using zem::simulator::usb::ExportedDevice;
using zem::simulator::usb::ProtocolError;
using zem::simulator::usb::SetupPacket;
using zem::simulator::usb::StallReason;
using zem::simulator::usb::Time;
using zem::simulator::usb::UsbDevice;
using zem::simulator::usb::UsbIpConnection;
using zem::simulator::usb::UsbIpExports;
using zem::testing::Joined;

// A device whose answers a test gives.
class ScriptedDevice : public UsbDevice {
 public:
  const DeviceDescriptors& descriptors() const override { return descriptors_; }
  Answer Control(const SetupPacket& setup, std::span<const std::uint8_t> data) override {
    setups.push_back(setup);
    sent.assign(data.begin(), data.end());
    isGone_ = isGone_ || leavesBehindControl;
    return control;
  }
  Answer Send(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) override {
    sent = Joined({{endpoint}, Bytes(bytes.begin(), bytes.end())});
    return send;
  }
  std::optional<Answer> Receive(std::uint8_t endpoint, std::size_t length, Time now) override {
    asked = length;
    ++asks;
    const auto due = dues.find(endpoint);
    if (due != dues.end() && now < due->second) {
      return std::nullopt;
    }
    const auto found = receive.find(endpoint);
    if (found == receive.end() || found->second.empty()) {
      return std::nullopt;
    }
    Answer answer = found->second.front();
    found->second.erase(found->second.begin());
    return answer;
  }
  std::optional<Time> NextDue(std::uint8_t endpoint) const override {
    const auto found = dues.find(endpoint);
    return found != dues.end() ? std::optional(found->second) : std::nullopt;
  }
  void Release() override {}
  bool isGone() const override { return isGone_; }

  Answer control = Answer::Done();
  Answer send = Answer::Done();
  std::map<std::uint8_t, std::vector<Answer>> receive;
  std::map<std::uint8_t, Time> dues;
  std::vector<SetupPacket> setups;
  Bytes sent;
  std::size_t asked = 0;
  int asks = 0;
  bool leavesBehindControl = false;

 private:
  DeviceDescriptors descriptors_ = {
      {18, 1, 0, 2, 0xEF, 2, 1, 64, 0x45, 0x5A, 0, 0x8C, 0x34, 0x12, 1, 2, 3, 1},
      {9, 2, 27, 0, 2, 1, 0, 0x80, 50, 9, 4, 0, 0, 0, 0x0E, 1, 0, 0, 9, 4, 1, 0, 0, 0x0E, 2, 7, 0},
      {},
      {}};
  bool isGone_ = false;
};

class OneExport : public UsbIpExports {
 public:
  std::vector<ExportedDevice> List() override { return {DescribeExport(*device, 3)}; }
  std::shared_ptr<UsbDevice> Take(const std::string& busId) override {
    takes += busId + " ";
    return isTaken ? nullptr : device;
  }

  std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
  std::string takes;
  bool isTaken = false;
};

Bytes Big(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
          static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

Bytes SubmitMessage(std::uint8_t sequence, bool isIn, std::uint8_t endpoint, std::uint32_t length,
                    const Bytes& data = {}, const Bytes& setup = Bytes(8),
                    std::uint8_t packets = 0) {
  Bytes message = Joined({Big(1), Big(sequence), Big(0x10003), Big(isIn ? 1 : 0), Big(endpoint),
                          Big(0), Big(length), Big(0), Big(packets), Big(0), setup, data});
  message.resize(message.size() + 16U * packets);
  return message;
}

Bytes UnlinkMessage(std::uint8_t sequence, std::uint8_t target) {
  return Joined({Big(2), Big(sequence), Big(0x10003), Big(0), Big(0), Big(target), Bytes(24)});
}

Bytes SubmitAnswer(std::uint8_t sequence, std::uint32_t status, std::uint32_t moved,
                   const Bytes& data = {}) {
  return Joined({Big(3), Big(sequence), Bytes(12), Big(status), Big(moved), Bytes(20), data});
}

Bytes UnlinkAnswer(std::uint8_t sequence, std::uint32_t status) {
  return Joined({Big(4), Big(sequence), Bytes(12), Big(status), Bytes(24)});
}

constexpr std::uint32_t kStalled = 0xFFFFFFE0;
constexpr std::uint32_t kOverflow = 0xFFFFFFB5;
constexpr std::uint32_t kTakenBack = 0xFFFFFF98;

const Bytes kGetSetup = {0xA1, 0x81, 0, 2, 0, 3, 8, 0};

class UsbIpConnectionTest : public ::testing::Test {
 protected:
  // What the client gets for what it sends.
  Bytes Exchange(const Bytes& sent, Time now = {}) { return Exchange(connection_, sent, now); }
  static Bytes Exchange(UsbIpConnection& connection, const Bytes& sent, Time now = {}) {
    connection.Feed(sent);
    connection.Run(now);
    Bytes output(connection.output().begin(), connection.output().end());
    connection.Written(output.size());
    return output;
  }

  std::shared_ptr<ScriptedDevice> device_ = std::make_shared<ScriptedDevice>();
  UsbIpConnection connection_{device_};
};

TEST_F(UsbIpConnectionTest, ADeviceIsDescribedByItsDescriptors) {
  const ExportedDevice device = DescribeExport(*device_, 3);
  EXPECT_EQ(device.busId, "1-3");
  EXPECT_EQ(device.path, "/simulated/usb1/1-3");
  EXPECT_EQ(device.id(), 0x10003U);
  EXPECT_EQ(device.speed, 3U);
  EXPECT_EQ(device.vendor, 0x5A45);
  EXPECT_EQ(device.product, 0x8C00);
  EXPECT_EQ(device.release, 0x1234);
  EXPECT_EQ(device.deviceClass, 0xEF);
  EXPECT_EQ(device.subclass, 2);
  EXPECT_EQ(device.protocol, 1);
  ASSERT_EQ(device.interfaces.size(), 2U);
  EXPECT_EQ(device.interfaces[1].interfaceClass, 0x0E);
  EXPECT_EQ(device.interfaces[1].subclass, 2);
  EXPECT_EQ(device.interfaces[1].protocol, 7);
}

TEST_F(UsbIpConnectionTest, RequestsThenTransfers) {
  OneExport exports;
  UsbIpConnection connection(exports);
  const Bytes list = Exchange(connection, {1, 0x11, 0x80, 5, 0, 0, 0, 0});
  ASSERT_EQ(list.size(), 12U + 312 + 8);
  EXPECT_EQ(list[11], 1) << "one device";
  const Bytes import = {1, 0x11, 0x80, 3, 0, 0, 0, 0};
  const auto busId = [](std::string text) {
    text.resize(32);
    return Bytes(text.begin(), text.end());
  };
  const Bytes refusal = {1, 0x11, 0, 3, 0, 0, 0, 1};
  EXPECT_EQ(Exchange(connection, Joined({import, busId("1-2")})), refusal);
  EXPECT_EQ(exports.takes, "") << "no such device";
  exports.isTaken = true;
  EXPECT_EQ(Exchange(connection, Joined({import, busId("1-3")})), refusal);
  EXPECT_EQ(connection.device(), nullptr);
  exports.isTaken = false;
  // The first transfer comes with the request.
  exports.device->control = Answer::Done({7});
  const Bytes answer = Exchange(
      connection, Joined({import, busId("1-3"), SubmitMessage(9, true, 0, 8, {}, kGetSetup)}));
  ASSERT_EQ(answer.size(), 320U + 48 + 1);
  EXPECT_EQ(Bytes(answer.begin() + 320, answer.end()), SubmitAnswer(9, 0, 1, {7}));
  EXPECT_EQ(exports.takes, "1-3 1-3 ");
  EXPECT_EQ(connection.device(), exports.device);
}

TEST_F(UsbIpConnectionTest, ControlTransfers) {
  std::string told;
  connection_.SetObserver(
      [&](const SetupPacket& setup, std::span<const std::uint8_t> sent, const Answer& answer) {
        told += std::to_string(setup[1]) + "/" + std::to_string(sent.size()) + "/" +
                std::to_string(answer.data.size()) + " ";
      });
  device_->control = Answer::Done({1, 2, 3});
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 0, 8, {}, kGetSetup)),
            SubmitAnswer(1, 0, 3, {1, 2, 3}));
  EXPECT_EQ(device_->setups.at(0), (SetupPacket{0xA1, 0x81, 0, 2, 0, 3, 8, 0}));
  device_->control = Answer::Done();
  EXPECT_EQ(Exchange(SubmitMessage(2, false, 0, 2, {5, 6}, {0x21, 1, 0, 1, 0, 3, 2, 0})),
            SubmitAnswer(2, 0, 2));
  EXPECT_EQ(device_->sent, (Bytes{5, 6}));
  device_->control = Answer::Stalled(StallReason::kInvalidControl);
  EXPECT_EQ(Exchange(SubmitMessage(3, true, 0, 8, {}, kGetSetup)), SubmitAnswer(3, kStalled, 0));
  device_->control = Answer::TooMuch({1, 2});
  EXPECT_EQ(Exchange(SubmitMessage(4, true, 0, 2, {}, kGetSetup)),
            SubmitAnswer(4, kOverflow, 2, {1, 2}));
  EXPECT_EQ(told, "129/0/3 1/2/0 129/0/0 129/0/2 ");
}

TEST_F(UsbIpConnectionTest, NeverMoreThanTheClientHasRoomFor) {
  device_->control = Answer::Done(Bytes(8, 1));
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 0, 3, {}, kGetSetup)),
            SubmitAnswer(1, 0, 3, {1, 1, 1}));
}

TEST_F(UsbIpConnectionTest, BytesOut) {
  EXPECT_EQ(Exchange(SubmitMessage(1, false, 2, 3, {7, 8, 9})), SubmitAnswer(1, 0, 3));
  EXPECT_EQ(device_->sent, (Bytes{2, 7, 8, 9}));
  device_->send = Answer::Stalled(StallReason::kNone);
  EXPECT_EQ(Exchange(SubmitMessage(2, false, 2, 1, {7})), SubmitAnswer(2, kStalled, 0));
}

TEST_F(UsbIpConnectionTest, BytesInWaitUntilThereAreSome) {
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 2, 16)), Bytes());
  EXPECT_EQ(Exchange(SubmitMessage(2, true, 2, 512)), Bytes());
  // Requests are answered meanwhile, and another endpoint's transfers.
  EXPECT_EQ(Exchange(SubmitMessage(3, true, 0, 8, {}, kGetSetup)), SubmitAnswer(3, 0, 0));
  device_->receive[0x81] = {Answer::Done({4})};
  EXPECT_EQ(Exchange(SubmitMessage(4, true, 1, 8)), SubmitAnswer(4, 0, 1, {4}));
  device_->receive[0x82] = {Answer::Done({1}), Answer::Stalled(StallReason::kNone)};
  EXPECT_EQ(Exchange({}), Joined({SubmitAnswer(1, 0, 1, {1}), SubmitAnswer(2, kStalled, 0)}))
      << "in the order in which they came";
  EXPECT_EQ(device_->asked, 512U);
}

TEST_F(UsbIpConnectionTest, AnEndpointThatHasNothingIsAskedOnce) {
  Exchange(Joined({SubmitMessage(1, true, 2, 16), SubmitMessage(2, true, 2, 16)}));
  device_->asks = 0;
  Exchange({});
  EXPECT_EQ(device_->asks, 1);
}

TEST_F(UsbIpConnectionTest, ItTellsWhenToBeRunAgain) {
  const Time start{std::chrono::hours(1)};
  EXPECT_FALSE(connection_.NextDue().has_value());
  device_->dues[0x82] = start + std::chrono::milliseconds(30);
  device_->dues[0x83] = start + std::chrono::milliseconds(20);
  device_->receive[0x82] = {Answer::Done({2})};
  device_->receive[0x83] = {Answer::Done({3})};
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 2, 16), start), Bytes());
  EXPECT_EQ(connection_.NextDue(), start + std::chrono::milliseconds(30));
  EXPECT_EQ(Exchange(SubmitMessage(2, true, 3, 16), start), Bytes());
  device_->dues[0x84] = start + std::chrono::milliseconds(40);
  EXPECT_EQ(Exchange(SubmitMessage(3, true, 4, 16), start), Bytes());
  EXPECT_EQ(connection_.NextDue(), start + std::chrono::milliseconds(20)) << "the first of them";
  EXPECT_EQ(Exchange(UnlinkMessage(4, 3), start), UnlinkAnswer(4, kTakenBack));
  EXPECT_EQ(Exchange({}, start + std::chrono::milliseconds(20)), SubmitAnswer(2, 0, 1, {3}));
  EXPECT_EQ(connection_.NextDue(), start + std::chrono::milliseconds(30));
  EXPECT_EQ(Exchange({}, start + std::chrono::milliseconds(30)), SubmitAnswer(1, 0, 1, {2}));
  EXPECT_FALSE(connection_.NextDue().has_value());
}

TEST_F(UsbIpConnectionTest, TransfersAreTakenBack) {
  Exchange(Joined({SubmitMessage(1, true, 2, 16), SubmitMessage(2, true, 2, 16)}));
  EXPECT_EQ(Exchange(UnlinkMessage(3, 1)), UnlinkAnswer(3, kTakenBack));
  EXPECT_EQ(Exchange(UnlinkMessage(4, 1)), UnlinkAnswer(4, 0)) << "it is no longer there";
  device_->receive[0x82] = {Answer::Done({1})};
  EXPECT_EQ(Exchange({}), SubmitAnswer(2, 0, 1, {1}));
  EXPECT_EQ(Exchange(UnlinkMessage(5, 2)), UnlinkAnswer(5, 0)) << "it had ended";
}

TEST_F(UsbIpConnectionTest, ASilentRequestEndsWhenItIsTakenBack) {
  device_->control = Answer::Silent();
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 0, 8, {}, kGetSetup)), Bytes());
  device_->control = Answer::Done({5});
  EXPECT_EQ(Exchange(SubmitMessage(2, true, 0, 8, {}, kGetSetup)), SubmitAnswer(2, 0, 1, {5}));
  EXPECT_EQ(Exchange(UnlinkMessage(3, 1)), UnlinkAnswer(3, kTakenBack));
  EXPECT_EQ(device_->setups.size(), 2U) << "asked once each";
}

TEST_F(UsbIpConnectionTest, ADeviceThatLeavesInATransferAnswersNothing) {
  Exchange(SubmitMessage(1, true, 2, 16));
  device_->control = Answer::Gone();
  EXPECT_EQ(Exchange(SubmitMessage(2, true, 0, 8, {}, kGetSetup)), Bytes());
  EXPECT_TRUE(connection_.isOver());
  EXPECT_FALSE(connection_.isReading());
  EXPECT_EQ(Exchange(SubmitMessage(3, true, 0, 8, {}, kGetSetup)), Bytes());
  EXPECT_EQ(device_->setups.size(), 1U);
}

TEST_F(UsbIpConnectionTest, ADeviceThatLeavesBehindATransferAnswersIt) {
  device_->control = Answer::Done({5});
  device_->leavesBehindControl = true;
  EXPECT_EQ(Exchange(Joined({SubmitMessage(1, true, 0, 8, {}, kGetSetup),
                             SubmitMessage(2, true, 0, 8, {}, kGetSetup)})),
            SubmitAnswer(1, 0, 1, {5}));
  EXPECT_TRUE(connection_.isOver());
}

TEST_F(UsbIpConnectionTest, NoEndpointIsIsochronous) {
  EXPECT_EQ(Exchange(SubmitMessage(1, true, 2, 16, {}, Bytes(8), 1)), SubmitAnswer(1, kStalled, 0));
}

TEST_F(UsbIpConnectionTest, WhatIsNoMessageIsAnError) {
  connection_.Feed(Joined({Big(9), Bytes(44)}));
  EXPECT_THROW(connection_.Run({}), ProtocolError);
}

TEST_F(UsbIpConnectionTest, TransfersUnderWayAreBounded) {
  for (int count = 0; count < 256; ++count) {
    EXPECT_EQ(Exchange(SubmitMessage(1, true, 2, 16)), Bytes());
  }
  connection_.Feed(SubmitMessage(1, true, 2, 16));
  EXPECT_THROW(connection_.Run({}), ProtocolError);
}

// A client that asks and does not read holds no more than so much memory.
TEST_F(UsbIpConnectionTest, AClientThatDoesNotReadIsNotRead) {
  device_->control = Answer::Done(Bytes(60000, 1));
  const Bytes ask = SubmitMessage(1, true, 0, 60000, {}, kGetSetup);
  std::size_t asks = 0;
  for (; connection_.isReading(); ++asks) {
    connection_.Feed(ask);
    connection_.Run({});
    ASSERT_LT(asks, 100U);
  }
  EXPECT_EQ(asks, 18U);
  EXPECT_EQ(connection_.output().size(), 18U * 60048);
  connection_.Feed(ask);
  connection_.Run({});
  EXPECT_EQ(device_->setups.size(), 18U) << "left where it is";
  // Read in small pieces, it goes on, and what was read is forgotten.
  std::size_t read = 0;
  while (!connection_.output().empty()) {
    const std::size_t piece = std::min<std::size_t>(connection_.output().size(), 1000);
    read += piece;
    connection_.Written(piece);
    connection_.Run({});
  }
  EXPECT_EQ(read, 19U * 60048);
  EXPECT_TRUE(connection_.isReading());
}

TEST_F(UsbIpConnectionTest, AFullOutputIsNotDue) {
  const Time start{std::chrono::hours(1)};
  device_->dues[0x82] = start + std::chrono::milliseconds(30);
  Exchange(SubmitMessage(1, true, 2, 16), start);
  device_->control = Answer::Done(Bytes(1U << 20, 1));
  connection_.Feed(SubmitMessage(1, true, 0, 1U << 20, {}, kGetSetup));
  connection_.Run(start);
  EXPECT_FALSE(connection_.NextDue().has_value());
  connection_.Written(connection_.output().size());
  connection_.Run(start);
  EXPECT_EQ(connection_.NextDue(), start + std::chrono::milliseconds(30));
}

}  // namespace
