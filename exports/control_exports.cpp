// Standard camera, video and audio controls.
#include "device/audio_input.h"
#include "device/standard_controls.h"
#include "exports/export_support.h"

using zem::MaybeNull;
using zem::OnDevice;
using zem::Required;

ZemResult ZEMAPI_GetVideoProcAmp(void* handle, ZemLong property, ZemLong* value, ZemLong* flags) {
  return OnDevice(handle, zem::GetControl<IAMVideoProcAmp>, property, MaybeNull(value),
                  MaybeNull(flags));
}

ZemResult ZEMAPI_SetVideoProcAmp(void* handle, ZemLong property, ZemLong value, ZemLong flags) {
  return OnDevice(handle, zem::SetControl<IAMVideoProcAmp>, property, value, flags);
}

ZemResult ZEMAPI_GetVideoProcAmpRange(void* handle, ZemLong property, ZemLong* minimum,
                                      ZemLong* maximum, ZemLong* step, ZemLong* defaultValue,
                                      ZemLong* capsFlags) {
  return OnDevice(handle, zem::GetControlRange<IAMVideoProcAmp>, property, MaybeNull(minimum),
                  MaybeNull(maximum), MaybeNull(step), MaybeNull(defaultValue),
                  MaybeNull(capsFlags));
}

ZemResult ZEMAPI_GetCameraControl(void* handle, ZemLong property, ZemLong* value, ZemLong* flags) {
  return OnDevice(handle, zem::GetControl<IAMCameraControl>, property, MaybeNull(value),
                  MaybeNull(flags));
}

ZemResult ZEMAPI_SetCameraControl(void* handle, ZemLong property, ZemLong value, ZemLong flags) {
  return OnDevice(handle, zem::SetControl<IAMCameraControl>, property, value, flags);
}

ZemResult ZEMAPI_GetCameraControlRange(void* handle, ZemLong property, ZemLong* minimum,
                                       ZemLong* maximum, ZemLong* step, ZemLong* defaultValue,
                                       ZemLong* capsFlags) {
  return OnDevice(handle, zem::GetControlRange<IAMCameraControl>, property, MaybeNull(minimum),
                  MaybeNull(maximum), MaybeNull(step), MaybeNull(defaultValue),
                  MaybeNull(capsFlags));
}

ZemResult ZEMAPI_Get_IVideoProcAmp_Interface(void* handle, void** videoProcAmp) {
  return OnDevice(handle, zem::GetVideoProcAmpNode, Required(videoProcAmp));
}

ZemResult ZEMAPI_AudioOpenDeviceByPath(const wchar_t* displayName, IBaseFilter** audio) {
  return zem::OpenAudioInput(displayName, audio);
}

ZemResult ZEMAPI_AudioCloseDevice(IBaseFilter** audio) {
  zem::CloseAudioInput(audio);
  return S_OK;
}

ZemResult ZEMAPI_AudioSetVolume(IBaseFilter* audio, int volume) {
  return zem::SetAudioVolume(audio, volume);
}
