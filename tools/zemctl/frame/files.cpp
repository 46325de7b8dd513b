#include "tools/zemctl/frame/files.h"

#include <array>
#include <cstdio>
#include <memory>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

struct Closer {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<std::FILE, Closer>;

File Open(const std::string& path, const wchar_t* mode) {
  return File(_wfopen(Widen(path).c_str(), mode));
}

[[noreturn]] void Refuse(const std::string& path, const char* why, const char* advice) {
  throw ToolFailure(kBadFile, path + " " + why, advice);
}

}  // namespace

std::vector<unsigned char> ReadInputFile(const std::string& path) {
  const File file = Open(path, L"rb");
  if (!file) {
    Refuse(path, "cannot be opened", "Check the path. Nothing was sent.");
  }
  std::vector<unsigned char> bytes;
  std::array<unsigned char, 65536> piece = {};
  while (const std::size_t read = std::fread(piece.data(), 1, piece.size(), file.get())) {
    bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(read));
  }
  if (std::ferror(file.get()) != 0) {
    Refuse(path, "cannot be read", "Nothing was sent.");
  }
  return bytes;
}

void WriteOutputFile(const std::string& path, std::span<const unsigned char> bytes) {
  const File file = Open(path, L"wb");
  if (!file) {
    Refuse(path, "cannot be created", "Check the path.");
  }
  if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
      std::fflush(file.get()) != 0) {
    Refuse(path, "cannot be written", "Check that the disk is not full.");
  }
}

bool FileExists(const std::string& path) { return Open(path, L"rb") != nullptr; }

}  // namespace zemctl
