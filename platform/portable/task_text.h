// Text as COM calls hand it out on systems without COM: released with platform::FreeTaskMemory or,
// in a VARIANT, with platform::ClearVariant.
#pragma once

#include <cstdlib>
#include <cwchar>
#include <string_view>

namespace zem::platform {

// Null when there is no memory.
inline wchar_t* AllocateTaskText(std::wstring_view text) {
  auto* const copy = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
  if (copy != nullptr) {
    std::wmemcpy(copy, text.data(), text.size());
    copy[text.size()] = L'\0';
  }
  return copy;
}

}  // namespace zem::platform
