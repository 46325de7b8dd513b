// Another function in the place of one that a loaded module imports.
#pragma once

#include <windows.h>

namespace zem::simulator {

class ImportHook {
 public:
  // Replaces the import `name` of `module`, from whichever library it comes, until this object goes
  // away; `module` must stay loaded that long. Throws std::runtime_error when the module imports no
  // such function.
  ImportHook(HMODULE module, const char* name, FARPROC replacement);
  ~ImportHook();
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

 private:
  void Write(ULONGLONG function) const;

  ULONGLONG* slot_ = nullptr;  // the entry in the module's import address table
  ULONGLONG original_ = 0;
};

}  // namespace zem::simulator
