#include "tools/zemctl/frame/files.h"

#include <cstdio>

#include "platform/platform.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

OpenedFile Open(const std::string& path, const wchar_t* mode) {
  return OpenedFile(zem::platform::OpenFile(Widen(path).c_str(), mode));
}

[[noreturn]] void Refuse(const std::string& path, const std::string& why, const char* advice) {
  throw ToolFailure(kBadFile, path + " " + why, advice);
}

}  // namespace

std::uint64_t SizeOfFile(const std::string& path) {
  const OpenedFile file = Open(path, L"rb");
  const auto size = file ? zem::platform::MeasureFile(file.get()) : std::nullopt;
  if (!size) {
    Refuse(path, "cannot be opened", "Check the path. Nothing was sent.");
  }
  return *size;
}

std::vector<unsigned char> ReadInputFile(const std::string& path, std::uint64_t most) {
  const std::uint64_t size = SizeOfFile(path);
  if (size > most) {
    Refuse(path,
           "has " + std::to_string(size) + " bytes, more than the " + std::to_string(most) +
               " that can be used",
           "Nothing was sent.");
  }
  const OpenedFile file = Open(path, L"rb");
  std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
  if (!file || std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
    Refuse(path, "cannot be read", "Nothing was sent.");
  }
  return bytes;
}

OpenedFile CreateOutputFile(const std::string& path) {
  OpenedFile file = Open(path, L"wb");
  if (!file) {
    Refuse(path, "cannot be created", "Check the path.");
  }
  return file;
}

void WriteOutputFile(const std::string& path, std::span<const unsigned char> bytes) {
  const OpenedFile file = CreateOutputFile(path);
  if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
      std::fflush(file.get()) != 0) {
    Refuse(path, "cannot be written", "Check that the disk is not full.");
  }
}

bool FileExists(const std::string& path) { return Open(path, L"rb") != nullptr; }

}  // namespace zemctl
