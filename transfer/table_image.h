// The image of a table store: a directory of tables, each found by its one-byte id.
//
//   byte 0      the mark of a valid image
//   byte 1      not interpreted
//   bytes 2, 3  length of the image with this header
//   from 4      entries back to back: a byte not interpreted, the id, the entry's length with this
//               header of 4 bytes (16 bits), the payload
//
// The bytes come from a device or from a caller: nothing in them is trusted, and nothing outside
// the span is touched.
#pragma once

#include <cstdint>
#include <span>

#include "platform/bytes.h"
#include "platform/com.h"

namespace zem {

// What a table handle holds, and the most of the device's memory that is searched.
inline constexpr std::size_t kTableImageSize = 8192;

inline constexpr std::uint8_t kTableImageMark = 0xEE;
inline constexpr std::uint16_t kTableHeaderSize = 4;

using TableImage = std::span<std::uint8_t, kTableImageSize>;
using ConstTableImage = std::span<const std::uint8_t, kTableImageSize>;

// The length that the image says it has; may be more than a buffer holds.
inline std::uint16_t TableImageTotal(ConstTableImage image) { return LoadLe16(&image[2]); }

// A whole entry inside an image.
struct TableEntry {
  std::uint16_t offset = 0;
  std::uint16_t length = 0;  // from kTableHeaderSize up

  std::uint16_t PayloadOffset() const {
    return static_cast<std::uint16_t>(offset + kTableHeaderSize);
  }
  std::uint16_t PayloadSize() const {
    return static_cast<std::uint16_t>(length - kTableHeaderSize);
  }
};

// The first entry with this id: 0. kRefused when there is none: an entry that is not wanted only
// leads on, and the search is over where it leads to the image's total or past it.
//
// kFail when an entry on the way, the wanted one included, is shorter than its header or longer
// than `longest`, when the next header does not lie inside the span though the total is not
// reached, or when the wanted entry does not end inside the span.
HRESULT FindTableEntry(ConstTableImage image, std::uint8_t id, TableEntry& entry,
                       std::size_t longest = 0xFFFF);

}  // namespace zem
