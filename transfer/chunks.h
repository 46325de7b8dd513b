// The caller's bytes, and the one loop that sends such bytes chunk by chunk.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/platform.h"
#include "transfer/progress.h"

namespace zem {

// Whether the memory that a transfer of this length needs is missing. A length of 0 needs none.
inline bool IsMissing(const std::uint8_t* bytes, std::uint32_t length) {
  return bytes == nullptr && length != 0;
}

// What the caller wants sent.
struct Image {
  const std::uint8_t* bytes;  // may be null when the length is 0
  std::uint32_t length;

  bool Missing() const { return IsMissing(bytes, length); }
};

// Hands `image` chunk by chunk to `send(position, count)` until that says that one did not go out;
// true when all did. With a progress function, each chunk that went out is followed by a report of
// `value(remaining, count)` and by a drain of the message queue; without one, only the end is
// followed by a drain.
template <class Send, class Value>
bool SendChunks(const Image& image, std::uint32_t chunkLength, const Progress& progress, Send send,
                Value value) {
  std::uint32_t remaining = image.length;
  for (const std::uint8_t* position = image.bytes; remaining > 0;) {
    const std::uint32_t count = std::min(remaining, chunkLength);
    if (!send(position, count)) {
      break;
    }
    position += count;
    remaining -= count;
    if (progress) {
      progress.Report(value(remaining, count));
      platform::DrainMessageQueue();
    }
  }
  platform::DrainMessageQueue();
  return remaining == 0;
}

}  // namespace zem
