// zemctl update firmware, calibration, flash and handle-less
#include <CLI/CLI.hpp>
#include <memory>
#include <utility>

#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/camera/rehearsal.h"
#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/updates/image_procedure.h"
#include "tools/zemctl/updates/image_update.h"
#include "tools/zemctl/updates/several_updates.h"

namespace zemctl {
namespace {

using Bytes = std::vector<unsigned char>;

// The updates that find their camera by themselves.
struct HandleLessWay {
  const char* name;
  const char* description;
  const ImageProcedure& procedure;
};
const HandleLessWay kHandleLessWays[] = {
    {"plain", "Send the image and poll until it is burned", kHandleLessPlain},
    {"ex", "The same for the other kind of image", kHandleLessEx},
    {"vision", "Send the image and look once, after ten seconds", kHandleLessVision},
};

struct UpdateArguments {
  std::string file;
  std::string chip;
  ImageParameters parameters;
  std::optional<std::uint32_t> verifyAt;
  std::optional<unsigned> waitSeconds;
  std::string expectedVersion;
  bool isForced = false;
  bool all = false;
  std::vector<unsigned> cameras;
  bool dryRun = false;
};

Bytes ReadImage(const ImageProcedure& procedure, const UpdateArguments& arguments) {
  const std::uint64_t size = SizeOfFile(arguments.file);
  if (const auto why = Unfit(procedure, size)) {
    throw ToolFailure(kBadFile, arguments.file + " " + *why, "Nothing was sent.");
  }
  if (arguments.verifyAt && *arguments.verifyAt + size > 0x100000000ULL) {
    throw UsageError("the image does not fit behind the address of --verify-at");
  }
  return ReadInputFile(arguments.file, size);
}

void ReportImage(const ImageUpdate& update, Report& report) {
  report["function"] = update.procedure->function;
  report["file"] = update.file;
  report["bytes"] = update.image.size();
  if (!update.expectedVersion.empty()) {
    report["version of the image"] = update.expectedVersion;
  }
}

void ReportDryRun(const ImageUpdate& update, Report& report) {
  const ImageProcedure& procedure = *update.procedure;
  const Bytes& image = update.image;
  const auto call = [&](const Session& session) {
    Observe(
        session, procedure, image.data(), static_cast<std::uint32_t>(image.size()),
        [](std::uint32_t, std::uint64_t) {}, 0, update.parameters);
  };
  const bool is517x = &procedure == &kUpdate517x;
  const auto dataTransfers = [](const std::vector<RehearsedTransfer>& transfers) {
    for (const RehearsedTransfer& transfer : transfers) {
      if (transfer.isSet && transfer.block.empty()) {
        return transfer;
      }
    }
    return RehearsedTransfer{};
  };
  const auto fast = Rehearse({is517x, true}, call);
  const RehearsedTransfer data = dataTransfers(fast);
  const RehearsedTransfer slow = dataTransfers(Rehearse({is517x, false}, call));
  report["padding"] =
      std::to_string(std::uint64_t{data.count} * data.length - image.size()) + " zero bytes";
  report["at full speed"] =
      std::to_string(slow.count) + " transfers of " + std::to_string(slow.length) + " bytes";
  report["dry run"] = true;
  ReportRehearsal(fast, report);
}

ImageUpdate UpdateOf(const ImageProcedure& procedure, const UpdateArguments& arguments) {
  ImageUpdate update;
  update.procedure = &procedure;
  update.file = arguments.file;
  update.image = ReadImage(procedure, arguments);
  update.parameters = arguments.parameters;
  update.isForced = arguments.isForced;
  update.verifyAt = arguments.verifyAt;
  update.waitSeconds = arguments.waitSeconds;
  update.expectedVersion = arguments.expectedVersion;
  if (update.expectedVersion.empty() && procedure.isFirmware) {
    update.expectedVersion = VersionOfImage(update.image);
  }
  return update;
}

std::string Question(const Session& session, const ImageUpdate& update) {
  const std::string version = VersionBefore(session);
  return "The camera " + NameOf(session.device()) + ", firmware version " +
         (version.empty() ? "not told" : version) + ": " + LossOf(update);
}

int Update(const Options& options, const UpdateArguments& arguments,
           const ImageProcedure& procedure, Report& report) {
  const ImageUpdate update = UpdateOf(procedure, arguments);
  ReportImage(update, report);
  if (arguments.dryRun) {
    ReportDryRun(update, report);
    return kDone;
  }
  if (arguments.all || !arguments.cameras.empty()) {
    return UpdateSeveral(options, ChosenCameras(options.device, arguments.cameras), update, report);
  }
  std::optional<Session> session(std::in_place, options.device, Use::kWriting);
  RequireUnit(*session, "vendor");
  if (!options.yes) {
    Confirm(options, Question(*session, update));
  }
  report["camera"] = NameOf(session->device());
  Progress progress(options.json);
  CarryOut(session, update, progress, report);
  return kDone;
}

int UpdateDefaultCamera(const Options& options, const UpdateArguments& arguments,
                        const ImageProcedure& procedure, Report& report) {
  if (options.device.isChosen()) {
    throw UsageError(
        "this family reaches the default camera only, the one of the ids in zem_setting.ini: no "
        "camera can be chosen");
  }
  return Update(options, arguments, procedure, report);
}

void AddVersionOptions(CLI::App* command, const std::shared_ptr<UpdateArguments>& arguments) {
  command
      ->add_option("--wait", arguments->waitSeconds,
                   "Seconds to wait for the camera to be restarted and to tell its new version")
      ->check(CLI::Range(3600));
  command
      ->add_option("--expect-version", arguments->expectedVersion,
                   "The version that it should tell then, six bytes in hexadecimal")
      ->transform(ParseVersion);
}

}  // namespace

void AddUpdateCommands(Program& program) {
  const auto arguments = std::make_shared<UpdateArguments>();
  CLI::App* const update = program.app()
                               .add_subcommand("update", "Burn an image into the running camera")
                               ->require_subcommand(1);
  update->fallthrough();
  const auto addImage = [arguments](CLI::App* command) {
    command->add_option("file", arguments->file, "The image")->required();
    command->add_option("--verify-at", arguments->verifyAt,
                        "Read the flash back from this address and compare it with the image");
    command->add_flag("--dry-run", arguments->dryRun, "Show what would be sent, without a camera");
  };
  const auto add = [&](const char* name, const char* description, auto procedureOf) {
    CLI::App* const command =
        program.AddCommand(update, name, description,
                           [arguments, procedureOf](const Options& options, Report& report) {
                             return Update(options, *arguments, procedureOf(*arguments), report);
                           },
                           {.yes = true});
    addImage(command);
    auto* const all =
        command->add_flag("--all", arguments->all, "Update all cameras that fit, side by side");
    command
        ->add_option("--cameras", arguments->cameras,
                     "Those of them at these positions, such as 0,2")
        ->delimiter(',')
        ->excludes(all);
    return command;
  };
  CLI::App* const firmware = add(
      "firmware", "Update the firmware", [](const UpdateArguments& given) -> const auto& {
        return given.chip == "516x" ? kUpdate516x : kUpdate517x;
      });
  firmware->add_option("--chip", arguments->chip, "Chip series: 516x or 517x")
      ->required()
      ->check(CLI::IsMember({"516x", "517x"}));
  firmware->add_option("--param", arguments->parameters.param3, "Byte 3 of the burn order (516x)");
  firmware->add_flag("--force", arguments->isForced,
                     "Also when the camera says that it is of the other series");
  AddVersionOptions(firmware, arguments);
  add(
      "calibration", "Write the calibration data",
      [](const UpdateArguments&) -> const auto& { return kUpdateCalibration; });
  CLI::App* const flash = add(
      "flash", "Write an area of the flash",
      [](const UpdateArguments&) -> const auto& { return kUpdateFlash; });
  flash->add_option("--param2", arguments->parameters.param2, "Byte 2 of announcement and order")
      ->required();
  flash->add_option("--param3", arguments->parameters.param3, "Byte 3 of announcement and order")
      ->required();

  CLI::App* const handleLess =
      update
          ->add_subcommand("handle-less",
                           "Update the firmware of the default camera, which the library finds")
          ->require_subcommand(1);
  handleLess->fallthrough();
  for (const HandleLessWay& way : kHandleLessWays) {
    CLI::App* const command =
        program.AddCommand(handleLess, way.name, way.description,
                           [arguments, &way](const Options& options, Report& report) {
                             return UpdateDefaultCamera(options, *arguments, way.procedure, report);
                           },
                           {.selection = false, .yes = true});
    addImage(command);
    AddVersionOptions(command, arguments);
    if (&way.procedure == &kHandleLessVision) {
      command->add_option("--param", arguments->parameters.param2,
                          "Byte 2 of announcement and order");
    }
  }
}

}  // namespace zemctl
