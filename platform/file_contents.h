// A whole file in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "platform/file_handle.h"
#include "platform/memory.h"

namespace zem {

class FileContents {
 public:
  FileContents() = default;
  FileContents(ByteBuffer buffer, std::size_t size) : buffer_(std::move(buffer)), size_(size) {}

  // False when the file could not be read.
  explicit operator bool() const { return buffer_ != nullptr; }

  // The file's own length.
  std::size_t size() const { return size_; }
  // The file, and zeros behind it.
  std::uint8_t* data() { return buffer_.get(); }
  const std::uint8_t* data() const { return buffer_.get(); }
  std::span<const std::uint8_t> bytes() const { return {data(), size_}; }

 private:
  ByteBuffer buffer_;
  std::size_t size_ = 0;
};

// No process has room for more.
inline constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 47;

// Reads a file of at most `most` bytes from its start to its end, with room for `padding` zeros
// behind it. A longer one takes no memory.
inline FileContents ReadWholeFile(const wchar_t* path, std::size_t padding,
                                  std::uint64_t most = kAddressSpace) {
  const FileHandle file = OpenFileHandle(path, L"rb");
  const auto size = file != nullptr ? platform::MeasureFile(file.get()) : std::nullopt;
  if (!size || *size > most) {
    return {};
  }
  const auto length = static_cast<std::size_t>(*size);
  ByteBuffer buffer = AllocateBytes(length + padding);
  if (buffer == nullptr || std::fread(buffer.get(), 1, length, file.get()) != length) {
    return {};
  }
  return {std::move(buffer), length};
}

}  // namespace zem
