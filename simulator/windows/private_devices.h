// Devices that only this process finds.
#pragma once

#include <optional>
#include <string>

#include "simulator/device_list.h"
#include "simulator/windows/import_hook.h"

namespace zem::simulator {

// While it lives, ZemUVCExtApi.dll and the program get this list's enumerator where they ask COM
// for the system's: it knows no other devices. There is one at a time; any thread may use it.
class PrivateDevices {
 public:
  // Throws std::runtime_error when the library is not loaded in this process.
  PrivateDevices();
  ~PrivateDevices();
  PrivateDevices(const PrivateDevices&) = delete;
  PrivateDevices& operator=(const PrivateDevices&) = delete;

  // Replaces a device with the same display name.
  static void List(const ListedDevice& device);
  static void Unlist(const std::wstring& displayName);

  // With one reference for the caller.
  static ICreateDevEnum* MakeEnumerator();

 private:
  HeldModule library_;
  HeldModule program_;
  std::optional<ImportHook> libraryHook_;
  std::optional<ImportHook> programHook_;
};

}  // namespace zem::simulator
