#include "tools/zemctl/camera/opening_refusal.h"

namespace zemctl {
namespace {

constexpr auto kAccessDenied = static_cast<ZemResult>(0x80070005U);
constexpr auto kBusy = static_cast<ZemResult>(0x800700AAU);

}  // namespace

CallFailure OpeningRefused(const char* function, ZemResult result, const SystemDevice& camera) {
  ResultText text = Describe(result);
  if (result == kAccessDenied) {
    text.meaning = NameOf(camera) + " may not be opened by this user";
    text.advice = AdviceForPermission();
  } else if (result == kBusy) {
    text.meaning = NameOf(camera) + " is in use by another program";
    text.advice = AdviceForBusyCamera();
  }
  text.cameraState = "it was not opened, and nothing was sent";
  return {function, result, text};
}

}  // namespace zemctl
