// A simulated camera as a USB device: what it answers on its control endpoint, and the payloads of
// its picture. It knows no transport. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "simulator/camera.h"
#include "simulator/options.h"
#include "simulator/usb/camera_descriptors.h"
#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"
#include "simulator/usb/unit_controls.h"

namespace zem::simulator::usb {

class UsbCamera {
 public:
  // `camera` is MakeCamera's of the same options.
  UsbCamera(const CameraOptions& options, std::shared_ptr<Camera> camera);

  // A transfer on endpoint 0; `data` is what the host sends. What it answers is cut to what the
  // host asked for.
  Answer Control(const SetupPacket& setup, std::span<const std::uint8_t> data);

  // The next payload of the stream endpoint, with its header, of at most `room` bytes: one frame
  // after another, in payloads of kPayloadSize.
  Bytes NextPayload(std::size_t room);

  // Begins the stream anew, with the frame `frame`.
  void RestartStream(std::uint32_t frame = 0);

  const DeviceDescriptors& descriptors() const { return standard_.descriptors(); }
  bool isGone() const { return camera_->unplugged(); }
  std::uint8_t configuration() const { return standard_.configuration(); }

 private:
  Answer Video(const SetupPacket& setup, std::span<const std::uint8_t> data);
  Answer RequestUnit(std::size_t unit, const ControlRequest& request);
  Answer RequestStream(const ControlRequest& request);

  CameraOptions options_;
  std::shared_ptr<Camera> camera_;
  StandardRequests standard_;
  std::vector<DescribedUnit> units_;
  StallReason lastReason_ = StallReason::kNone;
  std::uint32_t frame_ = 0;
  Bytes picture_;
  std::size_t sent_ = 0;  // of the picture
};

}  // namespace zem::simulator::usb
