#include "platform/simulated/simulated_platform.h"

#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "platform/portable/private_profile.h"

namespace zem::platform {
namespace {

// Longest text a format of the library can give before it is cut to the caller's buffer.
constexpr std::size_t kFormatCapacity = 4096;

// The UTF-8 form of a wide text. Characters that are none become question marks.
std::string NarrowText(std::wstring_view text) {
  std::string narrow;
  for (const wchar_t character : text) {
    const auto code = static_cast<std::uint32_t>(static_cast<char32_t>(character));
    if (code < 0x80) {
      narrow += static_cast<char>(code);
    } else if (code < 0x800) {
      narrow += static_cast<char>(0xC0 | (code >> 6));
      narrow += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      narrow += static_cast<char>(0xE0 | (code >> 12));
      narrow += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      narrow += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x110000) {
      narrow += static_cast<char>(0xF0 | (code >> 18));
      narrow += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      narrow += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      narrow += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      narrow += '?';
    }
  }
  return narrow;
}

// In the library's formats %s is a wide string; the C library of this system calls that %ls.
void TranslateFormat(const wchar_t* format, std::span<wchar_t> translated) {
  std::size_t out = 0;
  for (const wchar_t* in = format; *in != L'\0' && out + 2 < translated.size(); ++in) {
    if (*in == L's' && in != format && in[-1] == L'%') {
      translated[out++] = L'l';
    }
    translated[out++] = *in;
  }
  translated[out] = L'\0';
}

simulated::System theSystem;

// Error codes of the system.
constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kInvalidHandle = 6;

// The open volume behind a handle; null, and the call is written down, when there is none.
simulated::OpenedVolume* FindOpenVolume(VolumeHandle handle) {
  simulated::System& system = simulated::TheSystem();
  for (simulated::OpenedVolume& volume : system.openedVolumes) {
    if (&volume == handle && volume.open) {
      return &volume;
    }
  }
  ++system.invalidVolumeCalls;
  system.lastError = kInvalidHandle;
  return nullptr;
}

}  // namespace

namespace simulated {

std::vector<std::wstring> System::OpenVolumePaths() const {
  std::vector<std::wstring> paths;
  for (const OpenedVolume& volume : openedVolumes) {
    if (volume.open) {
      paths.push_back(volume.path);
    }
  }
  return paths;
}

System& TheSystem() { return theSystem; }

void Reset() { TheSystem() = System(); }

wchar_t* AllocateTaskText(const std::wstring& text) {
  const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
  void* copy = std::malloc(size);
  if (copy != nullptr) {
    std::memcpy(copy, text.c_str(), size);
  }
  return static_cast<wchar_t*>(copy);
}

}  // namespace simulated

void InitializeCom() { ++simulated::TheSystem().comInitializations; }

void UninitializeCom() { ++simulated::TheSystem().comUninitializations; }

HRESULT CreateDeviceEnumerator(ICreateDevEnum** enumerator) {
  constexpr auto kClassNotRegistered = static_cast<HRESULT>(0x80040154U);
  const auto& create = simulated::TheSystem().createDeviceEnumerator;
  return create ? create(enumerator) : kClassNotRegistered;
}

void FreeTaskMemory(void* memory) { std::free(memory); }

void InitVariant(VARIANT* value) { *value = VARIANT{VT_EMPTY, nullptr}; }

void ClearVariant(VARIANT* value) {
  if (value->vt == VT_BSTR) {
    std::free(value->bstrVal);
  }
  InitVariant(value);
}

void HostExecutableFolder(std::span<wchar_t, kPathCapacity> folder) {
  const std::wstring& text = simulated::TheSystem().hostFolder;
  const std::size_t length = std::min(text.size(), folder.size() - 1);
  std::copy_n(text.begin(), length, folder.begin());
  folder[length] = L'\0';
}

std::uint32_t PrivateProfileInt(const wchar_t* section, const wchar_t* key, std::uint32_t fallback,
                                const wchar_t* path) {
  simulated::System& system = simulated::TheSystem();
  system.profileReads.emplace_back(path);
  const auto file = system.profileFiles.find(path);
  return file == system.profileFiles.end()
             ? fallback
             : ParsePrivateProfileInt(file->second, section, key, fallback);
}

std::FILE* OpenFile(const wchar_t* path, const wchar_t* mode) {
  if (path == nullptr) {
    return nullptr;
  }
  const auto& refuse = simulated::TheSystem().refuseFile;
  if (refuse && refuse(path)) {
    return nullptr;
  }
  // Every file of the library is binary: without the b another system would change the line ends.
  static constexpr std::string_view kModes[] = {"rb", "wb", "r+b", "w+b", "a+b"};
  const std::string narrowMode = NarrowText(mode);
  if (std::find(std::begin(kModes), std::end(kModes), narrowMode) == std::end(kModes)) {
    return nullptr;
  }
  return std::fopen(NarrowText(path).c_str(), narrowMode.c_str());
}

void WriteText(std::FILE* file, const wchar_t* text) {
  const std::string narrow = NarrowText(text);
  static_cast<void>(std::fwrite(narrow.data(), 1, narrow.size(), file));
}

void LogFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  const char* const folder = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe)
  const std::filesystem::path whole =
      std::filesystem::path(folder != nullptr ? folder : "/tmp") / std::filesystem::path(name);
  FormatWide(path, L"%s", whole.wstring().c_str());
}

