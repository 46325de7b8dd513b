#include "tools/zemctl/camera/trace_scope.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "tools/zemctl/frame/files.h"
#include "zemctl_version.h"

namespace zemctl {
namespace {

// No trace of a command is longer.
constexpr std::uint64_t kLongestTrace = 1ULL << 30;

std::shared_ptr<Trace> Begin(const TraceOptions& options) {
  if (options.path.empty()) {
    return nullptr;
  }
  return std::make_shared<Trace>(
      CreateOutputFile(options.path),
      TracedRun{std::string("zemctl ") + kVersion, options.command, options.withoutSerials});
}

}  // namespace

std::vector<TraceLine> LoadTrace(const std::string& path) {
  const std::vector<unsigned char> bytes = ReadInputFile(path, kLongestTrace);
  try {
    return ParseTrace({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  } catch (const MalformedTrace& malformed) {
    throw ToolFailure(kBadFile, path + " is not a trace: " + malformed.what(),
                      "A trace is what --trace writes. Nothing was sent.");
  }
}

TraceScope::TraceScope(const TraceOptions& options)
    : trace_(Begin(options)), before_(std::exchange(ThreadTrace(), trace_)) {}

TraceScope::~TraceScope() { ThreadTrace() = before_; }

std::optional<Failure> TraceScope::End(int exitCode) {
  if (trace_) {
    trace_->Write(TracedEnd{static_cast<std::uint32_t>(exitCode)});
  }
  if (!trace_ || trace_->isWhole()) {
    return std::nullopt;
  }
  return ToolFailure(kBadFile, "the trace could not be written whole",
                     "Check that the disk is not full. What the command did stands.")
      .failure();
}

ReplayScope::ReplayScope(const std::string& path)
    : path_(path), replay_(path.empty() ? nullptr : std::make_shared<Replay>(LoadTrace(path))) {
  ThreadReplay() = replay_;
}

ReplayScope::~ReplayScope() { ThreadReplay() = nullptr; }

std::optional<Failure> ReplayScope::End() {
  if (!replay_) {
    return std::nullopt;
  }
  replay_->ExpectEnd();
  if (!replay_->difference()) {
    return std::nullopt;
  }
  return ToolFailure(kBadFile, path_ + " is of another run: " + *replay_->difference(),
                     "\"zemctl trace show\" tells which command it is of; give the same one, with "
                     "the same files.")
      .failure();
}

}  // namespace zemctl
