// A simulated camera as a USB device: what it answers on its control endpoint, and the payloads of
// its picture.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "simulator/camera.h"
#include "simulator/options.h"
#include "simulator/usb/camera_descriptors.h"
#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"
#include "simulator/usb/unit_controls.h"
#include "simulator/usb/usb_device.h"

namespace zem::simulator::usb {

class UsbCamera : public UsbDevice {
 public:
  // `camera` is MakeCamera's of the same options.
  UsbCamera(const CameraOptions& options, std::shared_ptr<Camera> camera);

  Answer Control(const SetupPacket& setup, std::span<const std::uint8_t> data) override;
  Answer Send(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) override;

  // The stream endpoint gives one frame after another once the stream is committed, each at its
  // time or, where the host asks later, then; in payloads of kPayloadSize with a header each.
  // Controls never change by themselves: the status endpoint has nothing.
  std::optional<Answer> Receive(std::uint8_t endpoint, std::size_t length, Time now) override;
  std::optional<Time> NextDue(std::uint8_t endpoint) const override;

  void Release() override { StopStream(); }

  const DeviceDescriptors& descriptors() const override { return standard_.descriptors(); }
  bool isGone() const override { return camera_->unplugged(); }
  std::uint8_t configuration() const { return standard_.configuration(); }

  // Called with whether the camera streams, when that changes.
  void SetStreamObserver(std::function<void(bool)> observer) {
    streamObserver_ = std::move(observer);
  }

 private:
  Answer Video(const SetupPacket& setup, std::span<const std::uint8_t> data);
  Answer RequestUnit(std::size_t unit, const ControlRequest& request);
  Answer RequestStream(const ControlRequest& request);
  void StopStream();
  void TellStream(bool runs);
  Bytes NextPayload();

  CameraOptions options_;
  std::shared_ptr<Camera> camera_;
  StandardRequests standard_;
  std::vector<DescribedUnit> units_;
  StallReason lastReason_ = StallReason::kNone;
  std::function<void(bool)> streamObserver_;
  bool isCommitted_ = false;
  bool isStreaming_ = false;
  std::uint32_t frame_ = 0;
  Time frameDue_ = {};
  Bytes picture_;
  std::size_t sent_ = 0;  // of the picture
  Bytes payload_;         // what is left of the present one
};

}  // namespace zem::simulator::usb
