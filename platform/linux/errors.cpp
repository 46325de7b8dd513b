#include "platform/linux/errors.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>

namespace zem::platform {
namespace {

struct ErrnoRow {
  int error;
  std::uint32_t windows;
};

// A stalled request of the camera comes as the errno of the reason that it names.
constexpr ErrnoRow kErrnoRows[] = {
    {ENOENT, kNotFound},             // no such unit or control
    {EINVAL, kInvalidParameter},     // also: stalled, the value is none of the control's
    {EBADRQC, kInvalidFunction},     // the control is not read, or not written
    {ENOBUFS, kBadLength},           // a length that is not the control's
    {ENOTTY, kNotSupported},         // a request that the driver does not know
    {EBUSY, kBusy},                  // also: stalled, the camera is not ready
    {EILSEQ, kInvalidState},         // stalled, the camera is in the wrong state
    {EREMOTE, kNotReady},            // stalled, the camera's power mode is too low
    {ERANGE, kInvalidParameter},     // stalled, the value is out of range
    {EIO, kDeviceError},             // stalled, the camera knows no such unit, control or request
    {EPIPE, kGeneralFailure},        // stalled for another reason, or for none
    {ETIMEDOUT, kSemaphoreTimeout},  // no answer
    {ETIME, kSemaphoreTimeout},
    {EPROTO, kDeviceError},  // the transfer was disturbed
    {EOVERFLOW, kDeviceError},
    {ESHUTDOWN, kNotConnected},  // unplugged during a request
    {ENODEV, kNotConnected},     // unplugged
    {ENXIO, kNotConnected},
    {EACCES, kAccessDenied},  // no permission; a control that is automatic
    {EPERM, kAccessDenied},
    {EFAULT, kNoAccess},  // memory of the caller that is none
    {ENOMEM, kOutOfMemory},
    {EMFILE, kTooManyOpenFiles},
    {ENFILE, kTooManyOpenFiles},
};

struct ErrorText {
  std::uint32_t error;
  const wchar_t* text;
};

constexpr ErrorText kErrorTexts[] = {
    {kInvalidFunction, L"The device does not take this request."},
    {kFileNotFound, L"There is no such device."},
    {kTooManyOpenFiles, L"Too many files are open."},
    {kAccessDenied, L"Access is denied."},
    {kInvalidHandle, L"The handle is invalid."},
    {kOutOfMemory, L"There is not enough memory."},
    {kNotReady, L"The device is not ready."},
    {kBadLength, L"The length does not suit the request."},
    {kGeneralFailure, L"A device attached to the system is not functioning."},
    {kNotSupported, L"The request is not supported."},
    {kInvalidParameter, L"The parameter is incorrect."},
    {kSemaphoreTimeout, L"The device did not answer in time."},
    {kBusy, L"The device is in use."},
    {kMoreData, L"More data is available."},
    {kNoAccess, L"Invalid access to memory."},
    {kDeviceError, L"The request could not be carried out because of a device error."},
    {kNotConnected, L"The device is not connected."},
    {kNotFound, L"There is no such control."},
    {kSetNotFound, L"The device has no such unit."},
    {kRequestAborted, L"The request was aborted."},
    {kInvalidState, L"The device is not in the state for this request."},
};

}  // namespace

std::uint32_t ErrorOfErrno(int error) {
  const auto* const row = std::find_if(
      std::begin(kErrnoRows), std::end(kErrnoRows),
      [error](const ErrnoRow& candidate) { return candidate.error == std::abs(error); });
  return row != std::end(kErrnoRows) ? row->windows : kGeneralFailure;
}

const wchar_t* TextOfError(std::uint32_t error) {
  const auto* const row =
      std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts),
                   [error](const ErrorText& candidate) { return candidate.error == error; });
  return row != std::end(kErrorTexts) ? row->text : nullptr;
}

}  // namespace zem::platform
