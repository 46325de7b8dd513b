// The bytes that a command is given or brings: on the command line, in the report, or in a file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/report.h"

namespace zemctl {

// Bytes in hexadecimal, or the contents of a file (`input`) of at most so many; just one of the two
// is given. Throws UsageError for both or neither, and ToolFailure for a file that cannot be read.
std::vector<unsigned char> TakePayload(const std::vector<std::string>& words,
                                       const std::string& input, std::uint64_t most);

// Writes the bytes to the file `output`, or into the report where no file is named.
void ShowPayload(std::span<const unsigned char> bytes, const std::string& output, Report& report);

}  // namespace zemctl
