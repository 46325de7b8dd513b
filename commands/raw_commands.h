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

}  // namespace zem
