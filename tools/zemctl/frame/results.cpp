#include "tools/zemctl/frame/results.h"

#include <array>
#include <cstdio>
#include <utility>

#include "include/ZemUVCResults.h"

namespace zemctl {
namespace {

// What the person at the terminal does about a result.
struct NextStep {
  ExitCode exitCode;
  const char* advice;
};

NextStep StepAfter(ZemResult result) {
  switch (result) {
    case ZEM_E_REFUSED:
      return {kLibraryRefused,
              "Check the arguments; the camera may also have reported a failed check."};
    case ZEM_E_DEVICE_REFUSED:
      return {kCameraRefused,
              "Check that its firmware knows the command and accepts the arguments."};
    case ZEM_E_BUFFER_TOO_SMALL:
      return {kBufferTooSmall, "Ask again with a larger length."};
    case ZEM_E_NO_DEVICE:
      return {kTransferFailed,
              "Check that the camera is still attached and has the vendor extension unit "
              "(zemctl xu check vendor)."};
    case ZEM_E_FAIL:
      return {kLibraryRefused, "Check the arguments, then run this command once more."};
    default:
      break;
  }
  if (result >= 0) {
    return {kDone, ""};
  }
  return {kTransferFailed,
          "Check that the camera is still attached and has the unit and the control."};
}

}  // namespace

std::string Hex(ZemResult result) {
  std::array<char, 16> text = {};
  std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(result));
  return text.data();
}

ResultText Describe(ZemResult result) {
  const NextStep step = StepAfter(result);
  return {ZemResultName(result), ZemResultText(result), step.advice, step.exitCode};
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
