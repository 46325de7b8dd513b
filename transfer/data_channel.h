// The data channel of the vendor unit: blocks of any length to and from the camera, a chunk a
// transfer.
//
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h; pointers for
// outputs must not be null. `filter` is the device. Two transfers on one device at once would mix
// their chunks; callers serialise them. Callers may be re-entered wherever the message queue is
// drained.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/com.h"
#include "transfer/chunks.h"
#include "transfer/progress.h"

namespace zem {

// Characters of a line about a transfer, with its end.
inline constexpr std::size_t kTransferLine = 512;

// A control that carries data, and how much of it a transfer.
struct DataControl {
  std::uint16_t selector;
  std::uint32_t chunkLength;
};

// The fastest control for data that the device offers, and a line that says which.
DataControl ProbeDataSpeed(IBaseFilter* filter);

// Writes one chunk of `control`'s length.
HRESULT WriteChunk(const DataControl& control, const std::uint8_t* bytes, IBaseFilter* filter);

// Announces the data and sends it over the slow control.
HRESULT SendData(IBaseFilter* filter, Image data, Progress progress, std::uint8_t param2,
                 std::uint8_t param3);

// Sends data that the caller has announced over the fastest control.
HRESULT WriteFWData(IBaseFilter* filter, Image data, Progress progress);

// Reads all that the device has ready.
HRESULT ReadFWData(IBaseFilter* filter, std::uint8_t* buffer, std::uint32_t bufferSize,
                   std::uint32_t* outLength, Progress progress);

// The same with a device of its own for the transfer control; null is the default camera, opened
// for each access.
HRESULT ReadFWDataFrom(IBaseFilter* dataFilter, IBaseFilter* controlFilter, std::uint8_t* buffer,
                       std::uint32_t bufferSize, std::uint32_t* outLength, Progress progress);

HRESULT ReadPartialFlashData(IBaseFilter* filter, std::uint32_t address, std::uint32_t size,
                             std::uint8_t* buffer, std::uint32_t* outSize, Progress progress);

}  // namespace zem
