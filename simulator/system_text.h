// Text for a host, which frees it with the system's own functions.
#pragma once

#include <string>

#include "platform/com.h"

namespace zem::simulator {

// As task memory. Null when there is no memory.
wchar_t* MakeTaskText(const std::wstring& text);

// As the string of a VARIANT. Null when there is no memory.
BSTR MakeVariantText(const std::wstring& text);

}  // namespace zem::simulator
