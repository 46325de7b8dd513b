// A trace that answers in place of the devices it was recorded from.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/com_ptr.h"
#include "tools/zemctl/camera/trace_lines.h"
#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

// What passes must be what the trace has, in its order. The first thing that is not ends the
// replay: from then on every device is gone. Used by one thread.
class Replay : public VolumeSource {
 public:
  explicit Replay(std::vector<TraceLine> lines);

  // What differs: "line 12: expected ..., came ..."; nothing as long as nothing does. Once the run
  // has come to its end, whatever the trace still holds is a difference too.
  const std::optional<std::string>& difference() const { return difference_; }
  void ExpectEnd();

  // The time of the line that answered last.
  std::uint64_t milliseconds() const { return milliseconds_; }

  // The time that was waited for, which is not the trace's.
  std::uint64_t waited() const { return waited_; }
  void Wait(std::uint32_t milliseconds) { waited_ += milliseconds; }

  // The devices of a category, as they are listed next.
  TracedDevices ListDevices(bool isAudio);

  // Where the device with this path is plugged in, as the trace has it.
  std::string PlaceOf(const std::string& devicePath) const;

  // Opens the device with this display name: its number, and the recorded result.
  TracedOpening Open(const std::string& path);

  // Answers a question, of which everything but the answer is given. A failure as the trace has it.
  HRESULT Ask(std::uint32_t camera, Lookup& lookup);

  VolumeOpening OpenVolume(const std::string& drive) override;
  void Execute(ScsiCommand& command) override;

  // Carries a transfer out, of which everything but the answer is given.
  HRESULT Carry(std::uint32_t camera, Transfer& transfer);

 private:
  // The answers to one question: from its `number`th time on, in the trace's line.
  struct Answers {
    std::uint64_t asked = 0;
    std::vector<std::size_t> lines;
    std::size_t next = 0;
  };

  // The line that answers a question this time; nothing when the trace has none.
  template <class Event>
  const Event* Answer(Answers& answers);

  // The next line of those that are in order, when it is an Event; a difference otherwise.
  // `came` says what came.
  template <class Event>
  const Event* Next(const std::string& came);

  void Differ(std::size_t line, const std::string& came);
  void LackAnswer(const std::string& came);

  std::vector<TraceLine> lines_;
  std::vector<std::size_t> inOrder_;
  std::size_t next_ = 0;
  std::map<std::string, Answers> questions_;
  std::optional<std::string> difference_;
  std::uint64_t milliseconds_ = 0;
  std::uint64_t waited_ = 0;
};

// A device object that answers from the trace.
zem::ComPtr<IBaseFilter> MakeReplayedCamera(std::shared_ptr<Replay> replay, std::uint32_t camera);

// That of this thread; null when nothing is replayed.
std::shared_ptr<Replay>& ThreadReplay();

}  // namespace zemctl
