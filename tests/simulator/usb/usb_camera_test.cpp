// The simulated camera on its control endpoint, request by request, and its stream.
#include "simulator/usb/usb_camera.h"

#include <gtest/gtest.h>

#include <string>

#include "simulator/usb/test_picture.h"

namespace {

using zem::simulator::Camera;
using zem::simulator::CameraOptions;
using zem::simulator::Fault;
using zem::simulator::MakeCamera;
using zem::simulator::usb::Answer;
using zem::simulator::usb::Bytes;
using zem::simulator::usb::DrawTestPicture;
using zem::simulator::usb::SetupPacket;
using zem::simulator::usb::Time;
using zem::simulator::usb::UsbCamera;

// "01 02", "stall 6", "too much: 01 02", "silent" or "gone".
std::string TextOf(const Answer& answer) {
  if (answer.kind == Answer::Kind::kGone) {
    return "gone";
  }
  if (answer.kind == Answer::Kind::kStalled) {
    return "stall " + std::to_string(static_cast<int>(answer.reason));
  }
  if (answer.kind == Answer::Kind::kSilent) {
    return "silent";
  }
  std::string text = answer.kind == Answer::Kind::kTooMuch ? "too much:" : "";
  for (const std::uint8_t byte : answer.data) {
    static constexpr const char* kDigits = "0123456789abcdef";
    text += text.empty() ? "" : " ";
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

class UsbCameraTest : public ::testing::Test {
 protected:
  explicit UsbCameraTest(const CameraOptions& options = {})
      : camera_(MakeCamera(options)), device_(options, camera_) {}

  std::string Get(std::uint8_t request, std::uint8_t selector, std::uint8_t entity,
                  std::uint16_t length, std::uint8_t interface = 0) {
    const SetupPacket setup = {0xA1,
                               request,
                               0,
                               selector,
                               interface,
                               entity,
                               static_cast<std::uint8_t>(length),
                               static_cast<std::uint8_t>(length >> 8)};
    return TextOf(device_.Control(setup, {}));
  }
  std::string Set(std::uint8_t selector, std::uint8_t entity, const Bytes& data,
                  std::uint8_t interface = 0) {
    const SetupPacket setup = {
        0x21, 1, 0, selector, interface, entity, static_cast<std::uint8_t>(data.size()), 0};
    return TextOf(device_.Control(setup, data));
  }
  std::string Standard(std::uint8_t type, std::uint8_t request, std::uint16_t value,
                       std::uint16_t index, std::uint16_t length) {
    const SetupPacket setup = {type,
                               request,
                               static_cast<std::uint8_t>(value),
                               static_cast<std::uint8_t>(value >> 8),
                               static_cast<std::uint8_t>(index),
                               static_cast<std::uint8_t>(index >> 8),
                               static_cast<std::uint8_t>(length),
                               static_cast<std::uint8_t>(length >> 8)};
    return TextOf(device_.Control(setup, {}));
  }
  // Why the last request was stalled.
  std::string Reason() { return Get(0x81, 2, 0, 1); }

  Camera& camera() { return *camera_; }
  UsbCamera& device() { return device_; }

 private:
  std::shared_ptr<Camera> camera_;
  UsbCamera device_;
};

constexpr std::uint8_t kTerminal = 1;
constexpr std::uint8_t kProcessing = 2;
constexpr std::uint8_t kVendor = 3;

TEST_F(UsbCameraTest, DescriptorsAreCutToWhatIsAskedFor) {
  EXPECT_EQ(Standard(0x80, 6, 0x0100, 0, 8), "12 01 00 02 ef 02 01 40");
  EXPECT_EQ(Standard(0x80, 6, 0x0100, 0, 255).size(), 18U * 3 - 1);
  EXPECT_EQ(Standard(0x80, 6, 0x0200, 0, 4), "09 02 d2 00");
  EXPECT_EQ(Standard(0x80, 6, 0x0600, 0, 2), "0a 06");
  EXPECT_EQ(Standard(0x80, 6, 0x0300, 0, 255), "04 03 09 04");
  EXPECT_EQ(Standard(0x80, 6, 0x0301, 0x409, 255), "08 03 5a 00 45 00 4d 00");
  EXPECT_EQ(Standard(0x80, 6, 0x0304, 0x409, 255), "stall 7");
  EXPECT_EQ(Standard(0x80, 6, 0x0201, 0, 255), "stall 7");
  EXPECT_EQ(Standard(0x80, 6, 0x0F00, 0, 255), "stall 7");
}

TEST_F(UsbCameraTest, StandardRequests) {
  EXPECT_EQ(Standard(0x80, 8, 0, 0, 1), "00");
  EXPECT_EQ(Standard(0x00, 9, 1, 0, 0), "");
  EXPECT_EQ(device().configuration(), 1);
  EXPECT_EQ(Standard(0x80, 8, 0, 0, 1), "01");
  EXPECT_EQ(Standard(0x00, 9, 2, 0, 0), "stall 7");
  EXPECT_EQ(Standard(0x80, 0, 0, 0, 2), "00 00");
  EXPECT_EQ(Standard(0x01, 11, 0, 1, 0), "");
  EXPECT_EQ(Standard(0x01, 11, 1, 1, 0), "stall 7");
  EXPECT_EQ(Standard(0x01, 11, 0, 2, 0), "stall 7");
  EXPECT_EQ(Standard(0x81, 10, 0, 1, 1), "00");
  EXPECT_EQ(Standard(0x02, 1, 0, 0x82, 0), "");
  EXPECT_EQ(Standard(0x80, 12, 0, 0, 2), "stall 7");
  EXPECT_EQ(Standard(0xC0, 1, 0, 0, 2), "stall 7") << "the vendor's own kind";
}

TEST_F(UsbCameraTest, AnExtensionUnitsControl) {
  EXPECT_EQ(Get(0x85, 1, kVendor, 2), "08 00");
  EXPECT_EQ(Get(0x86, 1, kVendor, 1), "02");
  EXPECT_EQ(Get(0x86, 2, kVendor, 1), "01");
  EXPECT_EQ(Get(0x86, 3, kVendor, 1), "03");
  EXPECT_EQ(Get(0x85, 13, kVendor, 2), "00 02");
  // The firmware's version: the command, then its reply.
  EXPECT_EQ(Set(1, kVendor, {0, 0, 0, 0, 0, 0, 0, 0}), "");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8).size(), 8U * 3 - 1);
  EXPECT_EQ(camera().transfers(), 2U) << "lengths and directions are no transfers of the model";
}

TEST_F(UsbCameraTest, WhatAnExtensionUnitDoesNotTake) {
  EXPECT_EQ(Get(0x81, 12, kVendor, 8), "stall 6");
  EXPECT_EQ(Reason(), "06");
  EXPECT_EQ(Get(0x81, 1, kVendor, 8), "stall 7") << "written only";
  EXPECT_EQ(Reason(), "07");
  EXPECT_EQ(Set(1, kVendor, {1, 2}), "stall 7") << "too short";
  EXPECT_EQ(Get(0x82, 1, kVendor, 8), "stall 7") << "no range";
  EXPECT_EQ(Get(0x88, 1, kVendor, 8), "stall 7") << "no request";
  EXPECT_EQ(Get(0x81, 1, 9, 8), "stall 5");
  EXPECT_EQ(Reason(), "05");
  EXPECT_EQ(Get(0x81, 1, kVendor, 8, 2), "stall 5") << "no interface";
  EXPECT_EQ(Get(0x81, 2, kVendor, 8).size(), 8U * 3 - 1);
  EXPECT_EQ(Reason(), "00");
}

TEST_F(UsbCameraTest, FaultsOnTheWire) {
  camera().AddFault({Fault::Kind::kFail, 1, 1, 0});
  camera().AddFault({Fault::Kind::kShort, 2, 1, 3});
  camera().AddFault({Fault::Kind::kLength, 3, 1, 200});
  camera().AddFault({Fault::Kind::kSilent, 4, 2, 0});
  camera().AddFault({Fault::Kind::kUnplug, 6, 1, 0});
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "stall 0");
  EXPECT_EQ(Reason(), "00");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "00 00 00");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "too much: 00 00 00 00 00 00 00 00");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "silent");
  EXPECT_EQ(Get(0x81, 2, kProcessing, 2), "silent");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "gone");
  EXPECT_EQ(Standard(0x80, 0, 0, 0, 2), "gone");
  EXPECT_TRUE(device().isGone());
}

