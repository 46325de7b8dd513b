// zemctl update firmware, update calibration, update flash
#include <CLI/CLI.hpp>
#include <array>
#include <memory>

#include "tools/zemctl/camera/camera_wait.h"
#include "tools/zemctl/camera/rehearsal.h"
#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/confirm.h"
#include "tools/zemctl/frame/files.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/updates/camera_memory.h"
#include "tools/zemctl/updates/image_procedure.h"
#include "tools/zemctl/updates/image_run.h"
#include "tools/zemctl/updates/update_outcome.h"

namespace zemctl {
namespace {

constexpr Progress::Share kVerify = {90, 100};

struct UpdateArguments {
  std::string file;
  std::string chip;
  ImageParameters parameters;
  std::optional<std::uint32_t> verifyAt;
  bool dryRun = false;
};

using Bytes = std::vector<unsigned char>;

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

void ReportImage(const ImageProcedure& procedure, const UpdateArguments& arguments,
                 const Bytes& image, Report& report) {
  report["function"] = procedure.function;
  report["file"] = arguments.file;
  report["bytes"] = image.size();
}

void ReportDryRun(const ImageProcedure& procedure, const UpdateArguments& arguments,
                  const Bytes& image, Report& report) {
  const auto call = [&](const Session& session) {
    session.Observe(procedure.function, [&](void* device) {
      return procedure.run(
          device, image.data(), static_cast<std::uint32_t>(image.size()),
          [](std::uint32_t, std::uint64_t) {}, 0, arguments.parameters);
    });
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
  report["without the 512-byte control"] =
      std::to_string(slow.count) + " transfers of " + std::to_string(slow.length) + " bytes";
  report["dry run"] = true;
  ReportRehearsal(fast, report);
}

std::optional<std::uint8_t> ReadTransferStatus(const Session& session) {
  std::array<unsigned char, 8> status = {};
  ZemULong moved = 0;
  constexpr unsigned short kStatusSelector = 5;
  const CallOutcome read = session.Observe("ZEMAPI_ZemExtGet", [&](void* device) {
    return ZEMAPI_ZemExtGet(device, kStatusSelector, status.data(),
                            static_cast<ZemULong>(status.size()), &moved);
  });
  return read.result >= 0 && !read.loss && moved > 0 ? std::optional(status[0]) : std::nullopt;
}

void CheckOutcome(const ImageProcedure& procedure, const CallOutcome& outcome,
                  const ImageTransfers& image, const Session& session) {
  if (session.record().wasStopped()) {
    const CameraState state = StateWhenStopped(image);
    throw Stopped(state.state, state.next + ".");
  }
  const bool wentWell = outcome.result >= 0 && image.complete() && !outcome.loss;
  const auto state = StateAfter(outcome.result, image, outcome.loss.has_value(),
                                wentWell ? std::nullopt : ReadTransferStatus(session));
  if (!state) {
    return;
  }
  ResultText text = Describe(outcome.result);
  if (outcome.result >= 0 && !image.complete()) {
    text.meaning = "the image could not be sent in full";
    text.exitCode = kTransferFailed;
  } else if (outcome.loss && text.exitCode != kTransferFailed) {
    text = DescribeLoss(outcome);
  }
  text.cameraState = state->state;
  text.advice = state->next + ".";
  throw CallFailure(procedure.function, outcome.result, text);
}

// Nothing has been sent yet: a camera that loses transfers now is not burned.
std::string VersionBefore(const Session& session) {
  try {
    return ReadVersion(session);
  } catch (const CallFailure& failure) {
    if (failure.text().exitCode == kTransferFailed) {
      ResultText text = failure.text();
      text.cameraState = "nothing was sent, it keeps what it had";
      throw CallFailure(failure.function(), failure.result(), text);
    }
    return "not told";
  }
}

// What is known of a burn that the camera reports done.
struct Proof {
  std::string words = "the camera reports the burn done";
  bool isProven = false;
  std::optional<Failure> failure;  // to look at it

  void Add(const std::string& more) { words += "; " + more; }
};

// The camera's judgement of its firmware.
void VerifyCheckSum(const Session& session, Proof& proof) {
  try {
    session.Call("ZEMAPI_GetCheckSumResult",
                 [](void* device) { return ZEMAPI_GetCheckSumResult(device); });
    proof.Add("its firmware check sum is right");
  } catch (const CallFailure& failure) {
    if (failure.text().exitCode == kTransferFailed) {
      proof.Add(std::string("its firmware check sum was not read: ") + failure.what());
      proof.failure = failure.failure();
      proof.failure->cameraState = "it reports the burn done; only its check sum is not known";
    } else if (failure.result() == ZEM_E_DEVICE_REFUSED) {
      throw ToolFailure(
          kNotVerified, "the camera says that the check sum of its firmware is wrong",
          "Leave the camera powered and run this command once more before it restarts, "
          "with an image for this camera.");
    } else {
      proof.Add("it does not tell a check sum");
    }
  }
}

void VerifyReadBack(const Session& session, std::uint32_t address, const Bytes& image,
                    Progress& progress, Proof& proof) {
  const auto size = static_cast<std::uint32_t>(image.size());
  Bytes flash;
  try {
    flash = ReadFlash(session, address, size, progress);
  } catch (const CallFailure& failure) {
    ResultText text = failure.text();
    text.cameraState = "it reports the burn done; only reading back failed";
    text.advice = "compare with \"zemctl flash read " + HexNumber(address, 6) + " " +
                  std::to_string(size) + " FILE\".";
    throw CallFailure(failure.function(), failure.result(), text);
  }
  if (const auto at = FirstDifference(image, flash)) {
    throw ToolFailure(
        kNotVerified,
        "the flash differs from the image, first at " + HexNumber(address + std::uint64_t{*at}, 6),
        "Check the address of --verify-at. If it is right, leave the camera powered "
        "and run this command once more before it restarts.");
  }
  proof.Add(std::to_string(size) + " bytes read back from " + HexNumber(address, 6) + " are equal");
  proof.isProven = true;
}

Proof Verify(const Session& session, const ImageProcedure& procedure,
             const UpdateArguments& arguments, const Bytes& image, bool seenBurning,
             Progress& progress) {
  Proof proof;
  proof.isProven = seenBurning;
  if (procedure.isFirmware) {
    VerifyCheckSum(session, proof);
  }
  if (arguments.verifyAt) {
    VerifyReadBack(session, *arguments.verifyAt, image, progress, proof);
  } else {
    proof.Add("not read back (--verify-at ADDRESS does)");
  }
  return proof;
}

int Update(const Options& options, const UpdateArguments& arguments,
           const ImageProcedure& procedure, Report& report) {
  const Bytes image = ReadImage(procedure, arguments);
  ReportImage(procedure, arguments, image, report);
  if (arguments.dryRun) {
    ReportDryRun(procedure, arguments, image, report);
    return kDone;
  }
  const Session session(options.device, Use::kWriting);
  RequireUnit(session, "vendor");
  Confirm(options, std::string("The camera's ") + procedure.what + " will be overwritten with " +
                       arguments.file + " (" + std::to_string(image.size()) + " bytes)");
  if (procedure.isFirmware) {
    report["version before"] = VersionBefore(session);
  }

  Progress progress(options.json);
  ImageRun run(procedure, image, arguments.parameters, progress);
  const CallOutcome outcome = run.Run(session);
  CheckOutcome(procedure, outcome, run.image(), session);

  progress.Begin("verify", kVerify);
  const Proof proof =
      Verify(session, procedure, arguments, image, run.image().seenBurning(), progress);
  progress.Complete();
  if (proof.isProven) {
    report["burned"] = true;
  } else {
    report["burned"] =
        "reported, not proven: the camera was not seen burning, as if it had never been told to";
  }
  report["verified"] = proof.words;
  if (procedure.isFirmware) {
    report["next"] = "restart the camera; \"zemctl info\" then shows the new version";
  }
  if (proof.failure) {
    throw PartialFailure(*proof.failure);
  }
  return kDone;
}

}  // namespace

void AddUpdateCommands(Program& program) {
  const auto arguments = std::make_shared<UpdateArguments>();
  CLI::App* const update = program.app()
                               .add_subcommand("update", "Burn an image into the running camera")
                               ->require_subcommand(1);
  update->fallthrough();
  const auto add = [&](const char* name, const char* description, auto procedureOf) {
    CLI::App* const command =
        program.AddCommand(update, name, description,
                           [arguments, procedureOf](const Options& options, Report& report) {
                             return Update(options, *arguments, procedureOf(*arguments), report);
                           },
                           {.yes = true});
    command->add_option("file", arguments->file, "The image")->required();
    command->add_option("--verify-at", arguments->verifyAt,
                        "Read the flash back from this address and compare it with the image");
    command->add_flag("--dry-run", arguments->dryRun, "Show what would be sent, without a camera");
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
}

}  // namespace zemctl
