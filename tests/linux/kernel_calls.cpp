// The platform's calls of the kernel, led to the test's.
#include "platform/linux/kernel.h"
#include "tests/linux/fake_kernel.h"

namespace zem::platform::kernel {

using testing::FakeKernel;

const char* SysFolder() { return FakeKernel::Present().sysFolder().c_str(); }

const char* DeviceFolder() { return "/dev"; }

int Open(const char* path, int flags) { return FakeKernel::Present().Open(path, flags); }

void Close(int descriptor) { FakeKernel::Present().Close(descriptor); }

int Control(int descriptor, unsigned long request, void* argument) {
  return FakeKernel::Present().Control(descriptor, request, argument);
}

int ControlWithSignalsHeld(int descriptor, unsigned long request, void* argument) {
  ++FakeKernel::Present().heldControls;
  return FakeKernel::Present().Control(descriptor, request, argument);
}

}  // namespace zem::platform::kernel