TEST_F(UsbCameraTest, AFaultsReasonIsThatOfItsStallAlone) {
  camera().AddFault({Fault::Kind::kFail, 1, 1, 2});
  camera().AddFault({Fault::Kind::kFail, 2, 1, 8});
  EXPECT_EQ(Get(0x81, 2, kVendor, 8), "stall 2");
  EXPECT_EQ(Reason(), "02");
  EXPECT_EQ(Get(0x81, 2, kProcessing, 2), "stall 8");
  EXPECT_EQ(Reason(), "08");
  EXPECT_EQ(Get(0x81, 12, kVendor, 8), "stall 6");
  EXPECT_EQ(Get(0x81, 2, kVendor, 8).size(), 8U * 3 - 1);
  EXPECT_EQ(Reason(), "00");
}

TEST_F(UsbCameraTest, BrightnessInAllRequests) {
  EXPECT_EQ(Get(0x85, 2, kProcessing, 2), "02 00");
  EXPECT_EQ(Get(0x86, 2, kProcessing, 1), "03");
  EXPECT_EQ(Get(0x82, 2, kProcessing, 2), "00 00");
  EXPECT_EQ(Get(0x83, 2, kProcessing, 2), "ff 00");
  EXPECT_EQ(Get(0x84, 2, kProcessing, 2), "01 00");
  EXPECT_EQ(Get(0x87, 2, kProcessing, 2), "80 00");
  EXPECT_EQ(Get(0x81, 2, kProcessing, 2), "80 00");
  EXPECT_EQ(Set(2, kProcessing, {0x21, 0}), "");
  EXPECT_EQ(Get(0x81, 2, kProcessing, 2), "21 00");
  EXPECT_EQ(Set(2, kProcessing, {0, 1}), "stall 4");
  EXPECT_EQ(Reason(), "04");
  EXPECT_EQ(Set(2, kProcessing, {1}), "stall 7");
  EXPECT_EQ(Get(0x81, 5, kProcessing, 1), "stall 6") << "no mains frequency";
}

