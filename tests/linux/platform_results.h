// Failures of the Linux platform, as callers see them.
#pragma once

#include "include/ZemUVCExtApi.h"

namespace zem::testing {

inline constexpr auto kNotImplementedResult = static_cast<ZemResult>(0x80004001U);
inline constexpr auto kNoInterfaceResult = static_cast<ZemResult>(0x80004002U);
inline constexpr auto kPointerResult = static_cast<ZemResult>(0x80004003U);
inline constexpr auto kInvalidFunctionResult = static_cast<ZemResult>(0x80070001U);
inline constexpr auto kAccessDeniedResult = static_cast<ZemResult>(0x80070005U);
inline constexpr auto kGeneralFailureResult = static_cast<ZemResult>(0x8007001FU);
inline constexpr auto kOutOfMemoryResult = static_cast<ZemResult>(0x8007000EU);
inline constexpr auto kNotReadyResult = static_cast<ZemResult>(0x80070015U);
inline constexpr auto kInvalidParameterResult = static_cast<ZemResult>(0x80070057U);
inline constexpr auto kTimeoutResult = static_cast<ZemResult>(0x80070079U);
inline constexpr auto kBusyResult = static_cast<ZemResult>(0x800700AAU);
inline constexpr auto kMoreDataResult = static_cast<ZemResult>(0x800700EAU);
inline constexpr auto kNoAccessResult = static_cast<ZemResult>(0x800703E6U);
inline constexpr auto kDeviceErrorResult = static_cast<ZemResult>(0x8007045DU);
inline constexpr auto kInvalidStateResult = static_cast<ZemResult>(0x8007139FU);
inline constexpr auto kNotConnectedResult = static_cast<ZemResult>(0x8007048FU);
inline constexpr auto kNotFoundResult = static_cast<ZemResult>(0x80070490U);
inline constexpr auto kSetNotFoundResult = static_cast<ZemResult>(0x80070492U);

}  // namespace zem::testing
