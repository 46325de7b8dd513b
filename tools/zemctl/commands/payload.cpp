#include "tools/zemctl/commands/payload.h"

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

std::vector<unsigned char> TakePayload(const std::vector<std::string>& words,
                                       const std::string& input, std::uint64_t most) {
  if (input.empty() == words.empty()) {
    throw UsageError("give either bytes or --input");
  }
  return input.empty() ? ParseBytes(words) : ReadInputFile(input, most);
}

void ShowPayload(std::span<const unsigned char> bytes, const std::string& output, Report& report) {
  if (output.empty()) {
    report["data"] = HexText(bytes);
    return;
  }
  WriteOutputFile(output, bytes);
  report["output"] = output;
}

}  // namespace zemctl
