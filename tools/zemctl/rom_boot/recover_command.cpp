// zemctl recover: the whole way from a camera that does not start to one that does.
#include <cctype>
#include <optional>
#include <string>
#include <utility>

#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_run.h"
#include "tools/zemctl/rom_boot/code_loading.h"
#include "tools/zemctl/rom_boot/returning_camera.h"
#include "tools/zemctl/rom_boot/rom_arguments.h"

namespace zemctl {
namespace {

struct RecoverArguments {
  RomSelection selection = {std::nullopt, 10, false, ""};
  StorageChoice storage;
  BurnRequest request;
  std::string updater;
  unsigned updaterSeconds = 5;
  bool enter = false;
  bool noReset = false;
  unsigned cameraSeconds = 10;
  std::string expectedVersion;
  bool dryRun = false;
};

// What is known of a camera that runs and is to be sent into ROM boot.
struct RunningCamera {
  SystemDevice device;
  std::string version;  // of its firmware; empty when it could not be read
  std::string notRead;  // why

  std::string Words() const {
    return NameOf(device) + ", firmware version " + (version.empty() ? "not read" : version);
  }
};

RunningCamera Describe(const Session& camera) {
  RunningCamera described = {camera.device(), "", ""};
  try {
    described.version = ReadVersion(camera);
  } catch (const CallFailure& failure) {
    described.notRead = failure.what();
  }
  return described;
}

// The camera that --enter means; nothing when it has been sent there before, by a run that broke
// off. Two that may be meant are one too many.
std::optional<RunningCamera> FindRunning(const Options& options, RomWatch& watch) {
  const std::vector<RomVolume> there = watch.Survey();
  if (there.empty()) {
    return Describe(Session(options.device, Use::kWriting));
  }
  const std::vector<SystemDevice> running = ListMatches(options.device);
  if (running.empty()) {
    return std::nullopt;
  }
  throw ToolFailure(kNoCamera,
                    "a camera is in ROM boot already, at " + there.front().drive +
                        ", and another one runs: " + NameOf(running.front()),
                    "Leave out --enter to recover the one that is in ROM boot; or unplug it.",
                    "nothing was sent to either");
}

void SendIntoRomBoot(const Options& options, RomWatch& watch, const RunningCamera& running) {
  DeviceSelection selection = options.device;
  selection.index.reset();
  selection.displayName = running.device.displayName;
  const Session camera(selection, Use::kWriting);
  camera.Call("ZEMAPI_ResetToRomboot", [](void* device) { return ZEMAPI_ResetToRomboot(device); });
  watch.trail().OnEntered();
}

// A session on what takes the storage commands: the updater, where one is to be loaded.
RomSession Prepare(RomSession session, const RecoverArguments& arguments, Progress& progress,
                   Report& report) {
  if (session.kind() == RomKind::kZemStorage || arguments.updater.empty()) {
    report["updater"] = "not loaded";
    return session;
  }
  RomSession storage =
      LoadUpdater(std::move(session), arguments.updater, arguments.updaterSeconds, progress);
  report["updater"] = "loaded; its storage answers";
  return storage;
}

void CompareVersion(const RecoverArguments& arguments, const ReturnedCamera& camera) {
  if (!arguments.expectedVersion.empty() && camera.version != arguments.expectedVersion) {
    throw ToolFailure(kNotVerified,
                      "the camera shows firmware version " + camera.version + " and not " +
                          arguments.expectedVersion,
                      "Check that " + arguments.request.path + " is the image that is meant.",
                      "it runs and answers, " + NameOf(camera.device));
  }
}

// Starts the firmware; the words on what came of it.
std::string Restart(const Options& options, const RecoverArguments& arguments,
                    const RomSession& session, const std::string& place, Progress& progress,
                    Report& report) {
  const std::string verified = "what " + arguments.request.path +
                               " says is on the storage, byte by byte as read back from it";
  if (arguments.noReset) {
    return verified + "; the camera was not restarted";
  }
  progress.Begin("restart");
  const ReturningCamera returning(options.device, place);
  report["reset"] = session.Reset() ? "accepted" : "sent; the camera left before it answered";
  const ReturnedCamera camera = returning.Await(session.watch(), arguments.cameraSeconds, verified);
  camera.AddTo(report);
  CompareVersion(arguments, camera);
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

// Asks with what is known of the camera, and has it in ROM boot in the end.
RomSession Reach(const Options& options, const RecoverArguments& arguments, const BurnPlan& plan,
                 const std::optional<RunningCamera>& running, RomWatch& watch, Progress& progress,
                 Report& report) {
  const auto find = [&] {
    progress.Begin("find");
    RomSession session = RomSession::Open(watch, arguments.selection);
    progress.Complete();
    return session;
  };
  const auto ask = [&](const std::string& camera) {
    Confirm(options, DescribeLoss(plan, {camera, arguments.storage.name, arguments.request.path}));
  };
  if (running) {
    watch.trail().OnRunning();
    report["camera before"] = NameOf(running->device);
    report["version before"] =
        running->notRead.empty() ? Report(running->version) : Unread(running->notRead);
    ask(running->Words() + ",");
    SendIntoRomBoot(options, watch, *running);
    return find();
  }
  RomSession session = find();
  ask(CameraWords(session) + ", whose firmware version cannot be told,");
  return session;
}

int Recover(const Options& options, const RecoverArguments& arguments, RomWatch& watch,
            Report& report) {
  const BurnPlan plan = PlanOf(arguments.request);
  const Report updater = UpdaterRows(arguments);
  static_cast<void>(SelectCdb(arguments.storage));
  if (arguments.dryRun) {
    ShowCommands(arguments, updater, plan, report);
    return kDone;
  }
  watch.trail().PlanWrites(arguments.storage.name, plan);
  Progress progress(options.json);
  const std::optional<RunningCamera> running =
      arguments.enter ? FindRunning(options, watch) : std::nullopt;
  RomSession found = Reach(options, arguments, plan, running, watch, progress, report);
  ReportVolume(found, report);
  const RomSession session = Prepare(std::move(found), arguments, progress, report);
  session.Select(arguments.storage);
  report["storage"] = arguments.storage.name;
  WritePlan(session, plan, progress, report, [&] { Burn(session, arguments.request); });
  Verify(session, plan, progress, report);
  const std::string outcome =
      Restart(options, arguments, session, running ? running->device.place : "", progress, report);
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
  AddUpdaterWait(command, arguments->updaterSeconds);
  command->add_flag("--enter", arguments->enter, "Send a running camera into ROM boot first");
  command->add_flag("--no-reset", arguments->noReset, "Leave the camera in ROM boot");
  AddCameraWait(command, arguments->cameraSeconds);
  command
      ->add_option("--expect-version", arguments->expectedVersion,
                   "Firmware version that the camera must show then, such as 010203040506")
      ->transform(ParseVersion);
  AddDryRun(command, arguments->dryRun);
}

}  // namespace zemctl
