// Encoding unit. The device object of this family is the camera's filter itself.
#include "device/extension_units.h"
#include "encoding/command_log.h"
#include "encoding/encoding_unit.h"
#include "include/ZemUVCExtApi.h"

namespace {

IBaseFilter* AsFilter(void* device) { return static_cast<IBaseFilter*>(device); }
IBaseFilter** AsFilterOutput(void** device) { return reinterpret_cast<IBaseFilter**>(device); }

}  // namespace

ZemResult WREN_OpenDevice(uint32_t index, void** device) {
  return zem::OpenEncodingDevice(index, AsFilterOutput(device));
}

void WREN_CloseDevice(void** device) { zem::CloseEncodingDevice(AsFilterOutput(device)); }

ZemResult WREN_EuSet(void* device, uint32_t selector, void* data, uint16_t length) {
  return zem::EuSet(AsFilter(device), selector, data, length);
}

ZemResult WREN_EuGet(void* device, unsigned int selector, void* data, unsigned short length) {
  return zem::EuGet(AsFilter(device), selector, data, length);
}

ZemResult WREN_ProbeSet(void* device, void* block) {
  return zem::StreamBlockSet(AsFilter(device), zem::stream_probe_selector::kProbe, block);
}

ZemResult WREN_ProbeGet(void* device, void* block) {
  return zem::StreamBlockGet(AsFilter(device), zem::stream_probe_selector::kProbe, block);
}

ZemResult WREN_CommitSet(void* device, void* block) {
  return zem::StreamBlockSet(AsFilter(device), zem::stream_probe_selector::kCommit, block);
}

ZemResult WREN_CommitGet(void* device, void* block) {
  return zem::StreamBlockGet(AsFilter(device), zem::stream_probe_selector::kCommit, block);
}

void WREN_WriteLog(const wchar_t* text) { zem::LogText(text); }
