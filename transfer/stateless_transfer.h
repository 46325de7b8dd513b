// Transfers and firmware updates of the default camera without a handle.
//
// A transfer of data opens the camera once and keeps it open; all other accesses open it anew.
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "transfer/chunks.h"
#include "transfer/progress.h"

namespace zem::stateless {

// A length that is negative as a signed number sends nothing.
HRESULT WriteFWData(Image image, Progress progress);

// `buffer` and `outLength` must not be null.
HRESULT ReadFWData(std::uint8_t* buffer, std::uint32_t bufferSize, std::uint32_t* outLength,
                   Progress progress);

HRESULT UpdateFW(Image image, Progress progress);
HRESULT UpdateFWEx(Image image, Progress progress);
HRESULT UpdateFWVision(Image image, std::uint8_t param, Progress progress);

}  // namespace zem::stateless