TEST_F(UsbCameraTest, NegativeNumbersAreSigned) {
  EXPECT_EQ(Get(0x82, 6, kProcessing, 2), "4c ff");
  EXPECT_EQ(Set(6, kProcessing, {0xFF, 0xFF}), "");
  EXPECT_EQ(Get(0x81, 6, kProcessing, 2), "ff ff");
}

TEST_F(UsbCameraTest, ExposureIn100MicrosecondsBesideTheModelsPowers) {
  EXPECT_EQ(Get(0x82, 4, kTerminal, 4), "05 00 00 00");
  EXPECT_EQ(Get(0x83, 4, kTerminal, 4), "c4 09 00 00");
  EXPECT_EQ(Get(0x84, 4, kTerminal, 4), "01 00 00 00");
  EXPECT_EQ(Get(0x87, 4, kTerminal, 4), "39 01 00 00");
  // It begins automatic.
  EXPECT_EQ(Get(0x81, 2, kTerminal, 1), "08");
  EXPECT_EQ(Get(0x84, 2, kTerminal, 1), "09") << "the modes that there are";
  EXPECT_EQ(Set(4, kTerminal, {0x4E, 0, 0, 0}), "stall 2");
  EXPECT_EQ(Reason(), "02");
  EXPECT_EQ(Set(2, kTerminal, {1}), "");
  EXPECT_EQ(Set(4, kTerminal, {0x4E, 0, 0, 0}), "");
  EXPECT_EQ(Get(0x81, 4, kTerminal, 4), "4e 00 00 00");
  EXPECT_EQ(Set(2, kTerminal, {2}), "stall 8") << "a mode that it lacks";
  EXPECT_EQ(Set(2, kTerminal, {8}), "");
  EXPECT_EQ(Get(0x81, 2, kTerminal, 1), "08");
}

TEST_F(UsbCameraTest, PanAndTiltAreOneControlInArcSeconds) {
  EXPECT_EQ(Get(0x85, 0x0D, kTerminal, 2), "08 00");
  // 36,000 degrees of the model.
  EXPECT_EQ(Get(0x83, 0x0D, kTerminal, 8), "00 8a b9 07 00 8a b9 07");
  EXPECT_EQ(Get(0x82, 0x0D, kTerminal, 8), "00 76 46 f8 00 76 46 f8");
  EXPECT_EQ(Set(0x0D, kTerminal, {0x10, 0x0E, 0, 0, 0xF0, 0xF1, 0xFF, 0xFF}), "");
  EXPECT_EQ(Get(0x81, 0x0D, kTerminal, 8), "10 0e 00 00 f0 f1 ff ff");
}

