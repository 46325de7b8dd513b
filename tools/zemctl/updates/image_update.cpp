#include "tools/zemctl/updates/image_update.h"

#include <array>

#include "simulator/firmware_image.h"
#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/camera/restart_wait.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/updates/camera_memory.h"
#include "tools/zemctl/updates/image_run.h"
#include "tools/zemctl/updates/update_outcome.h"

namespace zemctl {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr Progress::Share kVerify = {90, 100};

ToolFailure NothingSent(const ToolFailure& failure) {
  return {failure.exitCode(), failure.what(), failure.advice(),
          "nothing was sent, it keeps what it had"};
}

CallFailure NothingSent(const CallFailure& failure) {
  ResultText text = failure.text();
  text.cameraState = "nothing was sent, it keeps what it had";
  return {failure.function(), failure.result(), text};
}

// "517x", from the first two bytes of the device information; empty when they are of no series that
// can be updated, or there is none.
std::string SeriesOf(const Session& session) {
  std::array<unsigned char, 8> information = {};
  try {
    session.Call("ZEMAPI_GetDeviceInfo",
                 [&](void* device) { return ZEMAPI_GetDeviceInfo(device, information.data()); });
  } catch (const CallFailure& failure) {
    const std::vector<Transfer>& transfers = session.record().transfers();
    if (!transfers.empty() && IsUnknownControl(transfers.back().result)) {
      return "";
    }
    throw NothingSent(failure);
  }
  constexpr unsigned char kFamily = 0x51;
  const unsigned series = information[1] >> 4;
  if (information[0] != kFamily || (series != 6 && series != 7)) {
    return "";
  }
  return "51" + std::to_string(series) + "x";
}

void CheckSeries(const Session& session, const ImageUpdate& update, Report& report) {
  const std::string wanted = update.procedure->series;
  if (wanted.empty()) {
    return;
  }
  const std::string told = SeriesOf(session);
  report["chip"] = told.empty() ? Report() : Report(told);
  report["forced"] = update.isForced;
  if (!told.empty() && told != wanted && !update.isForced) {
    throw NothingSent(ToolFailure(
        kUsageError, "--chip says " + wanted + ", and the camera says that it is a " + told,
        "Give --chip " + told + " and an image for it; --force sends this one all the same."));
  }
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

// What is known of a burn that the camera reports done: what it says itself, and what was looked
// at.
struct Findings {
  std::string reported = "the camera reports the burn done";
  std::string proof;               // empty when there is none
  std::optional<Failure> failure;  // to look

  void AddReported(const std::string& more) { reported += "; " + more; }
};

// The camera's judgement of its firmware.
void VerifyCheckSum(const Session& session, Findings& findings) {
  try {
    session.Call("ZEMAPI_GetCheckSumResult",
                 [](void* device) { return ZEMAPI_GetCheckSumResult(device); });
    findings.AddReported("its firmware check sum is right");
  } catch (const CallFailure& failure) {
    if (failure.text().exitCode == kTransferFailed) {
      findings.AddReported(std::string("its firmware check sum was not read: ") + failure.what());
      findings.failure = failure.failure();
      findings.failure->cameraState = "it reports the burn done; only its check sum is not known";
    } else if (failure.result() == ZEM_E_DEVICE_REFUSED) {
      throw ToolFailure(
          kNotVerified, "the camera says that the check sum of its firmware is wrong",
          "Leave the camera powered and run this command once more before it restarts, "
          "with an image for this camera.");
    } else {
      findings.AddReported("it does not tell a check sum");
    }
  }
}

void VerifyReadBack(const Session& session, std::uint32_t address, const Bytes& image,
                    Progress& progress, Findings& findings) {
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
  findings.proof =
      std::to_string(size) + " bytes read back from " + HexNumber(address, 6) + " are equal";
}

// As it starts up with what was burned.
void AwaitRestart(const SystemDevice& device, const ImageUpdate& update, const std::string& before,
                  Progress& progress, Report& report) {
  progress.Begin("restart");
  progress.Say("Restart " + NameOf(device) + " now: unplug it and plug it in again.");
  const std::string version = WaitForRestart(device, before, *update.waitSeconds);
  report["version after"] = version;
  report["version as expected"] =
      update.expectedVersion.empty() ? Report() : Report(version == update.expectedVersion);
  if (!update.expectedVersion.empty() && version != update.expectedVersion) {
    throw PartialFailure(
        {kNotVerified,
         "the camera came back with version " + version + " instead of " + update.expectedVersion,
         "Check that the image is the one for this camera.", "it runs version " + version, "", "",
         ""});
  }
}

}  // namespace

std::string VersionOfImage(const Bytes& image) {
  // An image for the simulated camera does; the form of those of real cameras is not ours to read.
  const auto told = zem::simulator::ReadFirmwareImage(image);
  return told ? HexText(told->version) : "";
}

std::string VersionBefore(const Session& session) {
  try {
    return ReadVersion(session);
  } catch (const CallFailure& failure) {
    if (failure.text().exitCode == kTransferFailed) {
      throw NothingSent(failure);
    }
    return "";
  }
}

std::string LossOf(const ImageUpdate& update) {
  const std::string version =
      update.expectedVersion.empty() ? "" : ", version " + update.expectedVersion;
  return std::string("its ") + update.procedure->what + " will be overwritten with " + update.file +
         " (" + std::to_string(update.image.size()) + " bytes" + version + ")";
}

void CarryOut(std::optional<Session>& session, const ImageUpdate& update, Progress& progress,
              Report& report) {
  const ImageProcedure& procedure = *update.procedure;
  std::string before;
  if (procedure.isFirmware) {
    before = VersionBefore(*session);
    report["version before"] = before.empty() ? Report() : Report(before);
    CheckSeries(*session, update, report);
  }

  ImageRun run(procedure, update.image, update.parameters, progress);
  const CallOutcome outcome = run.Run(*session);
  CheckOutcome(procedure, outcome, run.image(), *session);

  progress.Begin("verify", kVerify);
  Findings findings;
  if (procedure.isFirmware) {
    VerifyCheckSum(*session, findings);
  }
  if (update.verifyAt) {
    VerifyReadBack(*session, *update.verifyAt, update.image, progress, findings);
  }
  report["seen burning"] = run.image().seenBurning();
  report["reported"] = findings.reported;
  report["verified"] = !findings.proof.empty();
  report["proof"] = !findings.proof.empty() ? findings.proof
                    : run.image().seenBurning()
                        ? "none: not read back (--verify-at ADDRESS does)"
                        : "none: not read back (--verify-at ADDRESS does), and the camera was not "
                          "seen burning, as if it had never been told to";
  if (findings.failure) {
    throw PartialFailure(*findings.failure);
  }
  if (update.waitSeconds) {
    const SystemDevice device = session->device();
    session.reset();
    AwaitRestart(device, update, before, progress, report);
  } else if (procedure.isFirmware) {
    report["next"] = "restart the camera; \"zemctl info\" then shows the new version";
  }
  progress.Complete();
}

}  // namespace zemctl
