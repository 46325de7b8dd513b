// zemctl recover: the whole way from a camera that does not start to one that does.
#include "tools/zemctl/camera/camera_wait.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/code_loading.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

struct RecoverArguments {
  RomSelection selection = {std::nullopt, 30, false};
  StorageChoice storage;
  BurnRequest request;
  std::string updater;
  bool enter = false;
  bool noReset = false;
  unsigned cameraSeconds = 10;
  bool dryRun = false;
};

RomSession FindCamera(const Options& options, const RecoverArguments& arguments) {
  if (arguments.enter) {
    if (std::optional<RomSession> there = RomSession::Find(arguments.selection)) {
      return std::move(*there);
    }
    const Session camera(options.device, Use::kWriting);
    camera.Call("ZEMAPI_ResetToRomboot",
                [](void* device) { return ZEMAPI_ResetToRomboot(device); });
  }
  return RomSession::Open(arguments.selection);
}

// A session on what takes the storage commands: the updater, where one is to be loaded.
RomSession Prepare(const Options& options, const RecoverArguments& arguments, Progress& progress,
                   Report& report) {
  progress.Begin("find");
  RomSession session = FindCamera(options, arguments);
  report["found"] = NameOf(session.kind());
  if (session.kind() == RomKind::kZemStorage || arguments.updater.empty()) {
    report["updater"] = "not loaded";
    return session;
  }
  progress.Begin("updater");
  RomSession storage = LoadUpdater(std::move(session), arguments.updater);
  report["updater"] = "loaded; its storage answers";
  return storage;
}

// Starts the firmware; the words on what came of it.
std::string Restart(const Options& options, const RecoverArguments& arguments,
                    const RomSession& session, Progress& progress, Report& report) {
  const std::string verified = "what " + arguments.request.path +
                               " says is on the storage, byte by byte as read back from it";
  if (arguments.noReset) {
    return verified + "; the camera was not restarted";
  }
  progress.Begin("restart");
  ZEMROMAPI_ResetSystem(session.handle());
  report["reset"] = "sent";
  const std::string version = WaitForCamera(options.device, arguments.cameraSeconds);
  if (version.empty()) {
    throw ToolFailure(kNoCamera,
                      verified + "; but no camera came within " +
                          std::to_string(arguments.cameraSeconds) + " s of the reset",
                      "It may have other USB ids, see \"zemctl list\"; or this firmware does not "
                      "start from this storage and address.");
  }
  report["camera"] = "firmware version " + version;
  return verified + "; the camera runs and answers";
}

// What loading the updater sends; nothing without one. Throws ToolFailure for a file that is none.
Report UpdaterRows(const RecoverArguments& arguments) {
  Report rows = Report::array();
  if (arguments.updater.empty()) {
    return rows;
  }
  for (const Cdb& cdb : DownloadCdbs(CodeSizeOf(arguments.updater))) {
    rows.push_back(CommandRow("updater", "", cdb[5] * 512U, cdb));
  }
  rows.push_back(CommandRow("jump", "", 0, kJumpCdb));
  return rows;
}

void ShowCommands(const RecoverArguments& arguments, const Report& updater, const BurnPlan& plan,
                  Report& report) {
  Report rows = updater;
  const Report burn = CommandRows(plan, arguments.storage);
  rows.insert(rows.end(), burn.begin(), burn.end());
  if (!arguments.noReset) {
    rows.push_back(CommandRow("reset", "", 0, kResetCdb));
  }
  report["commands"] = rows;
}

int Recover(const Options& options, const RecoverArguments& arguments, Report& report) {
  const BurnPlan plan = PlanOf(arguments.request);
  const Report updater = UpdaterRows(arguments);
  static_cast<void>(SelectCdb(arguments.storage));
  if (arguments.dryRun) {
    ShowCommands(arguments, updater, plan, report);
    return kDone;
  }
  Confirm(options, DescribeLoss(plan, arguments.storage));
  Progress progress(options.json);
  const RomSession session = Prepare(options, arguments, progress, report);
  session.Select(arguments.storage);
  report["storage"] = arguments.storage.name;
  WritePlan(plan, progress, report, [&] { Burn(session.handle(), arguments.request); });
  Verify(session, plan, progress, report);
  const std::string outcome = Restart(options, arguments, session, progress, report);
  progress.Complete();
  report["result"] = outcome;
  return kDone;
}

}  // namespace

void AddRecoverCommand(Program& program) {
  const auto arguments = std::make_shared<RecoverArguments>();
  CLI::App* const command =
      AddRomCommand(program, &program.app(), arguments, "recover",
                    "Burn an image into a camera in ROM boot, read it back, compare and restart",
                    Recover, {.yes = true});
  command->add_option("file", arguments->request.path, "File to burn")->required();
  AddBurnOptions(command, arguments->request);
  AddStorageOptions(command, arguments->storage);
  command->add_option("--updater", arguments->updater,
                      "Code to load first, when the boot loader answers and not its storage yet");
  command->add_flag("--enter", arguments->enter, "Send a running camera into ROM boot first");
  command->add_flag("--no-reset", arguments->noReset, "Leave the camera in ROM boot");
  command
      ->add_option("--camera-wait", arguments->cameraSeconds,
                   "Seconds to wait for the camera after the reset")
      ->check(CLI::Range(3600))
      ->capture_default_str();
  AddDryRun(command, arguments->dryRun);
}

}  // namespace zemctl