TEST_F(UsbCameraTest, SwitchesOfWhiteBalanceAndFocus) {
  for (const auto& [entity, selector] :
       {std::pair(kProcessing, 0x0B), std::pair(kTerminal, 0x08)}) {
    const auto control = static_cast<std::uint8_t>(selector);
    EXPECT_EQ(Get(0x81, control, entity, 1), "01");
    EXPECT_EQ(Set(control, entity, {0}), "");
    EXPECT_EQ(Get(0x81, control, entity, 1), "00");
    EXPECT_EQ(Get(0x87, control, entity, 1), "01");
    EXPECT_EQ(Get(0x82, control, entity, 1), "00");
    EXPECT_EQ(Get(0x83, control, entity, 1), "01");
    EXPECT_EQ(Set(control, entity, {2}), "stall 8");
    EXPECT_EQ(Set(control, entity, {0, 0}), "stall 7");
  }
  EXPECT_EQ(Get(0x81, 0x10, kProcessing, 1), "stall 6") << "the model's hue has no automatic";
}

// The class has no switch for gain, and so neither has the model an automatic one.
TEST_F(UsbCameraTest, GainIsManual) {
  const auto controls =
      zem::simulator::DefaultControls(zem::simulator::ControlFamily::kVideoProcessing);
  EXPECT_EQ(controls.at(9).range.flags, zem::simulator::kManual);
  EXPECT_EQ(Set(4, kProcessing, {7, 0}), "");
  EXPECT_EQ(Get(0x81, 4, kProcessing, 2), "07 00");
}

TEST_F(UsbCameraTest, TheStreamIsNegotiated) {
  const std::string block =
      "00 00 01 01 15 16 05 00 00 00 00 00 00 00 00 00 00 00 00 60 09 00 00 40 00 00 00 00 00 00 "
      "00 "
      "00 00 00";
  EXPECT_EQ(Get(0x85, 1, 0, 2, 1), "22 00");
  EXPECT_EQ(Get(0x86, 1, 0, 1, 1), "03");
  for (const unsigned each : {0x81U, 0x82U, 0x83U, 0x87U}) {
    const auto request = static_cast<std::uint8_t>(each);
    EXPECT_EQ(Get(request, 1, 0, 34, 1), block);
    EXPECT_EQ(Get(request, 2, 0, 34, 1), block);
  }
  EXPECT_EQ(Get(0x81, 1, 0, 26, 1), block.substr(0, 26 * 3 - 1)) << "an older host";
  EXPECT_EQ(Set(1, 0, Bytes(34), 1), "");
  EXPECT_EQ(Get(0x81, 3, 0, 1, 1), "stall 6");
}

class StreamTest : public UsbCameraTest {
 protected:
  void Commit() { EXPECT_EQ(Set(2, 0, Bytes(34), 1), ""); }

  // What the stream endpoint has at a time; empty where it has nothing.
  Bytes Receive(std::size_t length, Time now) {
    const auto answer = device().Receive(0x82, length, now);
    EXPECT_TRUE(!answer || answer->kind == Answer::Kind::kDone);
    return answer ? answer->data : Bytes();
  }

  // The next frame, in payloads of which the host asks for `room` bytes at a time.
  Bytes ReceiveFrame(std::size_t room, Time now, std::uint8_t parity) {
    Bytes picture;
    for (bool isLast = false; !isLast;) {
      Bytes payload;
      for (bool isWhole = false; !isWhole;) {
        const Bytes piece = Receive(room, now);
        EXPECT_LE(piece.size(), room);
        payload.insert(payload.end(), piece.begin(), piece.end());
        isWhole = piece.size() < room || payload.size() == 16384;
      }
      if (payload.size() <= 2) {
        ADD_FAILURE() << "no payload";
        return {};
      }
      EXPECT_EQ(payload[0], 2);
      EXPECT_EQ(payload[1] & 0x81, 0x80 | parity);
      isLast = (payload[1] & 2) != 0;
      picture.insert(picture.end(), payload.begin() + 2, payload.end());
    }
    return picture;
  }

  static constexpr std::uint8_t kStreamEndpoint = 0x82;
  static constexpr auto kFrameTime = std::chrono::nanoseconds(33333300);
  Time start_{std::chrono::hours(1)};
};

// Payloads put together are the pictures, whatever the host's pieces.
TEST_F(StreamTest, PayloadsMakeThePictures) {
  for (const std::size_t room : {std::size_t{16384}, std::size_t{512}}) {
    Commit();
    Time now = start_;
    for (std::uint8_t frame = 0; frame < 3; ++frame, now += kFrameTime) {
      EXPECT_EQ(ReceiveFrame(room, now, frame % 2), DrawTestPicture(640, 480, frame)) << room;
    }
  }
}

