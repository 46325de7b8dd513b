// Heap buffers without exceptions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace zem {

using ByteBuffer = std::unique_ptr<std::uint8_t[]>;

// `size` zero bytes, or null when there is no memory. A size of 0 gives a buffer too.
inline ByteBuffer AllocateBytes(std::size_t size) {
  return ByteBuffer(new (std::nothrow) std::uint8_t[size]());
}

}  // namespace zem
