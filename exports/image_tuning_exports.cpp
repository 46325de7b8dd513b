// Image tuning and information.
#include "commands/identification.h"
#include "commands/image_tuning.h"
#include "commands/manual_gain.h"
#include "exports/export_support.h"

using zem::OnDevice;
using zem::Required;
using zem::SetFeature;

ZemResult ZEMAPI_GetFWBuildDate(void* handle, char* date) {
  return OnDevice(handle, zem::GetFWBuildDate, Required(date));
}

ZemResult ZEMAPI_EnableAF(void* handle, unsigned char enable) {
  return OnDevice(handle, SetFeature, zem::kAutoFocus, enable);
}

ZemResult ZEMAPI_EnableAE(void* handle, unsigned char enable) {
  return OnDevice(handle, SetFeature, zem::kAutoExposure, enable);
}

ZemResult ZEMAPI_GetAFACC(void* handle, unsigned int* values) {
  return OnDevice(handle, zem::GetAFACC, Required(values));
}

ZemResult ZEMAPI_SetVideoRecMode(void* handle, unsigned char mode) {
  return OnDevice(handle, zem::SetVideoRecMode, mode);
}

ZemResult ZEMAPI_SetAWBGain(void* handle, unsigned short gain1, unsigned short gain2,
                            unsigned short gain3) {
  return OnDevice(handle, zem::SetAWBGain, gain1, gain2, gain3);
}

ZemResult ZEMAPI_GetAWBGain(void* handle, unsigned short* gain1, unsigned short* gain2,
                            unsigned short* gain3) {
  return OnDevice(handle, zem::GetAWBGain, Required(gain1), Required(gain2), Required(gain3));
}

ZemResult ZEMAPI_EnableManualGainCtrl(void* handle, int enable) {
  return OnDevice(handle, zem::EnableManualGainCtrl, enable);
}

ZemResult ZEMAPI_SetShadding(void* handle, unsigned char value) {
  return OnDevice(handle, SetFeature, zem::kShading, value);
}

ZemResult ZEMAPI_SetMiscSetting(void* handle, const unsigned char* settings) {
  return OnDevice(handle, zem::SetMiscSetting, Required(settings));
}

ZemResult ZEMAPI_GetMiscSetting(void* handle, unsigned char* settings) {
  return OnDevice(handle, zem::GetMiscSetting, Required(settings));
}

ZemResult ZEMAPI_SetMjpgQuality(void* handle) {
  return OnDevice(handle, SetFeature, zem::kMjpgQuality, std::uint8_t{0});
}

ZemResult ZEMAPI_SetImageEffect(void* handle, unsigned char effect) {
  return OnDevice(handle, SetFeature, zem::kImageEffect, effect);
}

ZemResult ZEMAPI_SetMaxQP(void* handle, unsigned char qp) {
  return OnDevice(handle, SetFeature, zem::kMaxQp, qp);
}

ZemResult ZEMAPI_SetMinQP(void* handle, unsigned char qp) {
  return OnDevice(handle, SetFeature, zem::kMinQp, qp);
}

ZemResult ZEMAPI_GetSensorSN(void* handle, unsigned char* serial) {
  return OnDevice(handle, zem::GetSensorSN, Required(serial));
}

ZemResult ZEMAPI_GetSkypeXUVersion(void* handle, unsigned char* version) {
  return OnDevice(handle, zem::GetSkypeXUVersion, Required(version));
}
