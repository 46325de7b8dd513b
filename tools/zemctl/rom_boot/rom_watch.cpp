#include "tools/zemctl/rom_boot/rom_watch.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/camera/waiting.h"
#include "tools/zemctl/frame/interrupt.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// A word of a command line, as a shell takes it.
std::string Quoted(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t\"'&|<>^;*?$(){}[]`~!#") == std::string::npos) {
    return word;
  }
  std::string text = "\"";
  for (const char character : word) {
    text += character == '"' ? "\\\"" : std::string(1, character);
  }
  return text + "\"";
}

}  // namespace

RomWatch::RomWatch(const Options& options)
    : options_(options), record_(WaitingClock, StopRequested), volumes_(record_) {
  record_.AddObserver([this](const ScsiCommand& command) {
    trail_.OnCommand(command);
    if (observer_) {
      observer_(command);
    }
  });
}

int RomWatch::Run(const std::function<int()>& command) {
  try {
    return command();
  } catch (const CallFailure& failure) {
    Tell(failure.failure());
  } catch (const ToolFailure& failure) {
    Tell(failure.failure());
  }
}

// A call that fails at Ctrl-C fails because the gate before the volumes was shut.
void RomWatch::Tell(Failure failure) const {
  if (failure.code == kInterrupted || record_.wasStopped()) {
    failure = Stopped(failure.code == kInterrupted ? failure.cameraState : "", "").failure();
  }
  // A file, a question, a choice of cameras: no camera had to do with it.
  if (!trail_.hasBegun() && failure.function.empty() && failure.code != kInterrupted) {
    throw PartialFailure(failure);
  }
  if (failure.cameraState.empty()) {
    failure.cameraState = trail_.State();
  }
  if (failure.code != kCancelled) {
    failure.next += failure.next.empty() ? "" : " ";
    failure.next += "This can be run again: " + Again();
  }
  throw PartialFailure(failure);
}

std::string RomWatch::Again() const {
  std::string text = "zemctl";
  for (const std::string& word : options_.words) {
    // It is there already.
    if (word != "--enter" || !trail_.hasEntered()) {
      text += " " + Quoted(word);
    }
  }
  return text;
}

std::vector<RomVolume> RomWatch::Survey() {
  std::vector<RomVolume> found;
  std::set<std::string> seen = leftAlone_;
  for (;;) {
    record_.Exclude(seen);
    record_.BeginCall();
    // Of either kind: what has answered is in the record, whatever the library makes of it.
    void* session = ZEMROMAPI_OpenDevice(static_cast<unsigned>(RomKind::kBootLoader));
    ZEMROMAPI_CloseDevice(&session);
    std::optional<RomVolume> volume;
    for (const ScsiCommand& command : record_.commands()) {
      if (std::optional<RomVolume> answered = AnsweredBy(command)) {
        volume = std::move(answered);
      }
    }
    if (!volume) {
      break;
    }
    seen.insert(volume->drive);
    found.push_back(std::move(*volume));
  }
  record_.Exclude(leftAlone_);
  return found;
}

void RomWatch::LeaveAlone(const std::string& drive) {
  leftAlone_.insert(drive);
  record_.Exclude(leftAlone_);
}

void RomWatch::Pause(std::uint32_t milliseconds) const {
  constexpr std::uint32_t kStep = 50;
  for (std::uint32_t passed = 0; passed < milliseconds; passed += kStep) {
    ThrowIfStopped();
    Wait(std::min(kStep, milliseconds - passed));
  }
  ThrowIfStopped();
}

void RomWatch::ThrowIfStopped() const {
  if (StopRequested()) {
    throw Stopped("");
  }
}

}  // namespace zemctl
