// What reaches a simulated camera on its bus, a line each: docs/linux.md describes them.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "simulator/boot_loader.h"
#include "simulator/usb/control_requests.h"
#include "simulator/usb/standard_requests.h"
#include "simulator/utf8_files.h"

namespace zem::usb_camera {

// A control transfer of the camera with this number.
std::string ControlLine(std::size_t camera, const simulator::usb::SetupPacket& setup,
                        std::span<const std::uint8_t> sent, const simulator::usb::Answer& answer);

// A command that the boot loader has seen.
std::string CommandLine(std::size_t camera, const simulator::ScsiExchange& exchange);

// A file that lines are written to as they come.
class TransferLog {
 public:
  // A new file, in place of one that is there. Throws std::runtime_error when it cannot be written.
  explicit TransferLog(const std::string& path);

  void Write(const std::string& line);

 private:
  simulator::File file_;
};

}  // namespace zem::usb_camera
