#include "simulator/windows/import_hook.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace zem::simulator {
namespace {

// Something at an offset within a loaded module.
template <class Type>
Type* At(HMODULE module, std::size_t offset) {
  return reinterpret_cast<Type*>(reinterpret_cast<unsigned char*>(module) + offset);
}

// The entry of the module's import address table for a function; null when it imports none such.
ULONGLONG* FindSlot(HMODULE module, std::string_view name) {
  const auto& dos = *At<IMAGE_DOS_HEADER>(module, 0);
  const auto& headers = *At<IMAGE_NT_HEADERS64>(module, static_cast<std::size_t>(dos.e_lfanew));
  const auto& directory = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (directory.VirtualAddress == 0) {
    return nullptr;
  }
  const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress);
  for (; library->Name != 0; ++library) {
    const auto* names = At<IMAGE_THUNK_DATA64>(module, library->OriginalFirstThunk);
    auto* slots = At<IMAGE_THUNK_DATA64>(module, library->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++slots) {
      if (!IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal) &&
          name == At<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData)->Name) {
        return &slots->u1.Function;
      }
    }
  }
  return nullptr;
}

// The loaded module of this name, the program for null; null when there is none.
HeldModule HoldModule(const wchar_t* name) {
  HMODULE module = nullptr;
  GetModuleHandleExW(0, name, &module);
  return HeldModule(module);
}

}  // namespace

HeldModule HoldLibrary() {
  HeldModule library = HoldModule(L"ZemUVCExtApi.dll");
  if (!library) {
    throw std::runtime_error(
        "this simulation is for ZemUVCExtApi.dll, which is not loaded in this process");
  }
  return library;
}

HeldModule HoldProgram() { return HoldModule(nullptr); }

bool ImportHook::IsPossible(HMODULE module, const char* name) {
  return FindSlot(module, name) != nullptr;
}

ImportHook::ImportHook(HMODULE module, const char* name, FARPROC replacement)
    : slot_(FindSlot(module, name)) {
  if (slot_ == nullptr) {
    throw std::runtime_error(std::string("the module does not import ") + name);
  }
  original_ = *slot_;
  if (!Write(reinterpret_cast<ULONGLONG>(replacement))) {
    throw std::runtime_error(std::string("the module's import ") + name +
                             " cannot be written: error " + std::to_string(GetLastError()));
  }
}

// What could be written once can be again.
ImportHook::~ImportHook() { Write(original_); }

bool ImportHook::Write(ULONGLONG function) const {
  // The system makes the table read-only once it is filled.
  DWORD protection = 0;
  if (VirtualProtect(slot_, sizeof(*slot_), PAGE_READWRITE, &protection) == FALSE) {
    return false;
  }
  *slot_ = function;
  VirtualProtect(slot_, sizeof(*slot_), protection, &protection);
  return true;
}

}  // namespace zem::simulator
