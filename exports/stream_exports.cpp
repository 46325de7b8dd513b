// The stream and endpoint unit, and multicast.
#include "encoding/multicast.h"
#include "encoding/stream_unit.h"
#include "exports/export_support.h"

using zem::OnDevice;

ZemResult ORVAAPI_GetVersion(void* handle, unsigned char* version) {
  return OnDevice(handle, [version](IBaseFilter* filter) {
    return zem::GetStreamUnitVersion(filter, version);
  });
}

ZemResult ORVAAPI_FirmwareBuildDay(void* handle, unsigned short* buildDay) {
  return OnDevice(handle, [buildDay](IBaseFilter* filter) {
    return zem::GetFirmwareBuildDay(filter, buildDay);
  });
}

ZemResult ORVAAPI_SetStreamID(void* handle, unsigned char streamId) {
  return OnDevice(handle, zem::SetStreamId, streamId);
}

ZemResult ORVAAPI_GetEndpointSetting(void* handle, unsigned char* setting) {
  return OnDevice(
      handle, [setting](IBaseFilter* filter) { return zem::GetEndpointSetting(filter, setting); });
}

ZemResult ORVAAPI_StreamFormatProbeCommit(void* handle, OrvaStreamFormat* format,
                                          unsigned int operation) {
  return OnDevice(handle, [format, operation](IBaseFilter* filter) {
    return zem::StreamFormatProbeCommit(filter, format, operation);
  });
}

ZemResult ORVAAPI_ToggleLayerControl(void* handle, unsigned char value) {
  return OnDevice(handle, zem::ToggleLayerControl, value);
}

ZemResult ZEMAPI_MulticastStreamID(void* handle, unsigned char streamId) {
  return OnDevice(handle, zem::MulticastStreamId, streamId);
}

ZemResult ZEMAPI_MulticasToggleLayer(void* handle, unsigned char value) {
  return OnDevice(handle, zem::MulticastToggleLayer, value);
}

ZemResult ZEMAPI_MulticastCommit(void* handle, unsigned char streamFormat, unsigned short width,
                                 unsigned short height, unsigned char packedLow,
                                 unsigned short packedHigh) {
  return OnDevice(handle, zem::MulticastCommit, streamFormat, width, height, packedLow, packedHigh);
}
