// A device as its bus meets it, whatever it is: descriptors, a control endpoint, and endpoints that
// carry bytes. It knows no transport. One thread at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"

namespace zem::simulator::usb {

using Time = std::chrono::steady_clock::time_point;

class UsbDevice {
 public:
  UsbDevice() = default;
  virtual ~UsbDevice() = default;
  UsbDevice(const UsbDevice&) = delete;
  UsbDevice& operator=(const UsbDevice&) = delete;

  virtual const DeviceDescriptors& descriptors() const = 0;

  // A transfer on endpoint 0; `data` is what the host sends. What it answers is cut to what the
  // host asked for.
  virtual Answer Control(const SetupPacket& setup, std::span<const std::uint8_t> data) = 0;

  // Bytes that the host sends to an endpoint, by its address.
  virtual Answer Send(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) = 0;

  // Bytes that the host asks an endpoint for. Nothing while there are none: the host waits.
  virtual std::optional<Answer> Receive(std::uint8_t endpoint, std::size_t length, Time now) = 0;

  // When an endpoint that has nothing will have something by itself.
  virtual std::optional<Time> NextDue(std::uint8_t /*endpoint*/) const { return std::nullopt; }

  // Its host has let go of it: nothing is under way any more.
  virtual void Release() = 0;

  // It has left the bus.
  virtual bool isGone() const = 0;
};

}  // namespace zem::simulator::usb
