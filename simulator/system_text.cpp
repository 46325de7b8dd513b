#include "simulator/system_text.h"

#ifdef _WIN32
#include <oleauto.h>

#include <cstring>
#else
#include "platform/portable/task_text.h"
#endif

namespace zem::simulator {

#ifdef _WIN32

wchar_t* MakeTaskText(const std::wstring& text) {
  const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
  void* const copy = CoTaskMemAlloc(size);
  if (copy != nullptr) {
    std::memcpy(copy, text.c_str(), size);
  }
  return static_cast<wchar_t*>(copy);
}

BSTR MakeVariantText(const std::wstring& text) { return SysAllocString(text.c_str()); }

#else

wchar_t* MakeTaskText(const std::wstring& text) { return platform::AllocateTaskText(text); }

BSTR MakeVariantText(const std::wstring& text) { return platform::AllocateTaskText(text); }

#endif

}  // namespace zem::simulator
