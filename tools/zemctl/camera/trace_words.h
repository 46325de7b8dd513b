// What the lines of a trace say, in names instead of numbers.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "tools/zemctl/camera/trace_lines.h"

namespace zemctl {

// One event. What does not apply, or is not known, is empty.
struct TraceWords {
  std::string action;    // "set", "get", "range", "none"; "run",
                         // "open", "list", "lookup", "look", "end";
                         // of a SCSI command "in" or "out"
  std::string unit;      // "vendor", or the interface of a standard control
  std::string selector;  // "1", or the number of a standard control
  std::string control;   // "ISP command"; the command block of a SCSI command
  std::string command;   // "read register"; of a reply the command that it is to
  std::string place;     // the register, address or area: "isp 0x123456"
  std::string status;    // of a reply: "done", "refused (0x01)"
  std::string value;     // "0x5170"
  std::string bytes;     // as they passed, cut to the first ones where there are many
  std::string result;    // "done", "the camera is gone (0x8007048F)"
};

// Decodes the lines of one trace after another: a reply says what it is by the command before it.
class TraceDecoder {
 public:
  TraceWords Decode(const TraceEvent& event);

 private:
  TraceWords DecodeTransfer(const TracedTransfer& traced);

  // The last block that was written to each command channel of a camera, by the selector of the
  // reply.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint8_t>> commands_;
};

// One clause: "set vendor 1 (ISP command, 8 bytes): 0a 00 00 00 00 00 00 00".
std::string Words(const TraceEvent& event);

}  // namespace zemctl
