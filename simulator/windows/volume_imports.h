// The library's imports by which it reaches volumes: it opens them, sends them commands and closes
// them.
#pragma once

#include "simulator/windows/import_hook.h"

namespace zem::simulator {

// What each of them leads to.
struct VolumeFunctions {
  decltype(&CreateFileW) open;
  decltype(&DeviceIoControl) control;
  decltype(&CloseHandle) close;
};

// While it lives, they lead elsewhere.
class VolumeImports {
 public:
  // Throws std::runtime_error when the library is not loaded in this process.
  explicit VolumeImports(const VolumeFunctions& functions)
      : open_(library_.get(), "CreateFileW", AsImport(functions.open)),
        control_(library_.get(), "DeviceIoControl", AsImport(functions.control)),
        close_(library_.get(), "CloseHandle", AsImport(functions.close)) {}

  // What they led to before.
  VolumeFunctions Before() const {
    return {simulator::Before<decltype(CreateFileW)>(open_),
            simulator::Before<decltype(DeviceIoControl)>(control_),
            simulator::Before<decltype(CloseHandle)>(close_)};
  }

 private:
  HeldModule library_ = HoldLibrary();
  ImportHook open_;
  ImportHook control_;
  ImportHook close_;
};

}  // namespace zem::simulator
