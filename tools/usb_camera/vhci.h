// The kernel's USB/IP host (module vhci-hcd) through its files in sysfs: the ports of a bus into
// which devices are plugged that a socket leads to.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zem::usb_camera {

struct VhciPort {
  unsigned number = 0;
  bool isSuperSpeed = false;
  bool isFree = false;
};

// The ports in the text of a "status" file; lines that are none are passed over.
std::vector<VhciPort> ParseVhciStatus(std::string_view text);

class Vhci {
 public:
  // The host whose files are in `folder`.
  explicit Vhci(std::string folder = "/sys/devices/platform/vhci_hcd.0")
      : folder_(std::move(folder)) {}

  // A free port for a high-speed device that is none of `reserved`. Throws std::runtime_error with
  // a sentence for a person where there is none, or no such host.
  unsigned FindPort(const std::vector<unsigned>& reserved) const;

  bool IsFree(unsigned port) const;

  // Plugs in the high-speed device with the number `device` that the socket leads to; the kernel
  // keeps the socket. False when somebody else has taken the port meanwhile. Throws
  // std::runtime_error with a sentence for a person.
  bool Attach(unsigned port, int socket, std::uint32_t device) const;

 private:
  std::vector<VhciPort> ReadPorts() const;

  std::string folder_;
};

}  // namespace zem::usb_camera
