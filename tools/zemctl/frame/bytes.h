// Bytes and numbers as a person writes and reads them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "simulator/wide_text.h"

namespace zemctl {

// "0a 10 ff"
std::string HexText(std::span<const unsigned char> bytes);

// "0x00A0": at least `digits` digits.
std::string HexNumber(std::uint64_t number, int digits);

// The number in hexadecimal digits; nothing for any other text.
std::optional<std::uint32_t> ParseHex(std::string_view digits);

// Reads bytes given as hexadecimal numbers in one or several words, separated by blanks or commas,
// each with or without 0x. Throws UsageError for anything else.
std::vector<unsigned char> ParseBytes(const std::vector<std::string>& words);

// As ParseBytes, filled up with zeros to `size`. Throws UsageError for more bytes than that.
std::vector<unsigned char> ParseBlock(const std::vector<std::string>& words, std::size_t size);

using zem::simulator::Narrow;
using zem::simulator::Widen;

// "{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}" and back; nothing for any other text.
std::string GuidText(const GUID& id);
std::optional<GUID> ParseGuid(std::string_view text);

}  // namespace zemctl
