// The platform wall on Windows: each function is a few lines on the system call of that name.
#include <objbase.h>
#include <oleauto.h>
#include <shlwapi.h>
#include <timeapi.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace zem::platform {

void InitializeCom() { static_cast<void>(CoInitialize(nullptr)); }

void UninitializeCom() { CoUninitialize(); }

HRESULT CreateDeviceEnumerator(ICreateDevEnum** enumerator) {
  return CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC, IID_ICreateDevEnum,
                          reinterpret_cast<void**>(enumerator));
}

void FreeTaskMemory(void* memory) {
  ComPtr<IMalloc> allocator;
  if (SUCCEEDED(CoGetMalloc(1, allocator.Receive())) && allocator) {
    allocator->Free(memory);
  }
}

void InitVariant(VARIANT* value) { VariantInit(value); }

void ClearVariant(VARIANT* value) { VariantClear(value); }

void HostFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  wchar_t folder[kPathCapacity] = {};
  GetModuleFileNameW(nullptr, folder, static_cast<DWORD>(kPathCapacity));
  folder[kPathCapacity - 1] = L'\0';
  PathRemoveFileSpecW(folder);
  FormatWide(path, L"%s\\%s", folder, name);
}

std::uint32_t PrivateProfileInt(const wchar_t* section, const wchar_t* key, std::uint32_t fallback,
                                const wchar_t* path) {
  return GetPrivateProfileIntW(section, key, static_cast<INT>(fallback), path);
}

std::FILE* OpenFile(const wchar_t* path, const wchar_t* mode) {
  return path != nullptr ? _wfopen(path, mode) : nullptr;
}

void WriteText(std::FILE* file, const wchar_t* text) {
  static_cast<void>(std::fwrite(text, sizeof(wchar_t), wcslen(text), file));
}

void LogFilePath(std::span<wchar_t, kPathCapacity> path, const wchar_t* name) {
  wchar_t folder[kPathCapacity] = {};
  GetWindowsDirectoryW(folder, static_cast<UINT>(kPathCapacity));
  FormatWide(path, L"%s\\Temp\\%s", folder, name);
}

LocalTime CurrentLocalTime() {
  SYSTEMTIME time = {};
  GetLocalTime(&time);
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

bool SeekFile(std::FILE* file, std::uint64_t position) {
  return _fseeki64(file, static_cast<long long>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> MeasureFile(std::FILE* file) {
  if (_fseeki64(file, 0, SEEK_END) != 0) {
    return std::nullopt;
  }
  const long long end = _ftelli64(file);
  if (end < 0 || !SeekFile(file, 0)) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(end);
}

VolumeHandle OpenVolume(const wchar_t* path) {
  const HANDLE volume =
      CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                  OPEN_EXISTING, 0, nullptr);
  return volume != INVALID_HANDLE_VALUE ? volume : nullptr;
}

void CloseVolume(VolumeHandle volume) { CloseHandle(volume); }

bool ControlVolume(VolumeHandle volume, std::uint32_t code, void* block, std::uint32_t inputLength,
                   std::uint32_t outputLength) {
  DWORD returned = 0;
  return DeviceIoControl(volume, code, block, inputLength, block, outputLength, &returned,
                         nullptr) != FALSE;
}

std::uint32_t LastError() { return GetLastError(); }

void ErrorText(std::uint32_t code, std::span<wchar_t> text) {
  wchar_t* systemText = nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
      reinterpret_cast<wchar_t*>(&systemText), 0, nullptr);
  if (systemText == nullptr) {
    return;
  }
  if (length < text.size()) {
    std::wmemcpy(text.data(), systemText, length + 1);
  }
  LocalFree(systemText);
}

void Sleep(std::uint32_t milliseconds) { ::Sleep(milliseconds); }

std::uint32_t MillisecondClock() { return timeGetTime(); }

void DrainMessageQueue() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE) != 0 &&
         GetMessageW(&message, nullptr, 0, 0) != 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

void FormatWide(std::span<wchar_t> buffer, const wchar_t* format, ...) {
  std::va_list arguments;  // NOLINT(cppcoreguidelines-init-variables): va_start does
  va_start(arguments, format);
  _vsnwprintf(buffer.data(), buffer.size() - 1, format, arguments);
  va_end(arguments);
  buffer.back() = L'\0';
}

void DebuggerOutput(const wchar_t* text) { OutputDebugStringW(text); }

void BoundedCopy(char* destination, std::size_t size, const char* text) {
  strcpy_s(destination, size, text);
}

}  // namespace zem::platform
