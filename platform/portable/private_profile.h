// Private profile files (sections of key=value lines) for systems that have no call for them.
#pragma once

#include <cstdint>
#include <string_view>

namespace zem::platform {

// The integer behind `key` in the first `section` of `text`, by the rules of the Windows call:
// names without regard to case, optional quotation marks, an optional sign, decimal or 0x
// hexadecimal digits up to the first other character, wrapped to 32 bits. A value without digits
// gives 0; a missing section or key, or an empty value, gives `fallback`. Any text is safe.
std::uint32_t ParsePrivateProfileInt(std::wstring_view text, std::wstring_view section,
                                     std::wstring_view key, std::uint32_t fallback);

}  // namespace zem::platform
