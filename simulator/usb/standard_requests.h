// What every USB device answers on its control endpoint, whatever it is: its descriptors, and the
// requests of the standard.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/usb/control_requests.h"

namespace zem::simulator::usb {

using Bytes = std::vector<std::uint8_t>;

// A control transfer's eight bytes.
using SetupPacket = std::array<std::uint8_t, 8>;

// Types of the descriptors that a host asks for.
namespace descriptor_type {

inline constexpr std::uint8_t kDevice = 0x01;
inline constexpr std::uint8_t kConfiguration = 0x02;
inline constexpr std::uint8_t kString = 0x03;
inline constexpr std::uint8_t kQualifier = 0x06;

}  // namespace descriptor_type

struct DeviceDescriptors {
  Bytes device;
  Bytes configuration;               // with all that belongs to it
  Bytes qualifier;                   // of the other speed
  std::vector<std::string> strings;  // by index from 1: maker, product, serial number
};

// A string descriptor of ASCII text, cut to what one holds.
Bytes DescribeText(const std::string& text);
// The languages that texts are in.
Bytes DescribeLanguages();

// Whether a request is one of the standard's, and whether one of a class to an interface.
bool IsStandard(const SetupPacket& setup);
bool IsOfClass(const SetupPacket& setup);

// Whether a standard request chooses a configuration, and whether it clears an endpoint's halt.
bool IsConfiguring(const SetupPacket& setup);
bool ClearsHalt(const SetupPacket& setup, std::uint8_t endpoint);

// An answer cut to what the host asked for; nothing for a transfer out.
Answer CutToRequest(const SetupPacket& setup, Answer answer);

// The standard's requests to a device of one configuration, whose interfaces have one setting each.
class StandardRequests {
 public:
  explicit StandardRequests(DeviceDescriptors descriptors);

  Answer Request(const SetupPacket& setup);

  const DeviceDescriptors& descriptors() const { return descriptors_; }
  std::uint8_t configuration() const { return configuration_; }

 private:
  Answer Describe(std::uint8_t type, std::uint8_t index) const;

  DeviceDescriptors descriptors_;
  std::uint8_t configuration_ = 0;
};

}  // namespace zem::simulator::usb
