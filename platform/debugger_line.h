// One formatted line on the debugger output channel.
#pragma once

#include <array>
#include <cstddef>

#include "platform/platform.h"

namespace zem::platform {

// Formats as FormatWide does, cut to `Capacity` characters with the terminator.
template <std::size_t Capacity, class... Arguments>
void DebuggerLine(const wchar_t* format, Arguments... arguments) {
  std::array<wchar_t, Capacity> line = {};
  FormatWide(line, format, arguments...);
  DebuggerOutput(line.data());
}

}  // namespace zem::platform
