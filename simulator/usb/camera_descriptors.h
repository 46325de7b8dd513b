// A simulated camera as USB descriptors: what a system reads of the device before it drives it.
#pragma once

#include <cstdint>

#include "simulator/options.h"
#include "simulator/usb/standard_requests.h"

namespace zem::simulator::usb {

// Ids of the camera's entities. Those of its extension units follow that of the processing unit in
// the order of the model's nodes; the output terminal's is behind the last.
inline constexpr std::uint8_t kCameraTerminalId = 1;
inline constexpr std::uint8_t kProcessingUnitId = 2;
inline constexpr std::uint8_t kFirstExtensionId = 3;

inline constexpr std::uint8_t kVideoControlInterface = 0;
inline constexpr std::uint8_t kStreamingInterface = 1;

// Endpoint addresses: changes of controls, and the picture.
inline constexpr std::uint8_t kStatusEndpoint = 0x81;
inline constexpr std::uint8_t kStreamEndpoint = 0x82;

// The one picture that the camera streams, YUY2.
inline constexpr std::uint16_t kPictureWidth = 640;
inline constexpr std::uint16_t kPictureHeight = 480;
inline constexpr std::uint32_t kPictureSize = 2U * kPictureWidth * kPictureHeight;
inline constexpr std::uint32_t kFrameInterval = 333333;  // of 100 ns

// The most bytes of a picture that go in one payload, with its header.
inline constexpr std::uint32_t kPayloadSize = 16384;

DeviceDescriptors DescribeCamera(const CameraOptions& options);

}  // namespace zem::simulator::usb
