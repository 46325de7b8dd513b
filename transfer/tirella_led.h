// The LED of a camera with the TIRELLA unit.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// Hands `value` to the device. Always 0, as ZEMAPI_TIRELLA_LedCtrl on a device.
HRESULT SetTirellaLed(IBaseFilter* filter, std::uint8_t value);

}  // namespace zem
