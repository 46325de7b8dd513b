// zemctl's exit codes. Scripts depend on them: never renumber.
#pragma once

namespace zemctl {

enum ExitCode {
  kDone = 0,
  kInternalError = 1,
  kUsageError = 2,
  kNoCamera = 3,
  kLibraryRefused = 4,
  kCameraRefused = 5,
  kBufferTooSmall = 6,
  kTransferFailed = 7,
  kUnitAbsent = 8,
  kBadFile = 9,
  kNotVerified = 10,
  kCancelled = 11,
  kInterrupted = 12,
  kSomeFailed = 13,
};

// What a code means, in a few words.
constexpr const char* MeaningOf(ExitCode code) {
  switch (code) {
    case kDone:
      return "done";
    case kInternalError:
      return "unexpected error";
    case kUsageError:
      return "wrong command line";
    case kNoCamera:
      return "no camera matches";
    case kLibraryRefused:
      return "the library refused";
    case kCameraRefused:
      return "the camera refused the command";
    case kBufferTooSmall:
      return "a buffer is too small";
    case kTransferFailed:
      return "a transfer failed (camera gone, control unknown)";
    case kUnitAbsent:
      return "the camera lacks the extension unit";
    case kBadFile:
      return "a file is not what it should be";
    case kNotVerified:
      return "what was written is not what is there";
    case kCancelled:
      return "the question was not answered with yes";
    case kInterrupted:
      return "stopped by the user";
    case kSomeFailed:
      return "of several cameras at least one failed";
  }
  return "";
}

}  // namespace zemctl
