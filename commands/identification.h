// What the camera says of itself: firmware version and build date, check sum, device information,
// serial number of its sensor, version of its Skype unit.
//
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h. `filter` is the
// device; outputs must not be null and are written on success only, but for GetSensorSN's.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// Six version bytes.
HRESULT GetFWVersion(IBaseFilter* filter, std::uint8_t* version);

// The whole 8-byte reply to the version command; kRefused when the device refuses.
HRESULT GetFWVersionReply(IBaseFilter* filter, char* version);

// The day the firmware was built, such as "2021.Dec.15": eleven characters and a zero byte.
HRESULT GetFWBuildDate(IBaseFilter* filter, char* date);

HRESULT GetCheckSumResult(IBaseFilter* filter);

// Eight bytes.
HRESULT GetDeviceInfo(IBaseFilter* filter, std::uint8_t* info);

// Thirty-two bytes.
HRESULT GetSensorSN(IBaseFilter* filter, std::uint8_t* serial);

HRESULT GetSkypeXUVersion(IBaseFilter* filter, std::uint8_t* version);

}  // namespace zem
