#include "tools/zemctl/rom_boot/code_loading.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/rom_boot/refused_volumes.h"

namespace zemctl {
namespace {

// A code image: what the boot loader takes, and an 18-byte header.
constexpr std::uint64_t kLongestCode = 0x7FFFFFFF + 18ULL;

constexpr std::uint32_t kSearchPauseMilliseconds = 200;

}  // namespace

std::uint32_t CodeSizeOf(const std::string& path) {
  return ParseInputFile(path, kLongestCode, CodeSize);
}

// The library reports success also when nothing came back, or the same boot loader: a new search
// tells. Its own search of minutes ends where this one does.
RomSession LoadUpdater(RomSession session, const std::string& path, unsigned seconds,
                       Progress& progress) {
  RomWatch& watch = session.watch();
  const std::uint32_t size = CodeSizeOf(path);
  watch.trail().PlanCode(size);
  progress.Begin("updater");
  std::uint64_t end = watch.Now();
  std::optional<ScsiCommand> jump;
  {
    const RomSession ended = std::move(session);
    const ObserverGuard looking(watch, [&](const ScsiCommand& command) {
      if (!jump) {
        progress.UpdateBytes(std::min<std::uint64_t>(watch.trail().loadedBytes(), size), size);
      }
      if (command.code() == zem::SubCommand::kLongJump) {
        progress.Begin("start");
        jump = command;
        end = watch.Now() + std::uint64_t{1000} * seconds;
        watch.record().SetEnd(end);
      }
    });
    const std::wstring name = Widen(path);
    const ZemResult result =
        ended.Observe([&](void* handle) { return ZEMROMAPI_LoadUpdater(handle, name.c_str()); });
    watch.record().SetEnd(std::nullopt);
    const auto loss = FindScsiLoss(watch.record().commands());
    if (result < 0 || (loss && loss->code() == zem::SubCommand::kDownload)) {
      ended.Judge("ZEMROMAPI_LoadUpdater", result);
    }
  }
  RomSelection storage;
  storage.kind = RomKind::kZemStorage;
  for (;;) {
    if (std::optional<RomSession> found = RomSession::Find(watch, storage)) {
      return std::move(*found);
    }
    watch.ThrowIfStopped();
    if (watch.Now() >= end) {
      break;
    }
    watch.Pause(kSearchPauseMilliseconds);
  }
  const std::string refused =
      jump && jump->hasFailed() ? " (" + NameOf(*jump) + ": " + FailureOf(*jump) + ")" : "";
  // A volume that comes anew may be one that is not to be opened.
  const RefusalWords unopened = Describe(watch.record().refusals());
  throw ToolFailure(
      kNoCamera,
      "the updater was sent, but its storage did not show up within " + std::to_string(seconds) +
          " s" + refused + unopened.why,
      unopened.next + (unopened.next.empty() ? "" : " ") + "Check that " + path +
          " is the updater of this camera, and that it needs no more time (--updater-wait). Unplug "
          "the camera and plug it in again.");
}

}  // namespace zemctl
