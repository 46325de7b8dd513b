// Command blocks that the caller lays out, sent as they are on each of the four channels.
//
// Results are those of the exports of the same name in include/ZemUVCExtApi.h; `command` and
// `reply` are whole blocks of the channel and must not be null.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

HRESULT IspCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);
HRESULT VcpCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);
HRESULT IspCommandEx(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);
HRESULT VcpCommandEx(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);

// The 8-byte channels by the standard rule: kNoDevice, kDeviceRefused or 0. `reply` gets the whole
// reply, also when the device refused; a null reply of the VCP form means that none is read.
HRESULT StandardIspCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);
HRESULT StandardVcpCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply);

}  // namespace zem
