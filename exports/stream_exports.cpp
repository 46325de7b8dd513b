// The stream and endpoint unit, and multicast.
#include "encoding/multicast.h"
#include "encoding/stream_unit.h"
#include "exports/export_support.h"

using zem::MaybeNull;
using zem::OnDevice;

ZemResult ORVAAPI_GetVersion(void* handle, unsigned char* version) {
  return OnDevice(handle, zem::GetStreamUnitVersion, MaybeNull(version));
}

ZemResult ORVAAPI_FirmwareBuildDay(void* handle, unsigned short* buildDay) {
  return OnDevice(handle, zem::GetFirmwareBuildDay, MaybeNull(buildDay));
}

ZemResult ORVAAPI_SetStreamID(void* handle, unsigned char streamId) {
  return OnDevice(handle, zem::SetStreamId, streamId);
}

ZemResult ORVAAPI_GetEndpointSetting(void* handle, unsigned char* setting) {
  return OnDevice(handle, zem::GetEndpointSetting, MaybeNull(setting));
}

ZemResult ORVAAPI_StreamFormatProbeCommit(void* handle, OrvaStreamFormat* format,
                                          unsigned int operation) {
  return OnDevice(handle, zem::StreamFormatProbeCommit, MaybeNull(format), operation);
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
