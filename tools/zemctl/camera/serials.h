// Serial numbers taken out of a trace.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/zemctl/camera/trace_lines.h"

namespace zemctl {

// Serial numbers that the camera answers become zeros, and the instance parts of device names, in
// which they stand too, become "left-out-1", "left-out-2", the same for the same device.
class SerialFilter {
 public:
  void TakeOut(TraceEvent& event);

 private:
  std::string WithoutInstance(const std::string& text);
  std::string WithoutKnownInstance(const std::string& text) const;
  void TakeOutReply(TracedTransfer& traced);

  std::map<std::string, std::size_t> instances_;
  // The cameras that were told last to have their sensor's serial number ready.
  std::map<std::uint32_t, bool> isSerialNext_;
};

}  // namespace zemctl
