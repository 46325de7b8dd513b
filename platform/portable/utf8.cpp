#include "platform/portable/utf8.h"

#include <algorithm>
#include <cstdint>

namespace zem::platform {
namespace {

constexpr std::uint32_t kStrayByte = 0xDC00;

// How a sequence of `length` bytes begins, and the first character that needs as many.
struct SequenceForm {
  std::size_t length;
  std::uint8_t lead;
  std::uint8_t leadMask;
  std::uint32_t first;
};

constexpr SequenceForm kForms[] = {
    {1, 0x00, 0x80, 0x00}, {2, 0xC0, 0xE0, 0x80}, {3, 0xE0, 0xF0, 0x800}, {4, 0xF0, 0xF8, 0x10000}};
constexpr std::uint32_t kBehindLast = 0x110000;

bool IsStrayByte(std::uint32_t code) {
  return code >= kStrayByte + 0x80 && code <= kStrayByte + 0xFF;
}

bool IsSurrogate(std::uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

}  // namespace

Utf8Sequence EncodeUtf8(wchar_t character) {
  const auto code = static_cast<std::uint32_t>(static_cast<char32_t>(character));
  if (IsStrayByte(code)) {
    return {{static_cast<char>(code - kStrayByte)}, 1};
  }
  if (code >= kBehindLast) {
    return {{'?'}, 1};
  }
  const SequenceForm& form =
      *std::find_if(std::rbegin(kForms), std::rend(kForms),
                    [code](const SequenceForm& candidate) { return code >= candidate.first; });
  Utf8Sequence sequence;
  sequence.length = form.length;
  for (std::size_t index = 0; index < form.length; ++index) {
    const std::uint32_t bits = code >> (6 * (form.length - 1 - index));
    sequence.bytes[index] =
        static_cast<char>(index == 0 ? form.lead | bits : 0x80U | (bits & 0x3FU));
  }
  return sequence;
}

wchar_t DecodeUtf8(std::string_view& text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  for (const SequenceForm& form : kForms) {
    if ((lead & form.leadMask) != form.lead || text.size() < form.length) {
      continue;
    }
    auto code = static_cast<std::uint32_t>(lead & ~form.leadMask);
    bool whole = true;
    for (const char following : text.substr(1, form.length - 1)) {
      const auto byte = static_cast<std::uint8_t>(following);
      whole = whole && (byte & 0xC0) == 0x80;
      code = (code << 6) | (byte & 0x3FU);
    }
    if (whole && code >= form.first && code < kBehindLast && !IsSurrogate(code)) {
      text.remove_prefix(form.length);
      return static_cast<wchar_t>(code);
    }
  }
  text.remove_prefix(1);
  return static_cast<wchar_t>(kStrayByte + lead);
}

bool NarrowText(std::wstring_view wide, std::span<char> narrow) {
  std::size_t length = 0;
  for (const wchar_t character : wide) {
    const Utf8Sequence sequence = EncodeUtf8(character);
    if (length + sequence.length >= narrow.size()) {
      narrow[0] = '\0';
      return false;
    }
    length += sequence.text().copy(&narrow[length], sequence.length);
  }
  narrow[length] = '\0';
  return true;
}

void WidenText(std::string_view narrow, std::span<wchar_t> wide) {
  std::size_t length = 0;
  while (!narrow.empty() && length + 1 < wide.size()) {
    wide[length++] = DecodeUtf8(narrow);
  }
  wide[length] = L'\0';
}

}  // namespace zem::platform
