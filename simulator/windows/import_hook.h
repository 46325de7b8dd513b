// Another function in the place of one that a loaded module imports.
#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

namespace zem::simulator {

struct ReleaseModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
// A module that stays loaded as long as this lives, so that there is a table to put right again.
using HeldModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, ReleaseModule>;

// ZemUVCExtApi.dll, whose imports the simulator replaces. Throws std::runtime_error when it is not
// loaded in this process.
HeldModule HoldLibrary();

// The program of this process.
HeldModule HoldProgram();

template <class Function>
FARPROC AsImport(Function* function) {
  return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

class ImportHook {
 public:
  // Replaces the import `name` of `module`, from whichever library it comes, until this object goes
  // away; `module` must stay loaded that long. Throws std::runtime_error when the module imports no
  // such function, or its table cannot be written.
  ImportHook(HMODULE module, const char* name, FARPROC replacement);
  ~ImportHook();
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

  // Whether `module` imports a function of this name.
  static bool IsPossible(HMODULE module, const char* name);

  // What the import led to before.
  FARPROC original() const { return reinterpret_cast<FARPROC>(original_); }

 private:
  bool Write(ULONGLONG function) const;

  ULONGLONG* slot_ = nullptr;  // the entry in the module's import address table
  ULONGLONG original_ = 0;
};

// What the import led to before, called as itself.
template <class Function>
Function* Before(const ImportHook& hook) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(hook.original()));
}

}  // namespace zem::simulator
