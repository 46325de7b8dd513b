// The camera that a command works on.
#pragma once

#include <optional>
#include <string>

namespace zemctl {

struct DeviceSelection {
  unsigned index = 0;
  std::optional<unsigned> vendorId;
  std::optional<unsigned> productId;
  std::string displayName;
  std::string devicePath;
};

// COM on this thread, for as long as it lives.
class ComThread {
 public:
  ComThread();
  ~ComThread();
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;
};

// An opened camera, closed when it goes out of scope.
class Session {
 public:
  // Throws CallFailure when the camera cannot be opened.
  explicit Session(const DeviceSelection& selection);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void* handle() const { return handle_; }

 private:
  void* handle_ = nullptr;
};

}  // namespace zemctl
