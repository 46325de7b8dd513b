#include "tools/usb_camera/vhci.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tools/usb_camera/descriptor.h"

namespace zem::usb_camera {
namespace {

// State of a port into which nothing is plugged.
constexpr unsigned kFreeState = 4;

constexpr std::uint32_t kHighSpeed = 3;

constexpr const char* kNoRoot = "only root may plug a camera into this machine's kernel";

}  // namespace

// A line behind the heading: "hs  0000 004 000 00000000 000000 0-0".
std::vector<VhciPort> ParseVhciStatus(std::string_view text) {
  std::vector<VhciPort> ports;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string hub;
    VhciPort port;
    unsigned state = 0;
    if (fields >> hub >> port.number >> state && (hub == "hs" || hub == "ss")) {
      port.isSuperSpeed = hub == "ss";
      port.isFree = state == kFreeState;
      ports.push_back(port);
    }
  }
  return ports;
}

// Each controller behind the first has a file of its own.
std::vector<VhciPort> Vhci::ReadPorts() const {
  std::vector<VhciPort> ports;
  std::string name = "/status";
  for (int controller = 1;; ++controller) {
    const std::ifstream file(folder_ + name);
    if (!file) {
      break;
    }
    std::ostringstream text;
    text << file.rdbuf();
    std::ranges::copy(ParseVhciStatus(text.str()), std::back_inserter(ports));
    name = "/status." + std::to_string(controller);
  }
  if (ports.empty()) {
    throw std::runtime_error(
        "the kernel has no USB/IP host: its module vhci-hcd is not loaded (modprobe vhci-hcd)");
  }
  return ports;
}

unsigned Vhci::FindPort(const std::vector<unsigned>& reserved) const {
  std::size_t highSpeed = 0;
  for (const VhciPort& port : ReadPorts()) {
    highSpeed += port.isSuperSpeed ? 0 : 1;
    if (port.isFree && !port.isSuperSpeed && std::ranges::count(reserved, port.number) == 0) {
      return port.number;
    }
  }
  throw std::runtime_error(
      "all " + std::to_string(highSpeed) +
      " high-speed ports of the kernel's USB/IP host are in use; a camera does "
      "not fit into its super-speed ports");
}

bool Vhci::IsFree(unsigned port) const {
  const std::vector<VhciPort> ports = ReadPorts();
  return std::ranges::any_of(
      ports, [port](const VhciPort& each) { return each.number == port && each.isFree; });
}

bool Vhci::Attach(unsigned port, int socket, std::uint32_t device) const {
  const Descriptor file(open((folder_ + "/attach").c_str(), O_WRONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    throw std::runtime_error(errno == EACCES || errno == EPERM
                                 ? kNoRoot
                                 : std::string("the kernel's USB/IP host cannot be used: ") +
                                       std::strerror(errno));
  }
  const std::string text = std::to_string(port) + " " + std::to_string(socket) + " " +
                           std::to_string(device) + " " + std::to_string(kHighSpeed) + "\n";
  const bool isAttached = write(file.number(), text.data(), text.size()) >= 0;
  if (!isAttached && errno != EBUSY) {
    throw std::runtime_error("the kernel refused the camera at port " + std::to_string(port) +
                             ": " + std::strerror(errno));
  }
  return isAttached;
}

}  // namespace zem::usb_camera
