#include "simulator/usb/standard_requests.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"

namespace zem::simulator::usb {
namespace {

// Kinds of a request, and whom it is for.
constexpr std::uint8_t kKindMask = 0x60;
constexpr std::uint8_t kClassKind = 0x20;
constexpr std::uint8_t kTargetMask = 0x1F;
constexpr std::uint8_t kToInterface = 0x01;
constexpr std::uint8_t kToEndpoint = 0x02;
constexpr std::uint8_t kIn = 0x80;

constexpr std::uint8_t kGetStatus = 0;
constexpr std::uint8_t kClearFeature = 1;
constexpr std::uint8_t kSetFeature = 3;
constexpr std::uint8_t kSetAddress = 5;
constexpr std::uint8_t kGetDescriptor = 6;
constexpr std::uint8_t kGetConfiguration = 8;
constexpr std::uint8_t kSetConfiguration = 9;
constexpr std::uint8_t kGetInterface = 10;
constexpr std::uint8_t kSetInterface = 11;

// Of a configuration's descriptor.
constexpr std::size_t kInterfaceCount = 4;

}  // namespace

Bytes DescribeText(const std::string& text) {
  constexpr std::size_t kMostCharacters = 126;
  const std::string kept = text.substr(0, kMostCharacters);
  Bytes descriptor = {static_cast<std::uint8_t>(2 + 2 * kept.size()), descriptor_type::kString};
  for (const char character : kept) {
    descriptor.push_back(static_cast<std::uint8_t>(character));
    descriptor.push_back(0);
  }
  return descriptor;
}

Bytes DescribeLanguages() {
  return {4, descriptor_type::kString, 0x09, 0x04};  // English
}

bool IsStandard(const SetupPacket& setup) { return (setup[0] & kKindMask) == 0; }

bool IsOfClass(const SetupPacket& setup) {
  return (setup[0] & kKindMask) == kClassKind && (setup[0] & kTargetMask) == kToInterface;
}

bool IsConfiguring(const SetupPacket& setup) { return setup[1] == kSetConfiguration; }

bool ClearsHalt(const SetupPacket& setup, std::uint8_t endpoint) {
  return (setup[0] & kTargetMask) == kToEndpoint && setup[1] == kClearFeature &&
         setup[4] == endpoint;
}

Answer CutToRequest(const SetupPacket& setup, Answer answer) {
  const std::size_t asked = (setup[0] & kIn) != 0 ? LoadLe16(&setup[6]) : 0;
  answer.data.resize(std::min(answer.data.size(), asked));
  return answer;
}

StandardRequests::StandardRequests(DeviceDescriptors descriptors)
    : descriptors_(std::move(descriptors)) {}

Answer StandardRequests::Request(const SetupPacket& setup) {
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
      return setup[2] == 0 && setup[4] < descriptors_.configuration[kInterfaceCount]
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

Answer StandardRequests::Describe(std::uint8_t type, std::uint8_t index) const {
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

}  // namespace zem::simulator::usb
