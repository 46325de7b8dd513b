#include "simulator/windows/volume_hooks.h"

#include <utility>

namespace zem::simulator {
namespace {

std::unique_ptr<Volume> volume;

HANDLE WINAPI OpenFileOrVolume(LPCWSTR path, DWORD access, DWORD share,
                               LPSECURITY_ATTRIBUTES security, DWORD creation, DWORD flags,
                               HANDLE pattern) {
  if (path == nullptr || !volume->IsNamed(path)) {
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
  if (!volume->Owns(handle)) {
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
  if (!volume->Owns(handle)) {
    return CloseHandle(handle);
  }
  volume->Close(handle);
  return TRUE;
}

}  // namespace

VolumeHooks::VolumeHooks(std::shared_ptr<BootLoader> bootLoader) : library_(HoldLibrary()) {
  volume = std::make_unique<Volume>(std::move(bootLoader));
  create_.emplace(library_.get(), "CreateFileW", AsImport(OpenFileOrVolume));
  control_.emplace(library_.get(), "DeviceIoControl", AsImport(ControlFileOrVolume));
  close_.emplace(library_.get(), "CloseHandle", AsImport(CloseFileOrVolume));
}

// The volume stays as long as any import leads to it.
VolumeHooks::~VolumeHooks() {
  close_.reset();
  control_.reset();
  create_.reset();
  volume.reset();
}

}  // namespace zem::simulator
