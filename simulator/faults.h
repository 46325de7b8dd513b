// Faults that a simulated camera or boot loader can be told to show. For a boot loader a transfer
// is one SCSI command.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zem::simulator {

struct Fault {
  enum class Kind {
    kFail,     // the transfer fails; a boot loader's with the system error `value`, if there is
               // one, a USB device's with the reason `value` for its stall
    kRefuse,   // a read answers with `value` in byte 0; a boot loader refuses the
               // command, with the SCSI status `value` if there is one
    kShort,    // a read moves no more than `value` bytes
    kLength,   // a read reports that it moved `value` bytes, whatever it moved
    kGarbage,  // bytes without meaning are read, or arrive in place of those written
    kDrop,     // a write succeeds and never arrives; a boot loader has no such fault
    kUnplug,   // the camera is gone from this transfer on
    kLeave,  // the transfer is done as ever, and then the camera is gone; a boot loader has no such
             // fault
    kReplug,  // the camera is gone, and has been plugged in again as a new one; a boot loader has
              // no such fault
    kSilent,  // the transfer is not answered and does nothing; the host gives up waiting
  };

  Kind kind = Kind::kFail;
  std::uint32_t first = 1;  // number of the first transfer that shows it, counted from 1
  std::uint32_t count = 1;  // number of transfers that show it
  std::uint32_t value = 0;

  bool Hits(std::uint64_t transfer) const {
    return transfer >= first && (kind == Kind::kUnplug || transfer - first < count);
  }
};

// Reads a fault from "kind@first", "kind@first+count", each with "=value" behind it if wanted: for
// example "refuse@2=5", "fail@3+2", "unplug@7". Nothing for any other text.
std::optional<Fault> ParseFault(std::string_view text);

}  // namespace zem::simulator
