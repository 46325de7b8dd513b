#include "simulator/usb/usb_camera.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"
#include "simulator/usb/terminal_controls.h"
#include "simulator/usb/test_picture.h"

namespace zem::simulator::usb {
namespace {

// Controls of the interfaces themselves.
constexpr std::uint8_t kRequestErrorCode = 0x02;
constexpr std::uint8_t kProbe = 0x01;
constexpr std::uint8_t kCommit = 0x02;

constexpr std::uint8_t kReadable = 1;
constexpr std::uint8_t kWritable = 2;

// Header of a payload: its length, and its flags.
constexpr std::uint8_t kPayloadHeader = 2;
constexpr std::uint8_t kFrameParity = 0x01;
constexpr std::uint8_t kEndOfFrame = 0x02;
constexpr std::uint8_t kEndOfHeader = 0x80;

constexpr std::size_t kProbeLength = 34;

constexpr auto kFrameTime = std::chrono::nanoseconds(100LL * kFrameInterval);

// The one stream that can be negotiated.
Bytes ProbeBlock() {
  Bytes block(kProbeLength);
  block[2] = 1;  // format
  block[3] = 1;  // frame
  StoreLe32(&block[4], kFrameInterval);
  StoreLe32(&block[18], kPictureSize);
  StoreLe32(&block[22], kPayloadSize);
  return block;
}

// There is no request to stop a stream on a bulk endpoint: a host that stops clears its halt.
bool EndsStream(const SetupPacket& setup) {
  return IsConfiguring(setup) || ClearsHalt(setup, kStreamEndpoint);
}

Answer AnswerOfUnit(Outcome outcome, Bytes data = {}) {
  return AnswerOf(outcome, std::move(data),
                  {StallReason::kInvalidRequest, StallReason::kInvalidRequest});
}

}  // namespace

UsbCamera::UsbCamera(const CameraOptions& options, std::shared_ptr<Camera> camera)
    : options_(options),
      camera_(std::move(camera)),
      standard_(DescribeCamera(options)),
      units_(DescribeUnits(options)) {}

Answer UsbCamera::Control(const SetupPacket& setup, std::span<const std::uint8_t> data) {
  if (isGone()) {
    return Answer::Gone();
  }
  Answer answer = Answer::Stalled(StallReason::kInvalidRequest);
  if (IsStandard(setup)) {
    answer = standard_.Request(setup);
    if (EndsStream(setup)) {
      StopStream();
    }
  } else if (IsOfClass(setup)) {
    answer = Video(setup, data);
  }
  return CutToRequest(setup, std::move(answer));
}

Answer UsbCamera::Video(const SetupPacket& setup, std::span<const std::uint8_t> data) {
  if (setup[1] != static_cast<std::uint8_t>(VideoRequest::kSetCurrent) &&
      (setup[1] < static_cast<std::uint8_t>(VideoRequest::kGetCurrent) ||
       setup[1] > static_cast<std::uint8_t>(VideoRequest::kGetDefault))) {
    return Answer::Stalled(StallReason::kInvalidRequest);
  }
  const std::uint8_t interface = setup[4];
  const std::uint8_t entity = setup[5];
  const ControlRequest request = {static_cast<VideoRequest>(setup[1]), setup[3],
                                  LoadLe16(&setup[6]), Bytes(data.begin(), data.end())};
  if (interface == kStreamingInterface && entity == 0) {
    return RequestStream(request);
  }
  if (interface != kVideoControlInterface) {
    return Answer::Stalled(StallReason::kInvalidUnit);
  }
  if (entity == 0 && request.selector == kRequestErrorCode &&
      request.request == VideoRequest::kGetCurrent) {
    return Answer::Done({static_cast<std::uint8_t>(lastReason_)});
  }
  Answer answer = Answer::Stalled(StallReason::kInvalidUnit);
  if (entity == kCameraTerminalId && options_.cameraControls) {
    answer = RequestStandardControl(*camera_, ControlFamily::kCameraTerminal, request);
  } else if (entity == kProcessingUnitId && options_.videoControls) {
    answer = RequestStandardControl(*camera_, ControlFamily::kVideoProcessing, request);
  } else if (entity >= kFirstExtensionId && entity < kFirstExtensionId + units_.size()) {
    answer = RequestUnit(entity - kFirstExtensionId, request);
  }
  if (answer.kind == Answer::Kind::kStalled && answer.reason == StallReason::kNone) {
    answer.reason = static_cast<StallReason>(camera_->failValue());
  }
  lastReason_ = answer.reason;
  return answer;
}

Answer UsbCamera::RequestUnit(std::size_t unit, const ControlRequest& request) {
  // Behind the two nodes of the terminal and the processing unit.
  const std::size_t node = unit + 2;
  const auto& controls = units_[unit].controls;
  const auto control = std::find_if(controls.begin(), controls.end(), [&](const UnitControl& each) {
    return each.selector == request.selector;
  });
  if (control == controls.end()) {
    return Answer::Stalled(StallReason::kInvalidControl);
  }
  switch (request.request) {
    case VideoRequest::kGetLength:
      return Answer::Done({ByteOf(control->length, 0), ByteOf(control->length, 1)});
    case VideoRequest::kGetInformation:
      return Answer::Done({static_cast<std::uint8_t>((control->isRead ? kReadable : 0) |
                                                     (control->isWritten ? kWritable : 0))});
    case VideoRequest::kSetCurrent:
      return AnswerOfUnit(camera_->Set(node, request.selector, request.data));
    case VideoRequest::kGetCurrent: {
      Bytes bytes(request.length);
      std::uint32_t moved = 0;
      const Outcome outcome = camera_->Get(node, request.selector, bytes, moved);
      if (outcome == Outcome::kDone && moved > bytes.size()) {
        return Answer::TooMuch(std::move(bytes));
      }
      bytes.resize(moved);
      return AnswerOfUnit(outcome, std::move(bytes));
    }
    default:
      return Answer::Stalled(StallReason::kInvalidRequest);
  }
}

Answer UsbCamera::RequestStream(const ControlRequest& request) {
  if (request.selector != kProbe && request.selector != kCommit) {
    return Answer::Stalled(StallReason::kInvalidControl);
  }
  switch (request.request) {
    case VideoRequest::kSetCurrent:
      // Whatever the host proposes, there is one stream; a commit begins it.
      if (request.selector == kCommit) {
        StopStream();
        isCommitted_ = true;
      }
      return Answer::Done();
    case VideoRequest::kGetLength:
      return Answer::Done({kProbeLength, 0});
    case VideoRequest::kGetInformation:
      return Answer::Done({kReadable | kWritable});
    case VideoRequest::kGetResolution:
      return Answer::Stalled(StallReason::kInvalidRequest);
    default:
      return Answer::Done(ProbeBlock());
  }
}

void UsbCamera::StopStream() {
  isCommitted_ = false;
  frame_ = 0;
  frameDue_ = {};
  picture_.clear();
  sent_ = 0;
  payload_.clear();
  TellStream(false);
}

void UsbCamera::TellStream(bool runs) {
  if (std::exchange(isStreaming_, runs) != runs && streamObserver_) {
    streamObserver_(runs);
  }
}

Answer UsbCamera::Send(std::uint8_t /*endpoint*/, std::span<const std::uint8_t> /*bytes*/) {
  return isGone() ? Answer::Gone() : Answer::Stalled(StallReason::kNone);
}

std::optional<Answer> UsbCamera::Receive(std::uint8_t endpoint, std::size_t length, Time now) {
  if (isGone()) {
    return Answer::Gone();
  }
  if (endpoint != kStreamEndpoint) {
    return endpoint == kStatusEndpoint ? std::nullopt
                                       : std::optional(Answer::Stalled(StallReason::kNone));
  }
  if (!isCommitted_) {
    return std::nullopt;
  }
  if (payload_.empty()) {
    if (sent_ == 0 && now < frameDue_) {
      return std::nullopt;
    }
    if (sent_ == 0) {
      // A host that is late gets no frames in a burst for it.
      frameDue_ = std::max(frameDue_, now) + kFrameTime;
      TellStream(true);
    }
    payload_ = NextPayload();
  }
  const auto end =
      payload_.begin() + static_cast<std::ptrdiff_t>(std::min(length, payload_.size()));
  Bytes piece(payload_.begin(), end);
  payload_.erase(payload_.begin(), end);
  return Answer::Done(std::move(piece));
}

std::optional<Time> UsbCamera::NextDue(std::uint8_t endpoint) const {
  return endpoint == kStreamEndpoint && isCommitted_ ? std::optional(frameDue_) : std::nullopt;
}

Bytes UsbCamera::NextPayload() {
  if (picture_.empty()) {
    picture_ = DrawTestPicture(kPictureWidth, kPictureHeight, frame_);
  }
  const std::size_t count =
      std::min<std::size_t>(kPayloadSize - kPayloadHeader, picture_.size() - sent_);
  const bool isLast = sent_ + count == picture_.size();
  const auto parity = static_cast<std::uint8_t>(frame_ & kFrameParity);
  Bytes payload = {kPayloadHeader,
                   static_cast<std::uint8_t>(kEndOfHeader | parity | (isLast ? kEndOfFrame : 0))};
  const auto begin = picture_.begin() + static_cast<std::ptrdiff_t>(sent_);
  payload.insert(payload.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
  sent_ += count;
  if (isLast) {
    ++frame_;
    picture_.clear();
    sent_ = 0;
  }
  return payload;
}

}  // namespace zem::simulator::usb
