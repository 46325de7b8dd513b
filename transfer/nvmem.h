// The camera's small non-volatile memory (NVMEM), moved in pieces of at most 29 bytes through one
// 32-byte control; the vendor unit and the TIRELLA unit each have one.
//
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h: any transport
// result but 0 ends the operation and is returned as it stands, positive ones too. `filter` is the
// device. Null data is kRefused unless the length is 0; counts must not be null. Nothing is
// allocated.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// The vendor unit's memory: 16-bit addresses, which wrap. `*written` and `*read` count the bytes
// moved so far, on failure too.
HRESULT WriteNVMEM(IBaseFilter* filter, std::uint16_t address, const std::uint8_t* data,
                   std::uint32_t length, std::uint32_t* written);
HRESULT ReadNVMEM(IBaseFilter* filter, std::uint16_t address, std::uint8_t* buffer,
                  std::uint32_t length, std::uint32_t* read);

// The TIRELLA unit's memory: 256 bytes from address 0. `*written` and `*read` are set on success
// only.
HRESULT WriteTirellaNVMEM(IBaseFilter* filter, const std::uint8_t* data, std::uint32_t length,
                          std::uint32_t* written);
HRESULT ReadTirellaNVMEM(IBaseFilter* filter, std::uint8_t* buffer, std::uint32_t length,
                         std::uint32_t* read);

}  // namespace zem
