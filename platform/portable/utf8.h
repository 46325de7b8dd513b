// Between the wide text of the library and the bytes of a system whose text is UTF-8. Wide
// characters are whole code points there.
//
// A byte that belongs to no UTF-8 sequence is the wide character 0xDC00 + byte, which is no
// character otherwise, and becomes that byte again: every file name survives both ways.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace zem::platform {

struct Utf8Sequence {
  std::array<char, 4> bytes = {};
  std::size_t length = 0;

  std::string_view text() const { return {bytes.data(), length}; }
};

// What is no code point becomes a question mark.
Utf8Sequence EncodeUtf8(wchar_t character);

// Takes one character from the front of `text`, which must not be empty.
wchar_t DecodeUtf8(std::string_view& text);

// The UTF-8 form of `wide` with its terminator; false, and an empty text, when it does not fit.
bool NarrowText(std::wstring_view wide, std::span<char> narrow);

// The wide form of `narrow`, cut to what fits with its terminator.
void WidenText(std::string_view narrow, std::span<wchar_t> wide);

}  // namespace zem::platform
