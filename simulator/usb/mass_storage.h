// A camera in ROM boot as a USB device: mass storage by bulk-only transport around the boot
// loader's model. It knows no USB/IP. What a host sends is hostile until checked. One thread at a
// time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "simulator/boot_loader.h"
#include "simulator/options.h"
#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"

namespace zem::simulator::usb {

// Endpoint addresses.
inline constexpr std::uint8_t kStorageIn = 0x81;
inline constexpr std::uint8_t kStorageOut = 0x02;

// The most bytes of one command's data.
inline constexpr std::uint32_t kMostStorageData = 1U << 20;

class UsbBootLoader {
 public:
  // With the ids of the camera that it belongs to.
  UsbBootLoader(const CameraOptions& options, std::shared_ptr<BootLoader> bootLoader);

  // A transfer on endpoint 0.
  Answer Control(const SetupPacket& setup);

  // Bytes that the host sends: a command, or the data of one.
  Answer Send(std::span<const std::uint8_t> bytes);

  // Bytes that the host asks for: the data of a command, then its status. Nothing while the device
  // has none; the host waits.
  std::optional<Answer> Receive(std::size_t length);

  const DeviceDescriptors& descriptors() const { return standard_.descriptors(); }

 private:
  enum class Phase { kCommand, kDataOut, kDataIn, kStatus, kHalted };

  struct Command {
    std::uint32_t tag = 0;
    std::uint32_t length = 0;
    bool isIn = false;
    Bytes cdb;
  };

  Answer Begin(std::span<const std::uint8_t> bytes);
  Answer CarryOut();
  ScsiResult Execute();
  // The commands by which a system looks at a disk, which are none of the boot loader's.
  std::optional<ScsiResult> ExecuteOwn();
  Bytes Status() const;
  void Reset();

  std::shared_ptr<BootLoader> bootLoader_;
  StandardRequests standard_;
  Phase phase_ = Phase::kCommand;
  Command command_;
  Bytes data_;             // that has come, or that goes
  std::size_t moved_ = 0;  // of it, in the host's sense
  std::uint8_t status_ = 0;
  std::array<std::uint8_t, 3> sense_ = {};  // key, code, qualifier
  bool gone_ = false;
};

}  // namespace zem::simulator::usb
