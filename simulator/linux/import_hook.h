// Another function in the place of one that a loaded library imports from the system: the slots of
// that library are written. What this program defined itself would stand in for the whole process,
// the C++ library and the program's own files included; so nothing else notices, as on Windows.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace zem::simulator {

struct ReleaseLibrary {
  void operator()(void* library) const;
};
// A library that stays loaded as long as this lives.
using HeldLibrary = std::unique_ptr<void, ReleaseLibrary>;

// libZemUVCExtApi.so. Throws std::runtime_error when it is not loaded in this process.
HeldLibrary HoldLibrary();

// The loaded library of this name. Throws as above.
HeldLibrary HoldLibrary(const char* name);

class ImportHook {
 public:
  // Replaces the function that `library` imports under this name until this object goes away, which
  // must be before any hook of the same function that was there. The loader must have filled the
  // library's slots when it loaded it (-z now). Throws std::runtime_error when the library imports
  // no such function, or its slots cannot be written.
  template <class Function>
  ImportHook(const HeldLibrary& library, const char* name, Function* replacement)
      : ImportHook(library, name, reinterpret_cast<std::uintptr_t>(replacement)) {}
  ~ImportHook();
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

  // What the import led to before.
  template <class Function>
  Function* Before() const {
    return reinterpret_cast<Function*>(original_);
  }

 private:
  ImportHook(const HeldLibrary& library, const char* name, std::uintptr_t replacement);
  // Whether all slots could be written, in their order; errno tells why not.
  bool Write(std::uintptr_t function) const;

  std::vector<std::uintptr_t*> slots_;
  std::uintptr_t original_ = 0;
};

}  // namespace zem::simulator
