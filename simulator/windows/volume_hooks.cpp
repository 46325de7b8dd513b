#include "simulator/windows/volume_hooks.h"

#include <algorithm>
#include <string_view>

namespace zem::simulator {
namespace {

std::vector<Volume> volumes;
bool areOnlyVolumes = false;

// The one that `has` names; null when none does.
template <class Has>
Volume* FindVolume(Has has) {
  const auto found = std::find_if(volumes.begin(), volumes.end(), has);
  return found == volumes.end() ? nullptr : &*found;
}

Volume* OwnerOf(HANDLE handle) {
  return FindVolume([&](const Volume& volume) { return volume.Owns(handle); });
}

// Such as \\.\F:, whichever the letter.
bool IsVolumePath(std::wstring_view path) {
  constexpr std::wstring_view kPrefix = LR"(\\.\)";
  return path.starts_with(kPrefix) && path.size() == kPrefix.size() + 2 && path.back() == L':';
}

HANDLE WINAPI OpenFileOrVolume(LPCWSTR path, DWORD access, DWORD share,
                               LPSECURITY_ATTRIBUTES security, DWORD creation, DWORD flags,
                               HANDLE pattern) {
  Volume* const volume = path == nullptr
                             ? nullptr
                             : FindVolume([&](const Volume& each) { return each.IsNamed(path); });
  if (volume == nullptr) {
    if (areOnlyVolumes && path != nullptr && IsVolumePath(path)) {
      SetLastError(ERROR_FILE_NOT_FOUND);
      return INVALID_HANDLE_VALUE;
    }
    return CreateFileW(path, access, share, security, creation, flags, pattern);
  }
  std::uint32_t error = 0;
  void* const handle = volume->Open(error);
  SetLastError(error);
  return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

BOOL WINAPI ControlFileOrVolume(HANDLE handle, DWORD code, LPVOID input, DWORD inputSize,
                                LPVOID output, DWORD outputSize, LPDWORD returned,
                                LPOVERLAPPED overlapped) {
  Volume* const volume = OwnerOf(handle);
  if (volume == nullptr) {
    return DeviceIoControl(handle, code, input, inputSize, output, outputSize, returned,
                           overlapped);
  }
  std::uint32_t moved = 0;
  const std::uint32_t error =
      volume->Control(handle, code, {static_cast<const std::uint8_t*>(input), inputSize},
                      {static_cast<std::uint8_t*>(output), outputSize}, moved);
  if (returned != nullptr) {
    *returned = moved;
  }
  if (error != 0) {
    SetLastError(error);
  }
  return error == 0 ? TRUE : FALSE;
}

BOOL WINAPI CloseFileOrVolume(HANDLE handle) {
  Volume* const volume = OwnerOf(handle);
  if (volume == nullptr) {
    return CloseHandle(handle);
  }
  volume->Close(handle);
  return TRUE;
}

}  // namespace

VolumeHooks::VolumeHooks(const std::vector<std::shared_ptr<BootLoader>>& bootLoaders,
                         bool areOnly) {
  const HeldModule library = HoldLibrary();  // which throws before there are volumes
  areOnlyVolumes = areOnly;
  for (const auto& bootLoader : bootLoaders) {
    volumes.emplace_back(bootLoader);
  }
  imports_.emplace(VolumeFunctions{OpenFileOrVolume, ControlFileOrVolume, CloseFileOrVolume});
}

// The volumes stay as long as any import leads to them.
VolumeHooks::~VolumeHooks() {
  imports_.reset();
  volumes.clear();
}

}  // namespace zem::simulator
