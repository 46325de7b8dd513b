// An open device file, closed when it goes out of scope.
#pragma once

#include <utility>

#include "platform/linux/kernel.h"

namespace zem::platform {

class DeviceFile {
 public:
  // Takes over what kernel::Open returned.
  explicit DeviceFile(int descriptor) : descriptor_(descriptor) {}
  DeviceFile(DeviceFile&& other) noexcept : descriptor_(other.Detach()) {}
  DeviceFile& operator=(DeviceFile&&) = delete;
  ~DeviceFile() {
    if (descriptor_ >= 0) {
      kernel::Close(descriptor_);
    }
  }

  // Negative, an errno value, when the file could not be opened.
  int descriptor() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

  // Hands the descriptor over to the caller.
  [[nodiscard]] int Detach() { return std::exchange(descriptor_, -1); }

  // One request; negative is an errno value.
  int Control(unsigned long request, void* argument) const {
    return kernel::Control(descriptor_, request, argument);
  }

 private:
  int descriptor_;
};

}  // namespace zem::platform
