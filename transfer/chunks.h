// The caller's bytes, and the one loop that sends such bytes chunk by chunk.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/com.h"
#include "platform/platform.h"
#include "transfer/progress.h"

namespace zem {

// What the caller wants sent.
struct Image {
  const std::uint8_t* bytes;  // may be null when the length is 0
  std::uint32_t length;

  bool Missing() const { return bytes == nullptr && length != 0; }
};

// Hands `image` chunk by chunk to `send(position, count)` until one fails, and returns that failure
// or 0. With a progress function, each chunk that went out is followed by a report of
// `value(remaining, count)` and by a drain of the message queue; without one, only the end is
// followed by a drain.
template <class Send, class Value>
HRESULT SendChunks(const Image& image, std::uint32_t chunkLength, const Progress& progress,
                   Send send, Value value) {
  HRESULT result = S_OK;
  const std::uint8_t* position = image.bytes;
  for (std::uint32_t remaining = image.length; remaining > 0;) {
    const std::uint32_t count = std::min(remaining, chunkLength);
    result = send(position, count);
    if (FAILED(result)) {
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
  return FAILED(result) ? result : S_OK;
}

}  // namespace zem
