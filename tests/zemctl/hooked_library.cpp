#include "tests/zemctl/hooked_library.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <string_view>

int HookedList(const char* folder) {
  DIR* const opened = ::opendir(folder);
  if (opened == nullptr) {
    return -1;
  }
  int count = 0;
  while (const dirent* const entry = ::readdir(opened)) {  // NOLINT(concurrency-mt-unsafe)
    count += std::string_view(entry->d_name).starts_with("sg") ? 1 : 0;
  }
  ::closedir(opened);
  return count;
}

int HookedOpen(const char* path) {
  const int descriptor = ::open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC);
  return descriptor >= 0 ? descriptor : -errno;
}

void HookedClose(int descriptor) { ::close(descriptor); }

int HookedControl(int descriptor, unsigned long code, void* argument) {
  const int result = ::ioctl(descriptor, code, argument);
  return result >= 0 ? result : -errno;
}

void HookedSleep(unsigned milliseconds) {
  const timespec time = {static_cast<std::time_t>(milliseconds / 1000),
                         static_cast<long>(milliseconds % 1000) * 1000000};
  ::clock_nanosleep(CLOCK_MONOTONIC, 0, &time, nullptr);
}

int HookedProcess() {
  int (*volatile function)() = ::getpid;
  return function();
}
