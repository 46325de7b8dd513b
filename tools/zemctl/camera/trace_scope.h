// --trace and --replay: a run, or a thread of it, whose transfers are written to a file, or
// answered from one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/trace.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

// A whole trace. Throws ToolFailure (kBadFile) for a file that is none.
std::vector<TraceLine> LoadTrace(const std::string& path);

struct TraceOptions {
  std::string path;                  // nothing is traced without one
  bool withoutSerials = false;       // serial numbers are left out
  std::vector<std::string> command;  // the arguments of the run
};

// From its construction until its end, every device that this thread opens writes its transfers to
// the trace. Without a path there is none.
class TraceScope {
 public:
  // Throws ToolFailure (kBadFile) when the file cannot be created.
  explicit TraceScope(const TraceOptions& options);
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

  // The run has come to its end. What went wrong when not all of it could be written down.
  std::optional<Failure> End(int exitCode);

 private:
  std::shared_ptr<Trace> trace_;
  std::shared_ptr<Trace> before_;
};

// From its construction until its end, this thread finds the devices of the trace. Without a path
// it finds the system's.
class ReplayScope {
 public:
  // Throws ToolFailure (kBadFile) for a file that is no trace.
  explicit ReplayScope(const std::string& path);
  ~ReplayScope();
  ReplayScope(const ReplayScope&) = delete;
  ReplayScope& operator=(const ReplayScope&) = delete;

  // The run has come to its end. What went wrong when it was not the recorded one.
  std::optional<Failure> End();

 private:
  std::string path_;
  std::shared_ptr<Replay> replay_;
};

}  // namespace zemctl
