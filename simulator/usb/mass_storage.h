// A camera in ROM boot as a USB device: mass storage by bulk-only transport around the boot
// loader's model. What a host sends is hostile until checked.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "simulator/boot_loader.h"
#include "simulator/options.h"
#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"
#include "simulator/usb/usb_device.h"

namespace zem::simulator::usb {

// Endpoint addresses.
inline constexpr std::uint8_t kStorageIn = 0x81;
inline constexpr std::uint8_t kStorageOut = 0x02;

// The most bytes of one command's data.
inline constexpr std::uint32_t kMostStorageData = 1U << 20;

class UsbBootLoader : public UsbDevice {
 public:
  // With the ids of the camera that it belongs to.
  UsbBootLoader(const CameraOptions& options, std::shared_ptr<BootLoader> bootLoader);

  Answer Control(const SetupPacket& setup, std::span<const std::uint8_t> data) override;

  // A command, or the data of one.
  Answer Send(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) override;

  // The data of a command, then its status.
  std::optional<Answer> Receive(std::uint8_t endpoint, std::size_t length, Time now) override;

  void Release() override { Reset(); }

  const DeviceDescriptors& descriptors() const override { return standard_.descriptors(); }
  bool isGone() const override { return isGone_ || (isLeaving_ && phase_ == Phase::kCommand); }

  // Something else runs in the camera from now on: the device leaves the bus once the host has the
  // status of the command that did so.
  void Leave() { isLeaving_ = true; }

 private:
  enum class Phase { kCommand, kDataOut, kDataIn, kStatus, kHalted, kSilent };

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
  bool isGone_ = false;
  bool isLeaving_ = false;
};

}  // namespace zem::simulator::usb
