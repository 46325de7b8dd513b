#include "tools/zemctl/frame/results.h"

#include <array>
#include <cstdio>
#include <utility>

namespace zemctl {

std::string Hex(ZemResult result) {
  std::array<char, 16> text = {};
  std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(result));
  return text.data();
}

ResultText Describe(ZemResult result) {
  switch (result) {
    case ZEM_OK:
      return {"ZEM_OK", "done", "", kDone};
    case ZEM_E_REFUSED:
      return {"ZEM_E_REFUSED", "the request was refused",
              "Check the arguments; the camera may also have reported a failed check.",
              kLibraryRefused};
    case ZEM_E_DEVICE_REFUSED:
      return {"ZEM_E_DEVICE_REFUSED", "the camera refused the command",
              "Check that its firmware knows the command and accepts the arguments.",
              kCameraRefused};
    case ZEM_E_BUFFER_TOO_SMALL:
      return {"ZEM_E_BUFFER_TOO_SMALL", "the buffer is too small",
              "Ask again with a larger length.", kBufferTooSmall};
    case ZEM_E_NO_DEVICE:
      return {"ZEM_E_NO_DEVICE", "the command could not be written to the camera",
              "Check that the camera is still attached and has the vendor extension unit "
              "(zemctl xu check vendor).",
              kTransferFailed};
    case ZEM_E_FAIL:
      return {"ZEM_E_FAIL", "the library reports a failure",
              "Check the arguments, then run this command once more.", kLibraryRefused};
    default:
      break;
  }
  if (result > 0) {
    return {"positive result", "done", "", kDone};
  }
  return {"platform failure", "the platform reported a failure",
          "Check that the camera is still attached and has the unit and the control.",
          kTransferFailed};
}

CallFailure::CallFailure(const std::string& function, ZemResult result, ResultText text)
    : std::runtime_error(function + ": " + text.meaning + " (" + text.name + ", " + Hex(result) +
                         ")"),
      function_(function),
      result_(result),
      text_(std::move(text)) {}

Failure CallFailure::failure() const {
  return {text_.exitCode, text_.meaning, text_.advice, text_.cameraState,
          function_,      Hex(result_),  text_.name};
}

ToolFailure Stopped(const std::string& cameraState, const std::string& next) {
  return {kInterrupted, "stopped by the user", next, cameraState};
}

void Check(const char* function, ZemResult result) {
  if (result < 0) {
    throw CallFailure(function, result);
  }
}

}  // namespace zemctl