LocalTime CurrentLocalTime() { return simulated::TheSystem().localTime; }

bool SeekFile(std::FILE* file, std::uint64_t position) {
  return position <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
         fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> MeasureFile(std::FILE* file) {
  if (fseeko(file, 0, SEEK_END) != 0) {
    return std::nullopt;
  }
  const off_t end = ftello(file);
  if (end < 0 || !SeekFile(file, 0)) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(end);
}

VolumeHandle OpenVolume(const wchar_t* path) {
  simulated::System& system = simulated::TheSystem();
  system.volumePaths.emplace_back(path);
  const auto known = system.volumes.find(path);
  simulated::VolumeAnswer answer;
  if (known != system.volumes.end()) {
    answer = known->second;
  } else if (system.openVolume) {
    answer = system.openVolume(path);
  }
  if (!answer) {
    system.lastError = kFileNotFound;
    return nullptr;
  }
  return &system.openedVolumes.emplace_back(simulated::OpenedVolume{path, std::move(answer)});
}

void CloseVolume(VolumeHandle volume) {
  if (simulated::OpenedVolume* const opened = FindOpenVolume(volume); opened != nullptr) {
    opened->open = false;
    opened->answer = nullptr;
    if (const auto& onClose = simulated::TheSystem().onCloseVolume) {
      onClose(opened->path);
    }
  }
}

bool ControlVolume(VolumeHandle volume, std::uint32_t code, void* block, std::uint32_t inputLength,
                   std::uint32_t outputLength) {
  const simulated::OpenedVolume* const opened = FindOpenVolume(volume);
  if (opened == nullptr) {
    return false;
  }
  const std::optional<std::uint32_t> error =
      opened->answer({opened->path, code, block, inputLength, outputLength});
  simulated::TheSystem().lastError = error.value_or(simulated::TheSystem().lastError);
  return !error.has_value();
}

std::uint32_t LastError() { return simulated::TheSystem().lastError; }

void ErrorText(std::uint32_t code, std::span<wchar_t> text) {
  const simulated::System& system = simulated::TheSystem();
  const auto known = system.errorTexts.find(code);
  if (known != system.errorTexts.end() && known->second.size() < text.size()) {
    std::copy_n(known->second.c_str(), known->second.size() + 1, text.begin());
  }
}

void Sleep(std::uint32_t milliseconds) {
  simulated::System& system = simulated::TheSystem();
  system.sleeps.push_back(milliseconds);
  system.clockMilliseconds += milliseconds;
  if (system.onSleep) {
    system.onSleep(milliseconds);
  }
}

std::uint32_t MillisecondClock() { return simulated::TheSystem().clockMilliseconds; }

void DrainMessageQueue() {
  simulated::System& system = simulated::TheSystem();
  ++system.queueDrains;
  if (system.onDrain) {
    system.onDrain();
  }
  while (!system.messages.empty()) {
    const simulated::Message message = std::move(system.messages.front());
    system.messages.pop_front();
    if (message.isQuit) {
      return;
    }
    ++system.dispatchedMessages;
    if (message.handler) {
      message.handler();
    }
  }
}

void FormatWide(std::span<wchar_t> buffer, const wchar_t* format, ...) {
  std::array<wchar_t, kFormatCapacity> translated;  // NOLINT(*-init-*): filled below
  std::array<wchar_t, kFormatCapacity> text;        // NOLINT(*-init-*): filled below
  TranslateFormat(format, translated);
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vswprintf(text.data(), text.size(), translated.data(), arguments);
  va_end(arguments);
  const std::size_t kept =
      std::min(static_cast<std::size_t>(std::max(length, 0)), buffer.size() - 1);
  std::copy_n(text.begin(), kept, buffer.begin());
  buffer[kept] = L'\0';
}

void DebuggerOutput(const wchar_t* text) {
  simulated::System& system = simulated::TheSystem();
  if (system.recordDebuggerLines) {
    system.debuggerLines.emplace_back(text);
  }
  if (system.onDebuggerText) {
    system.onDebuggerText(text);
  }
}

void BoundedCopy(char* destination, std::size_t size, const char* text) {
  const std::size_t needed = std::strlen(text) + 1;
  if (needed > size) {
    destination[0] = '\0';
    ++simulated::TheSystem().invalidParameterCalls;
    return;
  }
  std::memcpy(destination, text, needed);
}

}  // namespace zem::platform
