// A kernel of the test's own, behind platform/linux/kernel.h: a sysfs tree in a temporary folder,
// device files that answer ioctls, and calls that can be made to fail. Not thread-safe; a test owns
// the whole kernel.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace zem::testing {

// One device file. Results are the kernel's: 0 or more, or a negative errno value.
class FakeDevice {
 public:
  virtual ~FakeDevice() = default;
  virtual int Control(unsigned long request, void* argument) = 0;

  int openResult = 0;  // a negative errno value refuses
};

class FakeKernel {
 public:
  FakeKernel();
  ~FakeKernel();
  FakeKernel(const FakeKernel&) = delete;
  FakeKernel& operator=(const FakeKernel&) = delete;

  // Paths below are relative: to /sys, and to /dev.
  void AddFile(const std::string& path, const std::string& content);
  void AddLink(const std::string& path, const std::string& target);
  void Remove(const std::string& path);
  std::string SysPath(const std::string& path) const;

  std::map<std::string, std::shared_ptr<FakeDevice>> devices;

  // Every open and ioctl so far: "open video0 2", "video0 c0105521".
  std::vector<std::string> calls;
  // The call, counted from 0, that fails with `failure` in place of being carried out; -1 is none.
  int failingCall = -1;
  int failure = 0;
  // Asked after a call has been carried out.
  std::function<void()> onCall;

  int openFiles() const;
  int heldControls = 0;  // ioctls with signals held back

  // ---- Behind platform/linux/kernel.h ----

  // The one that there is.
  static FakeKernel& Present();

  int Open(const char* path, int flags);
  void Close(int descriptor);
  int Control(int descriptor, unsigned long request, void* argument);
  const std::string& sysFolder() const { return sysFolder_; }

 private:
  bool FailsNow(const std::string& call);

  TemporaryFolder folder_;
  std::string sysFolder_;
  std::map<int, std::string> opened_;
  int nextDescriptor_ = 0;
};

}  // namespace zem::testing
