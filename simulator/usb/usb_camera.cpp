#include "simulator/usb/usb_camera.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"
#include "simulator/usb/terminal_controls.h"
#include "simulator/usb/test_picture.h"

namespace zem::simulator::usb {
namespace {

// Kinds of a request, and whom it is for.
constexpr std::uint8_t kKindMask = 0x60;
constexpr std::uint8_t kStandardKind = 0x00;
constexpr std::uint8_t kClassKind = 0x20;
constexpr std::uint8_t kTargetMask = 0x1F;
constexpr std::uint8_t kToInterface = 0x01;
constexpr std::uint8_t kIn = 0x80;

// Standard requests.
constexpr std::uint8_t kGetStatus = 0;
constexpr std::uint8_t kClearFeature = 1;
constexpr std::uint8_t kSetFeature = 3;
constexpr std::uint8_t kSetAddress = 5;
constexpr std::uint8_t kGetDescriptor = 6;
constexpr std::uint8_t kGetConfiguration = 8;
constexpr std::uint8_t kSetConfiguration = 9;
constexpr std::uint8_t kGetInterface = 10;
constexpr std::uint8_t kSetInterface = 11;

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

Answer AnswerOf(Outcome outcome, Bytes data) {
  switch (outcome) {
    case Outcome::kDone:
      return Answer::Done(std::move(data));
    case Outcome::kNoSuchControl:
    case Outcome::kWrongLength:
      return Answer::Stalled(StallReason::kInvalidRequest);
    case Outcome::kInvalidValue:
      return Answer::Stalled(StallReason::kOutOfRange);
    case Outcome::kFailed:
      return Answer::Stalled(StallReason::kNone);
    case Outcome::kUnplugged:
      break;
  }
  return Answer::Gone();
}

}  // namespace

UsbCamera::UsbCamera(const CameraOptions& options, std::shared_ptr<Camera> camera)
    : options_(options),
      camera_(std::move(camera)),
      descriptors_(DescribeCamera(options)),
      units_(DescribeUnits(options)) {}

Answer UsbCamera::Control(const SetupPacket& setup, std::span<const std::uint8_t> data) {
  if (isGone()) {
    return Answer::Gone();
  }
  const std::uint8_t kind = setup[0] & kKindMask;
  Answer answer = Answer::Stalled(StallReason::kInvalidRequest);
  if (kind == kStandardKind) {
    answer = Standard(setup);
  } else if (kind == kClassKind && (setup[0] & kTargetMask) == kToInterface) {
    answer = Video(setup, data);
  }
  const std::size_t asked = (setup[0] & kIn) != 0 ? LoadLe16(&setup[6]) : 0;
  answer.data.resize(std::min(answer.data.size(), asked));
  return answer;
}

Answer UsbCamera::Standard(const SetupPacket& setup) {
  switch (setup[1]) {
    case kGetDescriptor:
      return Describe(setup[3], setup[2]);
    case kGetStatus:
      return Answer::Done({0, 0});
    case kGetConfiguration:
      return Answer::Done({configuration_});
    case kSetConfiguration:
      if (setup[2] > 1) {
        return Answer::Stalled(StallReason::kInvalidRequest);
      }
      configuration_ = setup[2];
      return Answer::Done();
    case kGetInterface:
      return Answer::Done({0});
    case kSetInterface:
      // Each interface has one setting.
      return setup[2] == 0 && setup[4] <= kStreamingInterface
                 ? Answer::Done()
                 : Answer::Stalled(StallReason::kInvalidRequest);
    case kClearFeature:
    case kSetFeature:
    case kSetAddress:
      return Answer::Done();
    default:
      return Answer::Stalled(StallReason::kInvalidRequest);
  }
}

Answer UsbCamera::Describe(std::uint8_t type, std::uint8_t index) const {
  if (type == descriptor_type::kDevice && index == 0) {
    return Answer::Done(descriptors_.device);
  }
  if (type == descriptor_type::kConfiguration && index == 0) {
    return Answer::Done(descriptors_.configuration);
  }
  if (type == descriptor_type::kQualifier && index == 0) {
    return Answer::Done(descriptors_.qualifier);
  }
  if (type == descriptor_type::kString && index == 0) {
    return Answer::Done(DescribeLanguages());
  }
  if (type == descriptor_type::kString && index <= descriptors_.strings.size()) {
    return Answer::Done(DescribeText(descriptors_.strings[index - 1U]));
  }
  return Answer::Stalled(StallReason::kInvalidRequest);
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
      return AnswerOf(camera_->Set(node, request.selector, request.data), {});
    case VideoRequest::kGetCurrent: {
      Bytes bytes(request.length);
      std::uint32_t moved = 0;
      const Outcome outcome = camera_->Get(node, request.selector, bytes, moved);
      bytes.resize(std::min<std::size_t>(moved, bytes.size()));
      return AnswerOf(outcome, std::move(bytes));
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
        RestartStream();
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

void UsbCamera::RestartStream(std::uint32_t frame) {
  frame_ = frame;
  picture_.clear();
  sent_ = 0;
}

Bytes UsbCamera::NextPayload(std::size_t room) {
  if (room <= kPayloadHeader) {
    return {};
  }
  if (picture_.empty()) {
    picture_ = DrawTestPicture(kPictureWidth, kPictureHeight, frame_);
  }
  const std::size_t most = std::min<std::size_t>(room, kPayloadSize) - kPayloadHeader;
  const std::size_t count = std::min(most, picture_.size() - sent_);
  const bool isLast = sent_ + count == picture_.size();
  const auto parity = static_cast<std::uint8_t>(frame_ & kFrameParity);
  Bytes payload = {kPayloadHeader,
                   static_cast<std::uint8_t>(kEndOfHeader | parity | (isLast ? kEndOfFrame : 0))};
  const auto begin = picture_.begin() + static_cast<std::ptrdiff_t>(sent_);
  payload.insert(payload.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
  sent_ += count;
  if (isLast) {
    RestartStream(frame_ + 1);
  }
  return payload;
}

}  // namespace zem::simulator::usb
