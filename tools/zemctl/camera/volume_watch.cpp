#include "tools/zemctl/camera/volume_watch.h"

#include <algorithm>
#include <utility>

namespace zemctl {
namespace {

// What a request gets that is not sent any more (ERROR_OPERATION_ABORTED): the library does not try
// it again.
constexpr std::uint32_t kNotSent = 995;

// What stands for a SCSI status (ERROR_IO_DEVICE): the library looks at the system's error only,
// and would go on.
constexpr std::uint32_t kRefused = 1117;

// How long a wait goes on before it is looked whether it still makes sense.
constexpr std::uint32_t kLongestPauseMilliseconds = 50;

}  // namespace

std::optional<std::string> VolumeWatch::DriveOf(std::wstring_view path) {
  constexpr std::wstring_view kPrefix = L"\\\\.\\";
  if (path.size() != kPrefix.size() + 2 || !path.starts_with(kPrefix) || path.back() != L':') {
    return std::nullopt;
  }
  const wchar_t letter = path[kPrefix.size()];
  if (letter >= L'a' && letter <= L'z') {
    return std::string(1, static_cast<char>(letter - L'a' + L'A')) + ":";
  }
  if (letter >= L'A' && letter <= L'Z') {
    return std::string(1, static_cast<char>(letter)) + ":";
  }
  return std::nullopt;
}

void VolumeWatch::Opened(const void* handle, const std::string& drive) {
  drives_[handle] = drive;
  record_.ForgetSilence();
}

std::uint32_t VolumeWatch::Control(const void* handle, VolumeRequest& request,
                                   const std::function<std::uint32_t()>& send) {
  if (!record_.MaySend()) {
    return kNotSent;
  }
  ScsiCommand command = request.Describe();
  command.drive = drives_.at(handle);
  const std::uint64_t began = record_.Now();
  const std::uint32_t error = send();
  command.error = error;
  if (error == 0) {
    request.Collect(command);
  }
  const std::uint8_t status = command.status;
  record_.Add(std::move(command), began);
  return status != 0 ? kRefused : error;
}

std::uint32_t VolumeWatch::Control(const void* handle, VolumeRequest& request,
                                   VolumeSource& source) {
  return Control(handle, request, [&] {
    ScsiCommand command = request.Describe();
    command.drive = drives_.at(handle);
    source.Execute(command);
    if (command.error == 0) {
      request.Answer(command);
    }
    return command.error;
  });
}

void VolumeWatch::Sleep(std::uint32_t milliseconds,
                        const std::function<void(std::uint32_t)>& pause) const {
  while (milliseconds > 0 && record_.isOpen()) {
    const std::uint32_t some = std::min(milliseconds, kLongestPauseMilliseconds);
    pause(some);
    milliseconds -= some;
  }
}

}  // namespace zemctl
