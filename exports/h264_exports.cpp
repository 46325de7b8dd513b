// H.264 formats and encoder settings.
#include "encoding/encoder_settings.h"
#include "encoding/h264_frame_list.h"
#include "encoding/h264_start.h"
#include "encoding/payload_formats.h"
#include "exports/export_support.h"

using zem::OnDevice;
using zem::OnHandle;
using zem::Required;

ZemResult ZEMAPI_GetH264FrameList(void* handle, void** list) {
  return OnHandle(handle, zem::GetH264FrameList, Required(list));
}

void ZEMAPI_ReleaseH264FrameList(void* list) { zem::ReleaseH264FrameList(list); }

ZemResult ZEMAPI_SetH264FrameIndex(void* handle, unsigned short frameIndex) {
  return OnHandle(handle, zem::SetH264FrameIndex, frameIndex);
}

ZemResult ZEMAPI_SetH264Mode(void* handle, unsigned int width, unsigned int height) {
  return OnDevice(handle, zem::SetH264Mode, width, height);
}

ZemResult ZEMAPI_GetH264_UVC_PayloadFormat(void* /*handle*/, unsigned short index,
                                           unsigned short* width, unsigned short* height,
                                           GUID* subtype) {
  return zem::AnyNull(width, height, subtype)
             ? zem::kRefused
             : zem::GetPayloadFormat(index, width, height, subtype);
}

ZemResult ZEMAPI_SetFps(void* handle, unsigned short fps) {
  return OnDevice(handle, zem::SetFps, fps);
}

ZemResult ZEMAPI_SetBitRate(void* handle, unsigned short bitRate) {
  return OnDevice(handle, zem::SetBitRate, bitRate);
}

ZemResult ZEMAPI_ForceIFrame(void* handle) { return OnDevice(handle, zem::ForceIFrame); }

ZemResult ZEMAPI_SetPframeCount(void* handle, unsigned int count) {
  return handle != nullptr ? zem::SetPframeCount(count) : zem::kNoDevice;
}
