#include "platform/portable/private_profile.h"

#include <optional>

#include "platform/text.h"

namespace zem::platform {
namespace {

constexpr std::wstring_view kBlank = L" \t\r";

std::wstring_view Trim(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::wstring_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::wstring_view TakeLine(std::wstring_view& text) {
  const std::size_t end = text.find(L'\n');
  const std::wstring_view line = text.substr(0, end);
  text.remove_prefix(end == std::wstring_view::npos ? text.size() : end + 1);
  return Trim(line);
}

std::wstring_view Unquote(std::wstring_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == L'"' || value.front() == L'\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<std::wstring_view> FindValue(std::wstring_view text, std::wstring_view section,
                                           std::wstring_view key) {
  bool inSection = false;
  while (!text.empty()) {
    const std::wstring_view line = TakeLine(text);
    if (line.starts_with(L'[')) {
      if (inSection) {
        return std::nullopt;
      }
      const std::wstring_view name = line.substr(1, line.find(L']') - 1);
      inSection = line.ends_with(L']') && EqualIgnoringCase(Trim(name), section);
      continue;
    }
    const std::size_t equals = line.find(L'=');
    if (inSection && !line.starts_with(L';') && equals != std::wstring_view::npos &&
        EqualIgnoringCase(Trim(line.substr(0, equals)), key)) {
      return Unquote(Trim(line.substr(equals + 1)));
    }
  }
  return std::nullopt;
}

std::optional<std::uint32_t> DigitOf(wchar_t character, std::uint32_t base) {
  std::uint32_t digit = base;
  const wchar_t folded = FoldCase(character);
  if (folded >= L'0' && folded <= L'9') {
    digit = static_cast<std::uint32_t>(folded - L'0');
  } else if (folded >= L'a' && folded <= L'f') {
    digit = static_cast<std::uint32_t>(folded - L'a') + 10;
  }
  return digit < base ? std::optional(digit) : std::nullopt;
}

std::uint32_t ParseInteger(std::wstring_view value) {
  const bool negative = value.starts_with(L'-');
  if (negative || value.starts_with(L'+')) {
    value.remove_prefix(1);
  }
  std::uint32_t base = 10;
  if (value.starts_with(L"0x") || value.starts_with(L"0X")) {
    base = 16;
    value.remove_prefix(2);
  }
  std::uint32_t result = 0;
  for (const wchar_t character : value) {
    const std::optional<std::uint32_t> digit = DigitOf(character, base);
    if (!digit) {
      break;
    }
    result = result * base + *digit;
  }
  return negative ? 0U - result : result;
}

}  // namespace

std::uint32_t ParsePrivateProfileInt(std::wstring_view text, std::wstring_view section,
                                     std::wstring_view key, std::uint32_t fallback) {
  const std::optional<std::wstring_view> value = FindValue(text, section, key);
  return value && !value->empty() ? ParseInteger(*value) : fallback;
}

}  // namespace zem::platform
