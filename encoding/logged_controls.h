// What the command log writes for the controls it knows: a title and the fields of their blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/com.h"

namespace zem {

// Bytes of the largest block whose fields are logged.
inline constexpr std::size_t kLoggedBlockSize = 51;

// One line of a dump: `count` little-endian numbers of `width` bytes each, one behind the other.
struct LoggedField {
  static constexpr std::size_t kMostNumbers = 8;

  const wchar_t* format;
  std::uint8_t offset;
  std::uint8_t width;
  std::uint8_t count = 1;
};

struct LoggedControl {
  GUID unit;
  std::uint16_t selector;
  const wchar_t* title;
  std::span<const LoggedField> fields;
};

// Null for a control that the log does not know.
const LoggedControl* FindLoggedControl(const GUID& unit, std::uint16_t selector);

}  // namespace zem
