#include "tools/zemctl/frame/bytes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

unsigned char ParseByte(std::string_view text) {
  std::string_view digits = text;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
  }
  const auto value = ParseHex(digits);
  if (!value || *value > 0xFF) {
    throw UsageError("\"" + std::string(text) + "\" is not a byte in hexadecimal");
  }
  return static_cast<unsigned char>(*value);
}

}  // namespace

std::string HexText(std::span<const unsigned char> bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    std::array<char, 4> digits = {};
    std::snprintf(digits.data(), digits.size(), "%02x", byte);
    if (!text.empty()) {
      text += ' ';
    }
    text += digits.data();
  }
  return text;
}

std::string HexNumber(std::uint64_t number, int digits) {
  std::array<char, 24> text = {};
  std::snprintf(text.data(), text.size(), "0x%0*llX", digits,
                static_cast<unsigned long long>(number));
  return text.data();
}

std::optional<std::uint32_t> ParseHex(std::string_view digits) {
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
  return !digits.empty() && error == std::errc() && stop == end ? std::optional(value)
                                                                : std::nullopt;
}

std::vector<unsigned char> ParseBytes(const std::vector<std::string>& words) {
  constexpr std::string_view kSeparators = " ,\t";
  std::vector<unsigned char> bytes;
  for (const std::string& word : words) {
    std::string_view rest = word;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find_first_of(kSeparators), rest.size());
      if (end > 0) {
        bytes.push_back(ParseByte(rest.substr(0, end)));
      }
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return bytes;
}

std::vector<unsigned char> ParseBlock(const std::vector<std::string>& words, std::size_t size) {
  std::vector<unsigned char> bytes = ParseBytes(words);
  if (bytes.size() > size) {
    throw UsageError("a block of this channel has " + std::to_string(size) + " bytes");
  }
  bytes.resize(size);
  return bytes;
}

std::string GuidText(const GUID& id) {
  std::array<char, 40> text = {};
  const auto* const last = id.Data4;
  std::snprintf(text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(id.Data1), static_cast<unsigned>(id.Data2),
                static_cast<unsigned>(id.Data3), last[0], last[1], last[2], last[3], last[4],
                last[5], last[6], last[7]);
  return text.data();
}

std::optional<GUID> ParseGuid(std::string_view text) {
  constexpr std::string_view kPattern = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
  const auto fits = [](char given, char wanted) {
    return wanted == 'x' ? ParseHex({&given, 1}).has_value() : given == wanted;
  };
  if (text.size() != kPattern.size() ||
      !std::equal(text.begin(), text.end(), kPattern.begin(), fits)) {
    return std::nullopt;
  }
  const auto field = [&](std::size_t at, std::size_t digits) {
    return ParseHex(text.substr(at, digits)).value_or(0);
  };
  GUID id = {};
  id.Data1 = field(1, 8);
  id.Data2 = static_cast<unsigned short>(field(10, 4));
  id.Data3 = static_cast<unsigned short>(field(15, 4));
  constexpr std::array<std::size_t, 8> kByteAt = {20, 22, 25, 27, 29, 31, 33, 35};
  for (std::size_t index = 0; index < kByteAt.size(); ++index) {
    id.Data4[index] = static_cast<unsigned char>(field(kByteAt.at(index), 2));
  }
  return id;
}

}  // namespace zemctl
