#include "romboot/dump_file.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <iterator>

#include "platform/file_handle.h"
#include "platform/platform.h"

namespace zem {
namespace {

constexpr std::uint64_t kDumpBlockSize = 4096;

// Writes `size` bytes of 0xFF, as far as the disk has room.
void WriteErased(std::FILE* file, std::uint64_t size) {
  std::array<std::uint8_t, kDumpBlockSize> block;  // NOLINT(*-init-*): filled on the next line
  block.fill(0xFF);
  while (size > 0) {
    const std::size_t count = static_cast<std::size_t>(std::min(size, kDumpBlockSize));
    if (std::fwrite(block.data(), 1, count, file) != count) {
      return;
    }
    size -= count;
  }
}

// The dump file at the place of a storage address; null when there is none.
FileHandle OpenDumpAt(const ZemRomBootConfig& session, std::uint32_t address) {
  if (session.dumpEnabled == 0) {
    return nullptr;
  }
  FileHandle file = OpenFileHandle(session.dumpPath, L"r+b");
  if (file != nullptr && !platform::SeekFile(file.get(), address)) {
    file.reset();
  }
  return file;
}

}  // namespace

HRESULT CreateDumpFile(ZemRomBootConfig& session, const wchar_t* path, int size) {
  const std::size_t length = path != nullptr ? std::wcslen(path) : 0;
  if (path == nullptr || length >= std::size(session.dumpPath)) {
    return S_OK;
  }
  std::copy_n(path, length + 1, session.dumpPath);
  session.dumpEnabled = 1;
  if (size == 0) {
    return S_OK;
  }
  if (const FileHandle file = OpenFileHandle(path, L"w+b"); file != nullptr) {
    const std::uint64_t wanted = static_cast<std::uint32_t>(size);
    WriteErased(file.get(), (wanted + kDumpBlockSize - 1) / kDumpBlockSize * kDumpBlockSize);
  }
  return S_OK;
}

void MirrorBytes(const ZemRomBootConfig& session, std::uint32_t address,
                 std::span<const std::uint8_t> bytes) {
  if (const FileHandle file = OpenDumpAt(session, address); file != nullptr) {
    static_cast<void>(std::fwrite(bytes.data(), 1, bytes.size(), file.get()));
  }
}

void MirrorErased(const ZemRomBootConfig& session, std::uint32_t address, std::uint32_t size) {
  if (const FileHandle file = OpenDumpAt(session, address); file != nullptr) {
    WriteErased(file.get(), size);
  }
}

}  // namespace zem
