// The uncompressed and MJPEG formats that carry H.264 streams: a fixed table.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// 0 and the format at `index`, or 1 and zeros behind the last. Outputs must not be null.
HRESULT GetPayloadFormat(std::uint16_t index, std::uint16_t* width, std::uint16_t* height,
                         GUID* subtype);

}  // namespace zem
