// Win32 errors in HRESULT form, as the platform's class driver reports them.
#pragma once

#include "platform/com.h"

namespace zem::simulator {

inline constexpr auto kNoAccessResult = static_cast<HRESULT>(0x800703E6U);
inline constexpr auto kInvalidParameterResult = static_cast<HRESULT>(0x80070057U);
inline constexpr auto kMoreDataResult = static_cast<HRESULT>(0x800700EAU);
inline constexpr auto kGenFailureResult = static_cast<HRESULT>(0x8007001FU);
inline constexpr auto kTimedOutResult = static_cast<HRESULT>(0x80070079U);
inline constexpr auto kNotConnectedResult = static_cast<HRESULT>(0x8007048FU);
inline constexpr auto kNotFoundResult = static_cast<HRESULT>(0x80070490U);
inline constexpr auto kSetNotFoundResult = static_cast<HRESULT>(0x80070492U);

}  // namespace zem::simulator
