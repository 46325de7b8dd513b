// The library's imports by which it reaches volumes: it lists the SCSI generic devices, opens them,
// sends them commands and closes them.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "simulator/linux/import_hook.h"

namespace zem::simulator {

// What each of them leads to.
struct VolumeFunctions {
  decltype(&::opendir) openFolder;
  decltype(&::readdir) readFolder;
  decltype(&::closedir) closeFolder;
  decltype(&::open) open;
  int (*control)(int, unsigned long, ...);  // which need not be noexcept, as ioctl is
  decltype(&::close) close;
};

// While it lives, they lead elsewhere.
class VolumeImports {
 public:
  // Throws std::runtime_error when the library is not loaded in this process.
  explicit VolumeImports(const VolumeFunctions& functions)
      : openFolder_(library_, "opendir", functions.openFolder),
        readFolder_(library_, "readdir", functions.readFolder),
        closeFolder_(library_, "closedir", functions.closeFolder),
        open_(library_, "open", functions.open),
        control_(library_, "ioctl", functions.control),
        close_(library_, "close", functions.close) {}

  // What they led to before.
  VolumeFunctions Before() const {
    return {openFolder_.Before<decltype(::opendir)>(),   readFolder_.Before<decltype(::readdir)>(),
            closeFolder_.Before<decltype(::closedir)>(), open_.Before<decltype(::open)>(),
            control_.Before<decltype(::ioctl)>(),        close_.Before<decltype(::close)>()};
  }

 private:
  HeldLibrary library_ = HoldLibrary();
  ImportHook openFolder_;
  ImportHook readFolder_;
  ImportHook closeFolder_;
  ImportHook open_;
  ImportHook control_;
  ImportHook close_;
};

}  // namespace zem::simulator