TEST_F(StreamTest, AFrameComesAtItsTime) {
  EXPECT_FALSE(device().Receive(kStreamEndpoint, 16384, start_).has_value()) << "not committed";
  EXPECT_FALSE(device().NextDue(kStreamEndpoint).has_value());
  Commit();
  ReceiveFrame(16384, start_, 0);
  EXPECT_EQ(device().NextDue(kStreamEndpoint), start_ + kFrameTime);
  EXPECT_EQ(Receive(16384, start_ + kFrameTime - std::chrono::nanoseconds(1)), Bytes());
  EXPECT_EQ(ReceiveFrame(16384, start_ + kFrameTime, 1), DrawTestPicture(640, 480, 1));
  // Requests are answered between frames.
  EXPECT_EQ(Receive(16384, start_ + kFrameTime), Bytes());
  EXPECT_EQ(Get(0x81, 2, kVendor, 8).size(), 8U * 3 - 1);
}

TEST_F(StreamTest, AHostThatIsLateGetsNoBurst) {
  Commit();
  ReceiveFrame(16384, start_, 0);
  const Time late = start_ + 10 * kFrameTime;
  EXPECT_EQ(ReceiveFrame(16384, late, 1), DrawTestPicture(640, 480, 1)) << "no frame is left out";
  EXPECT_EQ(Receive(16384, late), Bytes());
  EXPECT_EQ(device().NextDue(kStreamEndpoint), late + kFrameTime);
}

TEST_F(StreamTest, ItIsToldWhenItBeginsAndEnds) {
  std::string told;
  device().SetStreamObserver([&](bool runs) { told += runs ? "begins " : "ends "; });
  Commit();
  EXPECT_EQ(told, "");
  Receive(16384, start_);
  ReceiveFrame(16384, start_, 0);
  EXPECT_EQ(told, "begins ");
  EXPECT_EQ(Standard(0x02, 1, 0, 0x81, 0), "") << "another endpoint's halt";
  EXPECT_EQ(told, "begins ");
  EXPECT_EQ(Standard(0x02, 1, 0, 0x82, 0), "");
  EXPECT_EQ(told, "begins ends ");
  EXPECT_EQ(Receive(16384, start_ + kFrameTime), Bytes());
  Commit();
  EXPECT_EQ(ReceiveFrame(16384, start_, 0), DrawTestPicture(640, 480, 0)) << "from the first";
  EXPECT_EQ(Standard(0x00, 9, 1, 0, 0), "");
  EXPECT_EQ(told, "begins ends begins ends ");
}

TEST_F(StreamTest, AHostThatLetsGoEndsIt) {
  Commit();
  Receive(16384, start_);
  std::string told;
  device().SetStreamObserver([&](bool runs) { told += runs ? "begins " : "ends "; });
  device().Release();
  EXPECT_EQ(told, "ends ");
  EXPECT_FALSE(device().Receive(kStreamEndpoint, 16384, start_ + kFrameTime).has_value());
}

TEST_F(StreamTest, TheOtherEndpoints) {
  EXPECT_FALSE(device().Receive(0x81, 16, start_).has_value()) << "controls do not change";
  EXPECT_EQ(device().Receive(0x83, 16, start_)->kind, Answer::Kind::kStalled);
  EXPECT_EQ(device().Send(0x02, {}).kind, Answer::Kind::kStalled);
  camera().Unplug();
  EXPECT_EQ(device().Receive(0x81, 16, start_)->kind, Answer::Kind::kGone);
  EXPECT_EQ(device().Send(0x02, {}).kind, Answer::Kind::kGone);
}

CameraOptions Bare() {
  CameraOptions options;
  options.videoControls = false;
  options.cameraControls = false;
  return options;
}

class BareUsbCameraTest : public UsbCameraTest {
 protected:
  BareUsbCameraTest() : UsbCameraTest(Bare()) {}
};

TEST_F(BareUsbCameraTest, WithoutStandardControls) {
  EXPECT_EQ(Get(0x81, 2, kProcessing, 2), "stall 5");
  EXPECT_EQ(Get(0x81, 4, kTerminal, 4), "stall 5");
  EXPECT_EQ(Get(0x85, 1, kVendor, 2), "08 00");
}

}  // namespace
