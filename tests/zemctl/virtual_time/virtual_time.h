// Time that passes only where somebody waits for it.
#pragma once

#include <cstdint>
#include <memory>

// As long as one lives, waits of the library and of this program return at once, and their clocks
// have gone on by as much.
class VirtualTime {
 public:
  VirtualTime();
  ~VirtualTime();
  VirtualTime(const VirtualTime&) = delete;
  VirtualTime& operator=(const VirtualTime&) = delete;

  static std::uint64_t Milliseconds();

 private:
  struct Hooks;
  std::unique_ptr<Hooks> hooks_;
};
