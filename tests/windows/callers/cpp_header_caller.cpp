// A caller of ZemUVC.hpp, built as C++17 against the real library, with another C runtime too. Exit
// code 0: what needs no camera answered as it must, and a picture was written and freed. Otherwise
// the number of the first thing that did not; the first argument is the path of the picture.
#include <cstdio>

#include "include/ZemUVC.hpp"

#if defined(_WIN32)
extern "C" __declspec(dllimport) int __stdcall HeapValidate(void* heap, unsigned long flags,
                                                            const void* memory);

// The memory for pixels is from the heap of the library's runtime.
static bool IsFromTheLibrarysHeap() {
  const auto heap = reinterpret_cast<void* (*)()>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ucrtbase.dll"), "_get_heap_handle")))();
  const zemuvc::detail::RuntimeHeap runtime;
  std::uint8_t* const memory = runtime.Allocate(100);
  const bool is = memory != nullptr && HeapValidate(heap, 0, memory) != 0;
  runtime.Free(memory);
  return is;
}
#endif

int main(int argc, char** argv) {
  if (argc != 2) {
    return 1;
  }
  std::error_code code;
  static_cast<void>(zemuvc::Camera().GetRegister(0, code));
  if (code != zemuvc::Errc::kNoDevice) {
    return 2;
  }
  static_cast<void>(zemuvc::Camera().GetFirmwareVersionReply(code));
  if (code != zemuvc::Errc::kNoDevice) {
    return 3;
  }
  zemuvc::RomBoot().SelectMemory(code);
  if (code != zemuvc::Errc::kFail) {
    return 4;
  }
  std::uint8_t bytes[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  zemuvc::EncodingUnit().Get(0x10000, bytes, code);
  if (code != zemuvc::Errc::kRefused) {
    return 5;
  }
  const auto format = zemuvc::Camera::GetPayloadFormat(0, code);
  if (code || !format || format->width == 0 || zemuvc::Camera::GetPayloadFormat(3, code)) {
    return 6;
  }
  try {
    static_cast<void>(zemuvc::Camera().GetRegister(0));
    return 7;
  } catch (const zemuvc::Error& error) {
    if (std::string(error.what()) !=
        "ZEMAPI_GetRegister: the command could not be written to the camera (ZEM_E_NO_DEVICE, "
        "0x80000003)") {
      return 8;
    }
  }
#if defined(_WIN32)
  if (!IsFromTheLibrarysHeap()) {
    return 11;
  }
#endif
  // Two by two pixels; the library frees them, and this side those of a file that cannot be.
  const std::wstring path = zemuvc::FromUtf8(argv[1]);
  for (int round = 0; round < 100; ++round) {
    zemuvc::SavePixelsAsBmp(path, bytes, 2, 2, code);
    if (code) {
      return 9;
    }
    zemuvc::SavePixelsAsBmp(path + L"/none/none.bmp", bytes, 2, 2, code);
    if (code != zemuvc::Errc::kFail) {
      return 10;
    }
  }
  std::printf("%s\n", ZEM_VERSION);
  return 0;
}
