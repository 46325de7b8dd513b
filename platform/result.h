// The library's own result codes under the names used inside it.
#pragma once

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

inline constexpr HRESULT kRefused = ZEM_E_REFUSED;
inline constexpr HRESULT kDeviceRefused = ZEM_E_DEVICE_REFUSED;
inline constexpr HRESULT kBufferTooSmall = ZEM_E_BUFFER_TOO_SMALL;
inline constexpr HRESULT kNoDevice = ZEM_E_NO_DEVICE;
inline constexpr HRESULT kFail = ZEM_E_FAIL;

// No failure: the device lacks the extension unit.
inline constexpr HRESULT kUnitAbsent = 1;

}  // namespace zem
