// The library's and this program's way to the system's devices, led past traces and replays.
#pragma once

#include <memory>

namespace zemctl {

// As long as one lives, a thread that is traced or replays a trace finds the devices that
// traced_devices.h gives it; every other thread those of the system. There is one at a time; it
// must be made after the simulator has started and go before that stops.
class LibraryHooks {
 public:
  LibraryHooks();
  ~LibraryHooks();
  LibraryHooks(const LibraryHooks&) = delete;
  LibraryHooks& operator=(const LibraryHooks&) = delete;

 private:
  struct Hooks;
  std::unique_ptr<Hooks> hooks_;
};

}  // namespace zemctl
