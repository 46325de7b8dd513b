#include "tools/zemctl/updates/several_updates.h"

#include <algorithm>

#include "tools/zemctl/camera/trace_scope.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/interrupt.h"
#include "tools/zemctl/frame/outcome.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/frame/side_by_side.h"

namespace zemctl {
namespace {

DeviceSelection Exactly(const SystemDevice& device) {
  DeviceSelection selection;
  selection.displayName = device.displayName;
  return selection;
}

// What came of one camera, written by its own thread.
struct Outcome {
  Report report = Report::object();
  std::optional<Failure> failure;
};

Report OrNothing(const std::string& text) { return text.empty() ? Report() : Report(text); }

Report RowOf(const SystemDevice& device, const Outcome& outcome) {
  const auto told = [&](const char* name) {
    const auto field = outcome.report.find(name);
    return field != outcome.report.end() ? *field : Report();
  };
  const Failure failure = outcome.failure.value_or(Failure{kDone, "", "", "", "", "", ""});
  return {{"name", device.name},
          {"place", device.place},
          {"done", !outcome.failure},
          {"code", failure.code},
          {"version before", told("version before")},
          {"version after", told("version after")},
          {"reported", told("reported")},
          {"verified", told("verified")},
          {"proof", told("proof")},
          {"message", OrNothing(failure.message)},
          {"camera state", OrNothing(failure.cameraState)},
          {"next", OrNothing(failure.next)}};
}

// Each thread has a trace of its own.
TraceOptions TraceOf(const Options& options, std::size_t index) {
  if (options.trace.empty()) {
    return {};
  }
  return {options.trace + "." + std::to_string(index), options.traceWithoutSerials, options.words};
}

std::string Question(const std::vector<SystemDevice>& cameras, const ImageUpdate& update) {
  std::string text = "Of each of these " + std::to_string(cameras.size()) + " cameras:\n";
  for (const SystemDevice& camera : cameras) {
    const std::string version = VersionBefore(Session(Exactly(camera), Use::kWriting));
    text += "  " + NameOf(camera) + ", firmware version " +
            (version.empty() ? "not told" : version) + "\n";
  }
  return text + LossOf(update);
}

}  // namespace

std::vector<SystemDevice> ChosenCameras(const DeviceSelection& selection,
                                        const std::vector<unsigned>& positions) {
  if (selection.index) {
    throw UsageError("--index chooses one camera, --all and --cameras choose several");
  }
  const std::vector<SystemDevice> cameras = ListMatches(selection);
  std::vector<SystemDevice> chosen;
  for (const unsigned position : positions) {
    if (position >= cameras.size()) {
      throw ToolFailure(kNoCamera,
                        "there is no camera " + std::to_string(position) + " among " +
                            std::to_string(cameras.size()),
                        "Nothing was sent. \"zemctl list\" shows what is attached.");
    }
    if (std::count(positions.begin(), positions.end(), position) > 1) {
      throw UsageError("--cameras names " + std::to_string(position) + " more than once");
    }
    chosen.push_back(cameras[position]);
  }
  if (cameras.empty()) {
    throw NoCameraMatches(selection);
  }
  return positions.empty() ? cameras : chosen;
}

int UpdateSeveral(const Options& options, const std::vector<SystemDevice>& cameras,
                  const ImageUpdate& update, Report& report) {
  if (!options.replay.empty()) {
    throw UsageError(
        "a trace answers for one camera: replay the one of each, FILE.0, without --all");
  }
  if (!options.yes) {
    Confirm(options, Question(cameras, update));
  }
  std::vector<Outcome> outcomes(cameras.size());
  std::vector<std::function<void()>> work;
  for (std::size_t index = 0; index < cameras.size(); ++index) {
    work.emplace_back([&, index] {
      const SystemDevice& camera = cameras[index];
      Outcome& outcome = outcomes[index];
      Progress progress(options.json, camera.name + " at " + camera.place);
      outcome.failure =
          EndingOf(options.command, [&]() -> Ending {
            TraceScope trace(TraceOf(options, index));
            Ending ending = EndingOf(options.command, [&]() -> Ending {
              std::optional<Session> session(std::in_place, Exactly(camera), Use::kWriting);
              CarryOut(session, update, progress, outcome.report);
              return {};
            });
            if (auto untold = trace.End(ending.code()); untold && !ending.failure) {
              ending.failure = std::move(untold);
            }
            return ending;
          }).failure;
      if (outcome.failure) {
        progress.Say(outcome.failure->message);
      }
    });
  }
  RunSideBySide(work);

  Report rows = Report::array();
  for (std::size_t index = 0; index < cameras.size(); ++index) {
    rows.push_back(RowOf(cameras[index], outcomes[index]));
  }
  report["cameras"] = rows;
  const auto failed = std::count_if(outcomes.begin(), outcomes.end(), [](const Outcome& outcome) {
    return outcome.failure.has_value();
  });
  if (failed > 0) {
    throw PartialFailure(
        {StopRequested() ? kInterrupted : kSomeFailed,
         std::string(StopRequested() ? "stopped by the user: " : "") + std::to_string(failed) +
             " of " + std::to_string(cameras.size()) + " cameras failed",
         "The table tells what state each of them is in, and what comes next.", "", "", "", ""});
  }
  return kDone;
}

}  // namespace zemctl
