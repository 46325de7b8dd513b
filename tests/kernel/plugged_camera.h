// Simulated cameras in this machine's kernel: zem-usb-camera plugs them in, and tells what passed
// on their wire.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace zem::testing {

using Lines = std::vector<std::string>;

// The device file of a camera in the first port, by the name that udev gives it.
inline constexpr const char* kVideoFile =
    "/dev/v4l/by-path/platform-vhci_hcd.0-usb-0:1:1.0-video-index0";

// Waits until a condition holds, at most for twenty seconds; whether it does.
bool WaitUntil(const std::function<bool()>& condition);

// The names of a folder's entries that begin with `prefix`, in order; none of a folder that does
// not exist.
Lines EntriesOf(const std::string& folder, const std::string& prefix = "");

std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

// A program's end and what it said.
struct ProgramResult {
  int status = -1;  // negative: the signal that ended it
  std::string output;
  std::string errors;
};

// Makes this process one of a user.
void BecomeUser(uid_t user);

// Runs a program of the guest with a shell's words, as a user.
ProgramResult RunProgram(const std::string& command, uid_t user = 0);

// Long transfers cut to their first bytes and the length of their text.
Lines HeadsOf(Lines transfers);

// The cameras in the system, and the storages of those in ROM boot.
inline constexpr const char* kCameras = "/sys/class/video4linux";
inline constexpr const char* kStorages = "/sys/class/scsi_generic";

// Whether one is there, udev's part done.
bool IsCameraThere();
bool IsStorageThere();

// Whether the kernel has taken a camera away whole. Who closes one in the moment before may bring
// the kernel down: its media device loses its parts to both at once.
bool IsCameraGone();

// The simulator's options for a camera in ROM boot.
inline constexpr const char* kInRomBoot = R"({"cameras": [], "bootLoader": {}})";

// zem-usb-camera for as long as the object lives.
class PluggedCamera {
 public:
  // With the options of the simulator, as JSON. Waits until it is there, as a camera or in ROM
  // boot.
  explicit PluggedCamera(const std::string& options = "{}");
  ~PluggedCamera();
  PluggedCamera(const PluggedCamera&) = delete;
  PluggedCamera& operator=(const PluggedCamera&) = delete;

  // Pulls the plug.
  void Unplug();

  // What was set and read on the wire since the last call, of all units and terminals: "set 3.1 0a
  // 00" and "get 3.2 00 01" with unit and selector. What the kernel asks about a control is left
  // out.
  Lines TakeTransfers();

 private:
  pid_t program_ = -1;
  std::size_t taken_ = 0;
};

}  // namespace zem::testing
