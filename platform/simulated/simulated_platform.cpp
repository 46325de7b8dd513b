#include "platform/simulated/simulated_platform.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "platform/portable/narrow_files.h"
#include "platform/portable/private_profile.h"

namespace zem::platform {
namespace {

thread_local simulated::System theSystem;

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

}  // namespace simulated

void InitializeCom() { ++simulated::TheSystem().comInitializations; }

void UninitializeCom() { ++simulated::TheSystem().comUninitializations; }

HRESULT CreateDeviceEnumerator(ICreateDevEnum** enumerator) {
  constexpr auto kClassNotRegistered = static_cast<HRESULT>(0x80040154U);
  const auto& create = simulated::TheSystem().createDeviceEnumerator;
  return create ? create(enumerator) : kClassNotRegistered;
}

void HostFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  FormatWide(path, L"%s\\%s", simulated::TheSystem().hostFolder.c_str(), name);
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
  static constexpr std::wstring_view kModes[] = {L"rb", L"wb", L"r+b", L"w+b", L"a+b"};
  if (std::find(std::begin(kModes), std::end(kModes), mode) == std::end(kModes)) {
    return nullptr;
  }
  return OpenNarrow(path, mode);
}

LocalTime CurrentLocalTime() { return simulated::TheSystem().localTime; }

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
