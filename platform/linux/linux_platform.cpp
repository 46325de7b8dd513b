// The platform wall on Linux, but for its volumes: each function is a few lines on the system call
// of that purpose. What every system but Windows has in common is in platform/portable/.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string_view>

#include "platform/file_contents.h"
#include "platform/linux/device_enumerator.h"
#include "platform/platform.h"
#include "platform/portable/narrow_files.h"
#include "platform/portable/private_profile.h"
#include "platform/portable/utf8.h"

extern "C" [[gnu::weak]] HRESULT ZemHostDeviceEnumerator(ICreateDevEnum** enumerator);

namespace zem::platform {
namespace {

// Longer than any settings file.
constexpr std::uint64_t kMaxProfile = 1U << 20;

// The longest text that goes to the debugger channel in one piece.
constexpr std::size_t kDebuggerCapacity = 4096;

// The stream of the debugger channel: chosen by ZEM_DEBUG, "stderr" or the path of a file that is
// appended to; none by default. A privileged program writes nothing at its user's word.
int OpenDebuggerStream() {
  const char* const chosen = ::secure_getenv("ZEM_DEBUG");
  if (chosen == nullptr || *chosen == '\0') {
    return -1;
  }
  if (std::strcmp(chosen, "stderr") == 0) {
    return STDERR_FILENO;
  }
  constexpr mode_t kOwnersAndReadable = 0644;
  return ::open(chosen, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kOwnersAndReadable);
}

// The narrow form of a text; the line end of Windows becomes this system's.
std::string_view NarrowLine(std::wstring_view text, std::span<char> buffer) {
  const bool hasEnd = text.ends_with(L"\r\n");
  std::size_t length = 0;
  for (const wchar_t character : text.substr(0, text.size() - (hasEnd ? 2 : 0))) {
    const Utf8Sequence sequence = EncodeUtf8(character);
    if (length + sequence.length >= buffer.size()) {
      break;
    }
    length += sequence.text().copy(&buffer[length], sequence.length);
  }
  if (hasEnd) {
    buffer[length++] = '\n';
  }
  return {buffer.data(), length};
}

}  // namespace

// There is no COM to initialise.
void InitializeCom() {}
void UninitializeCom() {}

HRESULT CreateDeviceEnumerator(ICreateDevEnum** enumerator) {
  return ZemHostDeviceEnumerator != nullptr ? ZemHostDeviceEnumerator(enumerator)
                                            : MakeDeviceEnumerator(enumerator);
}

void HostFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  std::array<char, PATH_MAX> program = {};
  // Without /proc nothing is written there, and the folder is empty.
  static_cast<void>(::readlink("/proc/self/exe", program.data(), program.size() - 1));
  const std::string_view whole = program.data();
  std::array<wchar_t, kPathCapacity> folder = {};
  WidenText(whole.substr(0, whole.rfind('/')), folder);
  FormatWide(path, L"%s/%s", folder.data(), name);
}

std::uint32_t PrivateProfileInt(const wchar_t* section, const wchar_t* key, std::uint32_t fallback,
                                const wchar_t* path) {
  const FileContents file = ReadWholeFile(path, 0, kMaxProfile);
  const std::unique_ptr<wchar_t[]> text(file ? new (std::nothrow) wchar_t[file.size() + 1]
                                             : nullptr);
  if (text == nullptr) {
    return fallback;
  }
  WidenText({reinterpret_cast<const char*>(file.data()), file.size()},
            {text.get(), file.size() + 1});
  return ParsePrivateProfileInt(text.get(), section, key, fallback);
}

std::FILE* OpenFile(const wchar_t* path, const wchar_t* mode) {
  return path != nullptr ? OpenNarrow(path, mode) : nullptr;
}

LocalTime CurrentLocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  ::localtime_r(&now, &local);
  constexpr int kFirstYear = 1900;
  return {local.tm_year + kFirstYear,
          local.tm_mon + 1,
          local.tm_mday,
          local.tm_hour,
          local.tm_min,
          local.tm_sec};
}

void Sleep(std::uint32_t milliseconds) {
  timespec left = {static_cast<std::time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (::clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

std::uint32_t MillisecondClock() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000U +
                                    static_cast<std::uint64_t>(now.tv_nsec) / 1000000U);
}

// Threads have no message queue here.
void DrainMessageQueue() {}

void DebuggerOutput(const wchar_t* text) {
  const int stream = OpenDebuggerStream();
  if (stream < 0) {
    return;
  }
  std::array<char, kDebuggerCapacity> buffer = {};
  const std::string_view line = NarrowLine(text, buffer);
  // At once, so that the lines of several programs stay whole.
  static_cast<void>(::write(stream, line.data(), line.size()));
  if (stream != STDERR_FILENO) {
    static_cast<void>(::close(stream));
  }
}

void BoundedCopy(char* destination, std::size_t size, const char* text) {
  const std::size_t needed = std::strlen(text) + 1;
  if (needed > size) {
    destination[0] = '\0';
    std::abort();
  }
  std::memcpy(destination, text, needed);
}

}  // namespace zem::platform
