// Lists of H.264 formats as a camera hands them out, for tests to script.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/support/scripted_unit.h"

namespace zem::testing {

using ListBytes = std::vector<std::uint8_t>;

// An entry of 22 bytes: 30 down to 5 pictures a second, 2,500 down to 100 kbit/s.
inline ListBytes ListEntry(std::uint8_t type, std::uint8_t frameIndex, unsigned width,
                           unsigned height, unsigned subWidth = 0, unsigned subHeight = 0) {
  const auto low = [](unsigned number) { return static_cast<std::uint8_t>(number & 0xFF); };
  const auto high = [](unsigned number) { return static_cast<std::uint8_t>(number >> 8); };
  return {22,
          0,
          type,
          frameIndex,
          low(width),
          high(width),
          low(height),
          high(height),
          low(subWidth),
          high(subWidth),
          low(subHeight),
          high(subHeight),
          0xC4,
          0x09,
          0,
          0,
          0x64,
          0,
          0,
          0,
          30,
          5};
}

// A whole list. Its length is that of header and entries, its count that of the entries.
inline ListBytes ListOf(const std::vector<ListBytes>& entries) {
  ListBytes list(4);
  for (const ListBytes& entry : entries) {
    list.insert(list.end(), entry.begin(), entry.end());
  }
  list[0] = static_cast<std::uint8_t>(list.size() & 0xFF);
  list[1] = static_cast<std::uint8_t>(list.size() >> 8);
  list[2] = static_cast<std::uint8_t>(entries.size() & 0xFF);
  list[3] = static_cast<std::uint8_t>(entries.size() >> 8);
  return list;
}

// The vendor unit hands out `list` in pieces of 32 bytes, the last filled up with zeros.
inline void ServeList(ScriptedUnit& vendor, ListBytes list) {
  list.resize((list.size() + 31) / 32 * 32);
  for (auto piece = list.begin(); piece != list.end(); piece += 32) {
    vendor.Answer(11, ListBytes(piece, piece + 32));
  }
}

}  // namespace zem::testing
