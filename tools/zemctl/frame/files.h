// Whole files, by their paths in UTF-8.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zemctl {

struct FileCloser {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using OpenedFile = std::unique_ptr<std::FILE, FileCloser>;

// All throw ToolFailure (kBadFile) when the file cannot be opened, read or written.

// In bytes, without reading it.
std::uint64_t SizeOfFile(const std::string& path);

// A file of more bytes than `most` is refused before it is read.
std::vector<unsigned char> ReadInputFile(const std::string& path, std::uint64_t most);
// A new, empty one.
OpenedFile CreateOutputFile(const std::string& path);
void WriteOutputFile(const std::string& path, std::span<const unsigned char> bytes);

bool FileExists(const std::string& path);

// What `parse` makes of a file of at most so many bytes. Throws ToolFailure (kBadFile) also when it
// throws MalformedFile.
template <class Parse>
auto ParseInputFile(const std::string& path, std::uint64_t most, Parse parse) {
  const std::vector<unsigned char> file = ReadInputFile(path, most);
  try {
    return parse(file);
  } catch (const MalformedFile& malformed) {
    throw ToolFailure(kBadFile, path + " " + malformed.what(), "Nothing was sent.");
  }
}

}  // namespace zemctl
