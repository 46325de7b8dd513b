// Trace files with any content: what is read of one is written as it is read again.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/zemctl/camera/trace_lines.h"

namespace {

std::string Written(const std::vector<zemctl::TraceLine>& lines) {
  std::string text;
  for (const zemctl::TraceLine& line : lines) {
    text += zemctl::FormatTraceLine(line) + "\n";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<zemctl::TraceLine> lines;
  try {
    lines = zemctl::ParseTrace(text);
  } catch (const zemctl::MalformedTrace&) {
    return 0;
  }
  // A trace of the tool's own is no malformed one.
  const std::string written = Written(lines);
  if (Written(zemctl::ParseTrace(written)) != written) {
    std::abort();
  }
  return 0;
}
