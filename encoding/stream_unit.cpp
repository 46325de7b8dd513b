#include "encoding/stream_unit.h"

#include <array>

#include "device/extension_units.h"
#include "device/transport.h"
#include "platform/bytes.h"
#include "platform/result.h"

namespace zem {
namespace {

// A stream format on the wire: the caller's fields without the padding between them.
using WireFormat = std::array<std::uint8_t, 13>;

WireFormat Pack(const OrvaStreamFormat& format) {
  WireFormat wire = {};
  wire[0] = format.bStreamFormat;
  StoreLe16(&wire[1], format.wWidth);
  StoreLe16(&wire[3], format.wHeight);
  StoreLe32(&wire[5], format.dwFrameInterval);
  StoreLe32(&wire[9], format.dwBitRate);
  return wire;
}

void Unpack(const WireFormat& wire, OrvaStreamFormat& format) {
  format.bStreamFormat = wire[0];
  format.wWidth = LoadLe16(&wire[1]);
  format.wHeight = LoadLe16(&wire[3]);
  format.dwFrameInterval = LoadLe32(&wire[5]);
  format.dwBitRate = LoadLe32(&wire[9]);
}

HRESULT Read(std::uint16_t selector, void* data, ULONG length, IBaseFilter* filter) {
  return XuGetControl(OrvaXu, selector, data, length, nullptr, filter);
}

HRESULT Write(std::uint16_t selector, void* data, ULONG length, IBaseFilter* filter) {
  return XuSetControl(OrvaXu, selector, data, length, nullptr, filter);
}

HRESULT WriteFormat(std::uint16_t selector, const OrvaStreamFormat* format, IBaseFilter* filter) {
  WireFormat wire = format != nullptr ? Pack(*format) : WireFormat{};
  return Write(selector, wire.data(), wire.size(), filter);
}

HRESULT ReadFormat(std::uint16_t selector, OrvaStreamFormat* format, IBaseFilter* filter) {
  if (format == nullptr) {
    return kRefused;
  }
  WireFormat wire = {};
  const HRESULT result = Read(selector, wire.data(), wire.size(), filter);
  Unpack(wire, *format);
  return result;
}

}  // namespace

HRESULT GetStreamUnitVersion(IBaseFilter* filter, std::uint8_t* version) {
  return version != nullptr ? Read(orva_selector::kVersion, version, sizeof(*version), filter)
                            : kFail;
}

HRESULT GetFirmwareBuildDay(IBaseFilter* filter, std::uint16_t* buildDay) {
  return buildDay != nullptr ? Read(orva_selector::kBuildDay, buildDay, sizeof(*buildDay), filter)
                             : kFail;
}

HRESULT SetStreamId(IBaseFilter* filter, std::uint8_t streamId) {
  return Write(orva_selector::kStreamId, &streamId, sizeof(streamId), filter);
}

HRESULT GetEndpointSetting(IBaseFilter* filter, std::uint8_t* setting) {
  return Read(orva_selector::kEndpointSetting, setting, sizeof(*setting), filter);
}

HRESULT StreamFormatProbeCommit(IBaseFilter* filter, OrvaStreamFormat* format,
                                std::uint32_t operation) {
  switch (operation) {
    case kWriteProbe:
      return WriteFormat(orva_selector::kProbe, format, filter);
    case kReadProbe:
      return ReadFormat(orva_selector::kProbe, format, filter);
    case kWriteCommit:
      return WriteFormat(orva_selector::kCommit, format, filter);
    case kReadCommit:
      return ReadFormat(orva_selector::kCommit, format, filter);
    default:
      return S_OK;
  }
}

HRESULT ToggleLayerControl(IBaseFilter* filter, std::uint8_t value) {
  return Write(orva_selector::kToggleLayer, &value, sizeof(value), filter);
}

}  // namespace zem
