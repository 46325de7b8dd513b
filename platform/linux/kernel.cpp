#include "platform/linux/kernel.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace zem::platform::kernel {

const char* SysFolder() { return "/sys"; }

const char* DeviceFolder() { return "/dev"; }

int Open(const char* path, int flags) {
  const int descriptor = ::open(path, flags | O_CLOEXEC);
  return descriptor >= 0 ? descriptor : -errno;
}

void Close(int descriptor) { static_cast<void>(::close(descriptor)); }

int Control(int descriptor, unsigned long request, void* argument) {
  for (;;) {
    const int result = ::ioctl(descriptor, request, argument);
    if (result >= 0) {
      return result;
    }
    if (errno != EINTR) {
      return -errno;
    }
  }
}

int ControlWithSignalsHeld(int descriptor, unsigned long request, void* argument) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  static_cast<void>(pthread_sigmask(SIG_SETMASK, &all, &before));
  const int result = Control(descriptor, request, argument);
  static_cast<void>(pthread_sigmask(SIG_SETMASK, &before, nullptr));
  return result;
}

}  // namespace zem::platform::kernel
