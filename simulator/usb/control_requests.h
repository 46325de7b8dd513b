// What a request to a control of a USB camera comes to.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "simulator/camera.h"

namespace zem::simulator::usb {

// Requests of the video class.
enum class VideoRequest : std::uint8_t {
  kSetCurrent = 0x01,
  kGetCurrent = 0x81,
  kGetMinimum = 0x82,
  kGetMaximum = 0x83,
  kGetResolution = 0x84,
  kGetLength = 0x85,
  kGetInformation = 0x86,
  kGetDefault = 0x87,
};

// Why the camera stalled a request, as it tells when it is asked behind that.
enum class StallReason : std::uint8_t {
  kNone = 0,
  kNotReady = 1,
  kWrongState = 2,
  kLowPower = 3,
  kOutOfRange = 4,
  kInvalidUnit = 5,
  kInvalidControl = 6,
  kInvalidRequest = 7,
  kInvalidValue = 8,
};

struct Answer {
  enum class Kind {
    kDone,
    kStalled,
    kTooMuch,  // more came than the host asked for
    kSilent,   // no answer; the host gives up waiting
    kGone,     // the device has left
  };

  Kind kind = Kind::kDone;
  std::vector<std::uint8_t> data;  // of a transfer in
  StallReason reason = StallReason::kNone;

  static Answer Done(std::vector<std::uint8_t> data = {}) {
    return {Kind::kDone, std::move(data), StallReason::kNone};
  }
  static Answer Stalled(StallReason reason) { return {Kind::kStalled, {}, reason}; }
  static Answer TooMuch(std::vector<std::uint8_t> data) {
    return {Kind::kTooMuch, std::move(data), StallReason::kNone};
  }
  static Answer Silent() { return {Kind::kSilent, {}, StallReason::kNone}; }
  static Answer Gone() { return {Kind::kGone, {}, StallReason::kNone}; }
};

// The reasons in which the kinds of units differ.
struct StallReasons {
  StallReason noSuchControl;
  StallReason wrongLength;
};

// What a request comes to that the camera took or refused, with what it gave.
inline Answer AnswerOf(Outcome outcome, std::vector<std::uint8_t> data,
                       const StallReasons& reasons) {
  switch (outcome) {
    case Outcome::kDone:
      return Answer::Done(std::move(data));
    case Outcome::kNoSuchControl:
      return Answer::Stalled(reasons.noSuchControl);
    case Outcome::kWrongLength:
      return Answer::Stalled(reasons.wrongLength);
    case Outcome::kInvalidValue:
      return Answer::Stalled(StallReason::kOutOfRange);
    case Outcome::kFailed:
      return Answer::Stalled(StallReason::kNone);
    case Outcome::kSilent:
      return Answer::Silent();
    case Outcome::kUnplugged:
      break;
  }
  return Answer::Gone();
}

// A request to one control.
struct ControlRequest {
  VideoRequest request;
  std::uint8_t selector;
  std::uint16_t length;            // bytes that the host offers or sends
  std::vector<std::uint8_t> data;  // that it sends
};

}  // namespace zem::simulator::usb
