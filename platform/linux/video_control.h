// The terminals and units of a camera, as the descriptors of its USB video function tell them. The
// bytes come from the device: whatever they are, nothing outside them is read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/com.h"

namespace zem::platform {

enum class EntityKind : std::uint8_t {
  kInputTerminal,
  kOutputTerminal,
  kSelectorUnit,
  kProcessingUnit,
  kExtensionUnit,
  kEncodingUnit,
};

// Terminal type of a camera's sensor.
inline constexpr std::uint16_t kCameraTerminalType = 0x0201;

struct VideoEntity {
  EntityKind kind;
  std::uint8_t id;             // by which requests address it
  std::uint16_t terminalType;  // of terminals
  GUID extension;              // of extension units
};

struct VideoTopology {
  // Entities are numbered by one byte, so there are no more.
  std::array<VideoEntity, 255> entities = {};
  std::size_t count = 0;

  std::span<const VideoEntity> all() const { return {entities.data(), count}; }
};

// Reads the entities of the video-control interface `interfaceNumber` in the order of their
// descriptors. `descriptors` is a device descriptor, and behind it those of each configuration, of
// which `configuration` counts. What is cut off or too short for its fields ends the walk or is
// passed over; what was read before stays.
void ReadVideoTopology(std::span<const std::uint8_t> descriptors, std::uint8_t configuration,
                       std::uint8_t interfaceNumber, VideoTopology& topology);

}  // namespace zem::platform
