// Calls without a handle.
#include "commands/identification.h"
#include "commands/raw_commands.h"
#include "commands/registers.h"
#include "encoding/encoder_settings.h"
#include "exports/export_support.h"
#include "transfer/stateless_commands.h"
#include "transfer/stateless_transfer.h"

namespace stateless = zem::stateless;

using zem::AnyNull;
using zem::Image;
using zem::kProcessorRegisters;
using zem::kRefused;
using zem::kSensorRegisters;
using zem::MaybeNull;
using zem::OnDefaultCamera;
using zem::Progress;
using zem::Required;

ZemResult ZEMUVCEXT_DoAF(uint16_t value) { return stateless::Send(stateless::DoAF(value)); }

ZemResult ZEMUVCEXT_SetFps(uint16_t fps) { return OnDefaultCamera(zem::SetFps, fps); }

ZemResult ZEMUVCEXT_SetResolution(uint32_t width, uint32_t height) {
  return stateless::Send(stateless::SetResolution(width, height));
}

ZemResult ZEMUVCEXT_SetIFrame(void) { return OnDefaultCamera(zem::ForceIFrame); }

ZemResult ZEMUVCEXT_SetVideoQuality(uint8_t quality) {
  return stateless::Send(stateless::SetVideoQuality(quality));
}

ZemResult ZEMUVCEXT_SetBitRate(uint16_t rate) { return OnDefaultCamera(zem::SetBitRate, rate); }

ZemResult ZEMUVCEXT_SetFlickMode(uint8_t mode) {
  return stateless::Send(stateless::SetFlickMode(mode));
}

ZemResult ZEMUVCEXT_GetRegister(uint16_t address, uint8_t* value) {
  return OnDefaultCamera(zem::ReadByteRegister, kProcessorRegisters, address, Required(value));
}

ZemResult ZEMUVCEXT_SetRegister(uint16_t address, uint8_t value) {
  return OnDefaultCamera(zem::WriteRegister, kProcessorRegisters, address, value);
}

ZemResult ZEMUVCEXT_GetSensorRegister(uint16_t address, uint8_t* value) {
  return OnDefaultCamera(zem::ReadByteRegister, kSensorRegisters, address, Required(value));
}

ZemResult ZEMUVCEXT_GetSensorRegisterW(uint16_t address, uint16_t* value) {
  return OnDefaultCamera(zem::ReadRegister, kSensorRegisters, address, Required(value));
}

ZemResult ZEMUVCEXT_SetSensorRegister(uint16_t address, uint8_t value) {
  return OnDefaultCamera(zem::WriteRegister, kSensorRegisters, address, value);
}

ZemResult ZEMUVCEXT_SetSensorRegisterW(uint16_t address, uint16_t value) {
  return OnDefaultCamera(zem::WriteRegister, kSensorRegisters, address, value);
}

ZemResult ZEMUVCEXT_GetFWVersion(uint8_t* version) {
  return OnDefaultCamera(zem::GetFWVersion, Required(version));
}

ZemResult ZEMUVCEXT_GetFWBuildDay(char* text) {
  return OnDefaultCamera(zem::GetFWBuildDate, Required(text));
}

ZemResult ZEMUVCEXT_SetH264Mode(uint8_t mode) {
  return stateless::Send(stateless::SetH264Mode(mode));
}

ZemResult ZEMUVCEXT_SetWDR(uint8_t value) { return stateless::Send(stateless::SetWDR(value)); }

ZemResult ZEMUVCEXT_IspCommand(const uint8_t* command, uint8_t* reply) {
  return OnDefaultCamera(zem::StandardIspCommand, Required(command), Required(reply));
}

ZemResult ZEMUVCEXT_IspCommandEx(const uint8_t* command, uint8_t* reply) {
  return OnDefaultCamera(zem::IspCommandEx, Required(command), Required(reply));
}

ZemResult ZEMUVCEXT_VcpCommand(const uint8_t* command, uint8_t* reply) {
  return OnDefaultCamera(zem::StandardVcpCommand, Required(command), MaybeNull(reply));
}

ZemResult ZEMUVCEXT_GetChipInfo(uint8_t* info) {
  return OnDefaultCamera(stateless::GetChipInfo, Required(info));
}

ZemResult ZEMUVCEXT_IspCmdWriteMem(const uint8_t* data, int32_t length) {
  return stateless::WriteMemory(data, length);
}

ZemResult ZEMUVCEXT_IspCmdReadMem(uint8_t* buffer, uint32_t length) {
  return stateless::ReadMemory(buffer, length);
}

ZemResult ZEMUVCEXT_WriteFWData(const uint8_t* data, int32_t length, ProgressCallback callback,
                                uint64_t user) {
  return stateless::WriteFWData(Image{data, static_cast<uint32_t>(length)},
                                Progress{callback, user});
}

ZemResult ZEMUVCEXT_ReadFWData(uint8_t* buffer, uint32_t bufferSize, uint32_t* outLength,
                               ProgressCallback callback, uint64_t user) {
  return AnyNull(buffer, outLength)
             ? kRefused
             : stateless::ReadFWData(buffer, bufferSize, outLength, Progress{callback, user});
}

ZemResult ZEMUVCEXT_UpdateFW(const uint8_t* image, uint32_t length) {
  return ZEMUVCEXT_UpdateFW_with_progress(image, length, nullptr, 0);
}

ZemResult ZEMUVCEXT_UpdateFW_with_progress(const uint8_t* image, uint32_t length,
                                           ProgressCallback callback, uint64_t user) {
  return stateless::UpdateFW(Image{image, length}, Progress{callback, user});
}

ZemResult ZEMUVCEXT_UpdateFW_with_progressEx(const uint8_t* image, uint32_t length,
                                             ProgressCallback callback, uint64_t user) {
  return stateless::UpdateFWEx(Image{image, length}, Progress{callback, user});
}

ZemResult ZEMUVCEXT_UpdateFW_Vision(const uint8_t* image, uint32_t length, uint8_t param,
                                    ProgressCallback callback, uint64_t user) {
  return stateless::UpdateFWVision(Image{image, length}, param, Progress{callback, user});
}
