// Whole files, by their paths in UTF-8.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zemctl {

// All throw ToolFailure (kBadFile) when the file cannot be opened, read or written.

// In bytes, without reading it.
std::uint64_t SizeOfFile(const std::string& path);

// A file of more bytes than `most` is refused before it is read.
std::vector<unsigned char> ReadInputFile(const std::string& path, std::uint64_t most);
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
