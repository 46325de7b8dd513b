#include "tools/zemctl/updates/update_outcome.h"

namespace zemctl {
namespace {

constexpr std::uint8_t kIdle = 0x00;
constexpr std::uint8_t kBurnFailed = 0x82;

constexpr const char* kRepeat = "run this command once more";
constexpr const char* kRepeatAttached =
    "check that the camera is attached (zemctl list), then run this command once more";
constexpr const char* kRepeatAtOnce =
    "leave the camera powered and run this command once more before it restarts";
constexpr const char* kLookAgain =
    "leave the camera powered; look with \"zemctl xu get vendor 5 8\" until byte 0 is 00 (done) or "
    "82 (failed)";

CameraState AfterBurnOrder(const ImageTransfers& image, std::optional<std::uint8_t> status) {
  if (!image.complete()) {
    return {"part of the image was lost, and the camera was told to burn what it got",
            kRepeatAtOnce};
  }
  if (!status) {
    return {"the camera was burning and no longer answers: the area may be half written",
            kRepeatAttached};
  }
  switch (*status) {
    case kIdle:
      return {"the camera has come to its end since: the image is burned",
              "check with \"zemctl info\" after a restart of the camera"};
    case kBurnFailed:
      return {"the burn failed: the area may be erased or half written", kRepeatAtOnce};
    default:
      return {"the camera is still burning", kLookAgain};
  }
}

CameraState BeforeTheImage(std::optional<std::uint8_t> status) {
  if (!status) {
    return {"the camera does not answer; no burn was seen to begin", kRepeatAttached};
  }
  switch (*status) {
    case kIdle:
      return {"the camera was not idle when the image was announced, and is now; nothing was sent",
              kRepeat};
    case kBurnFailed:
      return {"the camera reports a failed burn, this one or an earlier one: an area may be erased",
              kRepeatAtOnce};
    default:
      return {"the camera is busy or does not take this kind of image; nothing was sent",
              "wait until it is done with what it does, then run this command once more"};
  }
}

}  // namespace

std::optional<CameraState> StateAfter(ZemResult result, const ImageTransfers& image, bool hasLoss,
                                      std::optional<std::uint8_t> status) {
  if (result >= 0) {
    return image.complete() && !hasLoss ? std::nullopt
                                        : std::optional(AfterBurnOrder(image, status));
  }
  if (result == ZEM_E_DEVICE_REFUSED) {
    return image.begun() || image.ordered() ? AfterBurnOrder(image, status)
                                            : BeforeTheImage(status);
  }
  // Neither a failed announcement nor a failed order leaves anything behind, and the others refuse
  // before they send.
  return CameraState{"no burn order went through: the camera keeps what it had",
                     result == ZEM_E_NO_DEVICE ? kRepeatAttached : kRepeat};
}

CameraState StateWhenStopped(const ImageTransfers& image) {
  if (!image.ordered()) {
    return {"no burn order was given: the camera keeps what it had", kRepeat};
  }
  return {"the camera was told to burn and goes on by itself", kLookAgain};
}

}  // namespace zemctl
