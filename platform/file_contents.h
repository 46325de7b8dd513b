// A whole file in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/file_handle.h"
#include "platform/memory.h"

namespace zem {

struct FileContents {
  // The file, and zeros behind it. Null when the file could not be read.
  ByteBuffer buffer;
  // The file's own length.
  std::size_t size = 0;

  explicit operator bool() const { return buffer != nullptr; }
  std::span<const std::uint8_t> bytes() const { return {buffer.get(), size}; }
};

// No process has room for more.
inline constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 47;

// Reads a file of at most `most` bytes from its start to its end, with room for `padding` zeros
// behind it. A longer one takes no memory.
inline FileContents ReadWholeFile(const wchar_t* path, std::size_t padding,
                                  std::uint64_t most = kAddressSpace) {
  FileContents contents;
  const FileHandle file = OpenFileHandle(path, L"rb");
  const auto size = file != nullptr ? platform::MeasureFile(file.get()) : std::nullopt;
  if (!size || *size > most) {
    return contents;
  }
  contents.size = static_cast<std::size_t>(*size);
  contents.buffer = AllocateBytes(contents.size + padding);
  if (contents.buffer != nullptr &&
      std::fread(contents.buffer.get(), 1, contents.size, file.get()) != contents.size) {
    contents.buffer.reset();
  }
  return contents;
}

}  // namespace zem
