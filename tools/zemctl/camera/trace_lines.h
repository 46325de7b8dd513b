// The lines of a trace: what passed between the tool and the devices, as JSON, one event a line
// (docs/traces.md).
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/zemctl/camera/scsi_record.h"
#include "tools/zemctl/camera/transfer_record.h"

namespace zemctl {

// The first line: which run it was.
struct TracedRun {
  std::string tool;                  // name and version
  std::vector<std::string> command;  // the arguments
  bool serialsLeftOut = false;
};

struct TracedDevice {
  std::optional<std::string> name;
  std::optional<std::string> path;  // its display name
  std::optional<std::string> devicePath;
  std::optional<std::string> place;  // where it is plugged in
};

// The system's devices of a category, as they were listed the `number`th time (from 1) and, until
// another line says otherwise, every time after that.
struct TracedDevices {
  bool isAudio = false;
  std::uint64_t number = 0;
  std::vector<TracedDevice> devices;
  HRESULT result = S_OK;
};

// A device of the list was opened: `camera` is its number in the lines that follow.
struct TracedOpening {
  std::uint32_t camera = 0;
  std::string path;
  HRESULT result = S_OK;
};

// A question was answered like this the `number`th time it was put (from 1) and, until another line
// says otherwise, every time after that.
struct TracedLookup {
  std::uint32_t camera = 0;
  std::uint64_t number = 0;
  Lookup lookup;
};

struct TracedTransfer {
  std::uint32_t camera = 0;
  Transfer transfer;     // without its time, which is the line's
  bool leftOut = false;  // its bytes are a serial number, and zeros stand for them
};

// How opening a volume ended, as it did the `number`th time (from 1) and, until another line
// says otherwise, every time after that.
struct TracedVolume {
  std::string drive;  // such as "F:"
  std::uint64_t number = 0;
  VolumeOpening opening = {kNoSuchVolume};
};

// A SCSI command to a volume.
struct TracedCommand {
  ScsiCommand command;  // without its time, which is the line's
};

// The run came to its end by itself.
struct TracedEnd {
  std::uint32_t exitCode = 0;
};

using TraceEvent = std::variant<TracedRun, TracedDevices, TracedOpening, TracedLookup,
                                TracedTransfer, TracedVolume, TracedCommand, TracedEnd>;

struct TraceLine {
  std::uint64_t milliseconds = 0;  // since the run began
  TraceEvent event;
};

// A text that is no line of a trace: "line 3: WHY".
class MalformedTrace : public std::runtime_error {
 public:
  MalformedTrace(std::size_t line, const std::string& why)
      : std::runtime_error("line " + std::to_string(line) + ": " + why) {}
};

// A line without its end.
std::string FormatTraceLine(const TraceLine& line);

// Takes any text. `number` is the line's, for the words of MalformedTrace.
TraceLine ParseTraceLine(std::string_view text, std::size_t number);

// A whole trace: the first line says which run it was, no other does. Throws MalformedTrace.
std::vector<TraceLine> ParseTrace(std::string_view text);

}  // namespace zemctl
