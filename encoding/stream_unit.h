// The stream and endpoint unit: version, stream choice, stream formats, layers.
//
// Results are those of the ORVAAPI_ exports in include/ZemUVCExtApi.h; `filter` is the device.
// Outputs get what the transport puts there, also of a read that fails.
#pragma once

#include <cstdint>

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

// Each kFail for a null output.
HRESULT GetStreamUnitVersion(IBaseFilter* filter, std::uint8_t* version);
HRESULT GetFirmwareBuildDay(IBaseFilter* filter, std::uint16_t* buildDay);

HRESULT SetStreamId(IBaseFilter* filter, std::uint8_t streamId);

// Deliberately passes a null output on to the transport.
HRESULT GetEndpointSetting(IBaseFilter* filter, std::uint8_t* setting);

// What is done with a stream format. A number that is none of these sends nothing and is no
// failure.
enum StreamFormatOperation : std::uint32_t {
  kWriteProbe = 0,
  kReadProbe = 1,
  kWriteCommit = 2,
  kReadCommit = 3,
};

// Writes the format, or thirteen zeros for a null one; or reads into it, whatever the transport
// returns. kRefused for a read without a format.
HRESULT StreamFormatProbeCommit(IBaseFilter* filter, OrvaStreamFormat* format,
                                std::uint32_t operation);

HRESULT ToggleLayerControl(IBaseFilter* filter, std::uint8_t value);

}  // namespace zem
