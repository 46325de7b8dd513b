#include "tools/zemctl/camera/session.h"

#include <algorithm>
#include <utility>

#include "include/ZemUVCExtApi.h"
#include "platform/platform.h"
#include "simulator/system_results.h"
#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/camera/judgement.h"
#include "tools/zemctl/camera/long_wait.h"
#include "tools/zemctl/camera/only_device.h"
#include "tools/zemctl/camera/opening_refusal.h"
#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/required_unit.h"
#include "tools/zemctl/camera/restart_wait.h"
#include "tools/zemctl/camera/trace.h"
#include "tools/zemctl/camera/waiting.h"
#include "tools/zemctl/camera/watched_camera.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/interrupt.h"

namespace zemctl {
namespace {

std::string NextAfter(const Transfer& loss) {
  if (MeansGone(loss.result)) {
    return "Check that the camera is attached (zemctl list), then run this command once more.";
  }
  if (IsUnknownControl(loss.result)) {
    return "Do without it; \"zemctl info\" tells which units the camera has.";
  }
  if (loss.result == zem::simulator::kInvalidParameterResult) {
    return "Check the values: the camera does not take one of them.";
  }
  return "Run this command once more; if it fails again, check the values, then the cable.";
}

// In step with the trace, so that a replay finds a camera gone when the recorded run did.
std::uint64_t TransferClock() {
  if (const auto replay = ThreadReplay()) {
    return replay->milliseconds();
  }
  const auto trace = ThreadTrace();
  return trace ? trace->milliseconds() : SteadyClock();
}

// A lost transfer counts more than any result but one that says that a transfer failed.
void Judge(const char* function, const CallOutcome& outcome, const Session::Words& words) {
  std::optional<ResultText> text = words ? words(outcome.result) : std::nullopt;
  const bool isFromWords = text.has_value();
  if (!text && outcome.result < 0) {
    text = Describe(outcome.result);
  }
  if (outcome.absentUnit && (text || outcome.loss)) {
    text = DescribeAbsentUnit(*outcome.absentUnit, Describe(outcome.result).name);
  } else if (outcome.loss) {
    if (text && text->exitCode == kTransferFailed) {
      text->cameraState = NameOf(*outcome.loss) + ": " + FailureOf(*outcome.loss);
      if (!isFromWords) {
        text->advice = NextAfter(*outcome.loss);
      }
    } else {
      text = DescribeLoss(outcome);
    }
  }
  if (text) {
    throw CallFailure(function, outcome.result, *text);
  }
}

// The library's export that finds a camera in the same way.
const char* OpeningFunction(const DeviceSelection& selection) {
  if (!selection.name.empty()) {
    return "ZEMAPI_OpenDeviceBySourceFilter";
  }
  if (!selection.displayName.empty()) {
    return "ZEMAPI_OpenDeviceByPath";
  }
  if (!selection.devicePath.empty()) {
    return "ZEMAPI_OpenDeviceByDevPath";
  }
  return selection.vendorId || selection.productId ? "ZEMAPI_OpenDeviceEx" : "ZEMAPI_OpenDevice";
}

void RefuseDoubt(const DeviceSelection& selection) {
  const std::vector<SystemDevice> candidates = ListMatches(selection);
  if (selection.index || candidates.size() < 2) {
    return;
  }
  std::string text =
      std::to_string(candidates.size()) + " cameras fit, and none of them was chosen";
  for (std::size_t index = 0; index < candidates.size(); ++index) {
    text += "\n  --index " + std::to_string(index) + ": " + NameOf(candidates[index]);
  }
  throw ToolFailure(kNoCamera, text,
                    "Nothing was sent. Choose with --index, --name, --path or --device-path.");
}

FoundCamera Find(const DeviceSelection& selection, Use use) {
  if (use == Use::kWriting) {
    RefuseDoubt(selection);
  }
  FoundCamera camera;
  const ZemResult result = FindCamera(selection, camera);
  if (result == ZEM_E_FAIL) {
    throw NoCameraMatches(selection);
  }
  if (result < 0) {
    throw OpeningRefused(OpeningFunction(selection), result, camera.device);
  }
  return camera;
}

}  // namespace

CallFailure NoCameraMatches(const DeviceSelection& selection) {
  return {OpeningFunction(selection),
          ZEM_E_FAIL,
          {"ZEM_E_FAIL", "no camera matches",
           "Run \"zemctl list\" to see what is attached; choose with --index, --vid and --pid, "
           "--name, --path or --device-path.",
           kNoCamera}};
}

ComThread::ComThread() { zem::platform::InitializeCom(); }

ComThread::~ComThread() { zem::platform::UninitializeCom(); }

Session::Session(const DeviceSelection& selection, Use use) : Session(Find(selection, use)) {
  if (!selection.isNamed()) {
    return;
  }
  // A device that was named may be any.
  const GUID vendorUnit = ZEM_VENDOR_XU;
  const ZemResult present = ZEMAPI_UvcCheckXuGuid(handle_, &vendorUnit);
  Check("ZEMAPI_UvcCheckXuGuid", present);
  if (present != ZEM_OK) {
    throw CallFailure(
        OpeningFunction(selection), 1,
        {"device lacks the vendor unit", "the device has no vendor extension unit",
         "Choose another device; \"zemctl list\" tells which ones have the unit.", kUnitAbsent});
  }
}

Session::Session(FoundCamera camera)
    : device_(std::move(camera.device)),
      record_(std::make_shared<TransferRecord>(TransferClock, StopRequested)),
      object_(Watch(std::move(camera.object), record_)) {
  // Closing gives one back, and opening this way takes none.
  zem::platform::InitializeCom();
  const ZemResult opened = ZEMAPI_OpenDeviceBySourceFilter(object_.get(), &handle_);
  if (opened < 0) {
    zem::platform::UninitializeCom();
    throw CallFailure("ZEMAPI_OpenDeviceBySourceFilter", opened);
  }
}

Session::~Session() { ZEMAPI_CloseDevice(&handle_); }

ZemResult Session::Call(const char* function, const Function& call, const Words& words) const {
  const CallOutcome outcome = Observe(function, call);
  RefuseStopped();
  Judge(function, outcome, words);
  return outcome.result;
}

ZemResult Session::CallOnObject(const char* function, const Function& call,
                                const Words& words) const {
  const CallOutcome outcome = Observe(function, call, object_.get());
  RefuseStopped();
  Judge(function, outcome, words);
  return outcome.result;
}

void Session::RefuseStopped() const {
  if (record_->wasStopped()) {
    throw Stopped(record_->Extent());
  }
}

CallOutcome Session::Observe(const char* function, const Function& call) const {
  return Observe(function, call, handle_);
}

bool Session::MayWait() const {
  if (record_->mustStop() || record_->isGone()) {
    return false;
  }
  if (device_.displayName.empty()) {
    return true;  // one that only takes notes
  }
  // All devices, also while the library finds just this one.
  const OnlyDevice all(nullptr);
  try {
    if (!FindAgain(device_)) {
      record_->NoteAbsence();
    }
  } catch (const std::exception&) {
    return true;  // the list is not to be had: the camera's own answer will tell
  }
  return !record_->isGone();
}

CallOutcome Session::ObserveAsDefault(const char* function, const Function& call) const {
  const OnlyDevice only(object_.get());
  return Observe(function, call);
}

CallOutcome Session::Observe(const char* function, const Function& call, void* device) const {
  record_->BeginCall();
  const LongWait wait([this] { return MayWait(); });
  const ZemResult result = call(device);
  const std::optional<Transfer> loss = FindLoss(function, record_->transfers());
  return {result, loss, FindAbsentUnit(loss)};
}

std::optional<std::string> Session::FindAbsentUnit(const std::optional<Transfer>& loss) const {
  const std::vector<Transfer>& transfers = record_->transfers();
  const auto last = std::find_if(transfers.rbegin(), transfers.rend(),
                                 [](const Transfer& transfer) { return transfer.hasFailed(); });
  if (last == transfers.rend()) {
    return std::nullopt;
  }
  const Transfer failed = loss.value_or(*last);
  const auto* const unit = std::find_if(
      kUnits.begin(), kUnits.end(), [&](const NamedUnit& each) { return each.id == failed.unit; });
  if (!IsUnknownControl(failed.result) || unit == kUnits.end() ||
      ZEMAPI_UvcCheckXuGuid(handle_, &unit->id) != 1) {
    return std::nullopt;
  }
  return unit->name;
}

ResultText DescribeLoss(const CallOutcome& outcome) {
  const std::string name = Describe(outcome.result).name;
  if (outcome.absentUnit) {
    return DescribeAbsentUnit(*outcome.absentUnit, name);
  }
  const Transfer& loss = *outcome.loss;
  if (loss.result == kStoppedResult) {
    return {name, "stopped by the user", "Run this command once more.", kInterrupted};
  }
  const std::string what = NameOf(loss) + " failed: " + FailureOf(loss);
  const std::string consequence = loss.isSet || !loss.isAddressed
                                      ? "what it should have done was not done"
                                      : "what it should have brought is not known";
  return {name, what + "; " + consequence, NextAfter(loss), kTransferFailed};
}

}  // namespace zemctl
