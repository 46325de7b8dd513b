// The table store: the image that the vendor unit's NVMEM holds from address 0, read and changed
// table by table, on the device or on an image read once.
//
// Results are those of the exports of the same name in include/ZemUVCExtApi.h. `filter` is the
// device; pointers must not be null unless said otherwise.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// A table handle is the first byte of an image, of kTableImageSize bytes, that OpenTableHandle
// allocated.
HRESULT OpenTableHandle(IBaseFilter* filter, std::uint8_t** handle);
void CloseTableHandle(std::uint8_t** handle);

// `handle` may be null.
HRESULT GetTableSize(const std::uint8_t* handle, std::uint8_t id, std::uint16_t* size);

// `size` may be null. `out` has room for the payload, however long.
HRESULT ReadTableEx(const std::uint8_t* handle, std::uint8_t id, std::uint8_t* out,
                    std::uint32_t* size);

// `size` may be null; without a filter only the image is changed. `data` has a whole payload.
HRESULT WriteTableEx(IBaseFilter* filter, std::uint8_t* handle, std::uint8_t id,
                     const std::uint8_t* data, std::uint32_t* size);

HRESULT ReadTable(IBaseFilter* filter, std::uint8_t id, std::uint8_t* out, std::uint32_t* size);
HRESULT WriteTable(IBaseFilter* filter, std::uint8_t id, const std::uint8_t* data,
                   std::uint32_t* size);

HRESULT DumpWholeTable(const std::uint8_t* handle, std::uint8_t* out, std::uint32_t capacity,
                       std::uint32_t* size);

}  // namespace zem
