// A whole file in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "platform/file_handle.h"
#include "platform/memory.h"

namespace zem {

struct FileContents {
  // The file, and zeros behind it. Null when the file could not be read.
  ByteBuffer buffer;
  // The file's own length.
  std::uint32_t size = 0;

  explicit operator bool() const { return buffer != nullptr; }
  std::span<const std::uint8_t> bytes() const { return {buffer.get(), size}; }
};

// The length of an open file, which is then read from its start. False when the file cannot be
// measured or holds 2 GiB or more.
inline bool MeasureFile(std::FILE* file, std::uint32_t& size) {
  if (std::fseek(file, 0, SEEK_END) != 0) {
    return false;
  }
  const long end = std::ftell(file);
  if (end < 0 || end >= std::numeric_limits<std::int32_t>::max()) {
    return false;
  }
  size = static_cast<std::uint32_t>(end);
  return std::fseek(file, 0, SEEK_SET) == 0;
}

// Reads a file from its start to its end, with room for `padding` zeros behind it.
inline FileContents ReadWholeFile(const wchar_t* path, std::size_t padding) {
  FileContents contents;
  const FileHandle file = OpenFileHandle(path, L"rb");
  if (file == nullptr || !MeasureFile(file.get(), contents.size)) {
    return contents;
  }
  contents.buffer = AllocateBytes(contents.size + padding);
  if (contents.buffer != nullptr &&
      std::fread(contents.buffer.get(), 1, contents.size, file.get()) != contents.size) {
    contents.buffer.reset();
  }
  return contents;
}

}  // namespace zem
