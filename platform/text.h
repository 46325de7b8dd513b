// Text comparisons that do not depend on the process's locale.
#pragma once

#include <algorithm>
#include <string_view>

namespace zem {

// Lower case of an ASCII letter; every other character as it is.
inline wchar_t FoldCase(wchar_t character) {
  const bool upper = character >= L'A' && character <= L'Z';
  return upper ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

inline bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](wchar_t a, wchar_t b) { return FoldCase(a) == FoldCase(b); });
}

}  // namespace zem
