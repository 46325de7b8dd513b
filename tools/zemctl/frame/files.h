// Whole files, by their paths in UTF-8.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zemctl {

// Both throw ToolFailure (kBadFile) when the file cannot be opened, read or written.
std::vector<unsigned char> ReadInputFile(const std::string& path);
void WriteOutputFile(const std::string& path, std::span<const unsigned char> bytes);

bool FileExists(const std::string& path);

// What `parse` makes of a file. Throws ToolFailure (kBadFile) also when it throws MalformedFile.
template <class Parse>
auto ParseInputFile(const std::string& path, Parse parse) {
  const std::vector<unsigned char> file = ReadInputFile(path);
  try {
    return parse(file);
  } catch (const MalformedFile& malformed) {
    throw ToolFailure(kBadFile, path + " " + malformed.what(), "Nothing was sent.");
  }
}

}  // namespace zemctl
