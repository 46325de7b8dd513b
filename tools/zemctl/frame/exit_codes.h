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
};

}  // namespace zemctl
