// What passes between the tool and the devices, written to a file as it happens.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "tools/zemctl/camera/serials.h"
#include "tools/zemctl/camera/trace_lines.h"
#include "tools/zemctl/frame/files.h"

namespace zemctl {

// The file. Every line is there, for whoever reads the file, before the call that writes it
// returns.
class Trace {
 public:
  // An empty file, and what its first line says.
  Trace(OpenedFile file, TracedRun run);

  void Write(TraceEvent event);

  // The same as they were the last time are not written again.
  void WriteDevices(TracedDevices devices);
  void WriteLookup(std::uint32_t camera, const Lookup& lookup);
  void WriteVolume(TracedVolume volume);

  // The number of the device with this display name.
  std::uint32_t CameraOf(const std::string& path);

  // The time of the last line.
  std::uint64_t milliseconds() const { return milliseconds_; }

  // Whether all of it could be written.
  bool isWhole() const { return isWhole_; }

 private:
  using Question =
      std::tuple<std::uint32_t, Lookup::What, std::uint32_t, std::string, std::uint32_t>;
  struct Answers {
    std::uint64_t count = 0;
    std::string last;  // as it would be written
  };
  // Whether this answer is to be written; its number.
  static bool IsNew(Answers& answers, const std::string& answer, std::uint64_t& number);

  OpenedFile file_;
  std::uint64_t start_;
  std::unique_ptr<SerialFilter> serials_;  // when they are left out
  std::map<std::string, std::uint32_t> cameras_;
  std::map<Question, Answers> lookups_;
  std::map<bool, Answers> devices_;
  std::map<std::string, Answers> volumes_;
  std::uint64_t milliseconds_ = 0;
  bool isWhole_ = true;
};

// That of this thread; null when it is not traced.
std::shared_ptr<Trace>& ThreadTrace();

// A watcher that writes down what happens to a camera on the thread's present trace.
std::shared_ptr<CameraWatcher> MakeTracer(std::uint32_t camera);

}  // namespace zemctl
