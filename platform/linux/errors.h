// The kernel's errors as the errors of Windows that callers know. One table, in errors.cpp; it
// stands in docs/linux.md too.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem::platform {

// Errors of Windows that this platform gives.
inline constexpr std::uint32_t kInvalidFunction = 1;
inline constexpr std::uint32_t kFileNotFound = 2;
inline constexpr std::uint32_t kTooManyOpenFiles = 4;
inline constexpr std::uint32_t kAccessDenied = 5;
inline constexpr std::uint32_t kInvalidHandle = 6;
inline constexpr std::uint32_t kOutOfMemory = 14;
inline constexpr std::uint32_t kNotReady = 21;
inline constexpr std::uint32_t kBadLength = 24;
inline constexpr std::uint32_t kGeneralFailure = 31;
inline constexpr std::uint32_t kNotSupported = 50;
inline constexpr std::uint32_t kInvalidParameter = 87;
inline constexpr std::uint32_t kSemaphoreTimeout = 121;
inline constexpr std::uint32_t kBusy = 170;
inline constexpr std::uint32_t kMoreData = 234;
inline constexpr std::uint32_t kNoAccess = 998;
inline constexpr std::uint32_t kDeviceError = 1117;
inline constexpr std::uint32_t kNotConnected = 1167;
inline constexpr std::uint32_t kNotFound = 1168;
inline constexpr std::uint32_t kSetNotFound = 1170;
inline constexpr std::uint32_t kRequestAborted = 1235;
inline constexpr std::uint32_t kInvalidState = 5023;

// An error of Windows as the result of a COM call.
constexpr HRESULT ResultOfError(std::uint32_t error) {
  return static_cast<HRESULT>(0x80070000U | error);
}

// `error` is an errno value, positive or as negative as kernel.h returns it. An error that is not
// in the table counts as a general failure.
std::uint32_t ErrorOfErrno(int error);

inline HRESULT ResultOfErrno(int error) { return ResultOfError(ErrorOfErrno(error)); }

// What an error of the table means, in plain words; null for any other.
const wchar_t* TextOfError(std::uint32_t error);

}  // namespace zem::platform
