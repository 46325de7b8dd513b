// Registers, raw command blocks and identification.
#include "commands/identification.h"
#include "commands/raw_commands.h"
#include "commands/registers.h"
#include "exports/export_support.h"

using zem::kLensRegisters;
using zem::kProcessorRegisters;
using zem::kSensorRegisters;
using zem::OnDevice;
using zem::Required;

ZemResult ZEMAPI_SetRegister(void* handle, unsigned int address, unsigned short value) {
  return OnDevice(handle, zem::WriteRegister, kProcessorRegisters, address, value);
}

ZemResult ZEMAPI_GetRegister(void* handle, unsigned int address, unsigned short* value) {
  return OnDevice(handle, zem::ReadRegister, kProcessorRegisters, address, Required(value));
}

ZemResult ZEMAPI_SetSensorRegister(void* handle, unsigned short address, unsigned char value) {
  return OnDevice(handle, zem::WriteRegister, kSensorRegisters, address, value);
}

ZemResult ZEMAPI_GetSensorRegister(void* handle, unsigned short address, unsigned char* value) {
  return OnDevice(handle, zem::ReadByteRegister, kSensorRegisters, address, Required(value));
}

ZemResult ZEMAPI_SetSensorRegisterW(void* handle, unsigned short address, unsigned short value) {
  return OnDevice(handle, zem::WriteRegister, kSensorRegisters, address, value);
}

ZemResult ZEMAPI_GetSensorRegisterW(void* handle, unsigned short address, unsigned short* value) {
  return OnDevice(handle, zem::ReadRegister, kSensorRegisters, address, Required(value));
}

ZemResult ZEMAPI_SetVCMRegister(void* handle, unsigned short address, unsigned short value) {
  return OnDevice(handle, zem::WriteRegister, kLensRegisters, address, value);
}

ZemResult ZEMAPI_GetVCMRegister(void* handle, unsigned short address, unsigned short* value) {
  return OnDevice(handle, zem::ReadRegister, kLensRegisters, address, Required(value));
}

ZemResult ZEMAPI_SetLensPos(void* handle, unsigned int position) {
  return OnDevice(handle, zem::SetLensPos, position);
}

ZemResult ZEMAPI_GetFWVersion(void* handle, unsigned char* version) {
  return OnDevice(handle, zem::GetFWVersion, Required(version));
}

ZemResult ZEMAPI_GetFWVersion(void* handle, char* version) {
  return OnDevice(handle, zem::GetFWVersionReply, Required(version));
}

ZemResult ZEMAPI_GetCheckSumResult(void* handle) {
  return OnDevice(handle, zem::GetCheckSumResult);
}

ZemResult ZEMAPI_ReadCodecReg(void* handle, unsigned short reg, unsigned char* value) {
  return OnDevice(handle, zem::ReadCodecReg, reg, Required(value));
}

ZemResult ZEMAPI_WriteCodecReg(void* handle, unsigned short reg, unsigned char value) {
  return OnDevice(handle, zem::WriteCodecReg, reg, value);
}

ZemResult ZEMAPI_IspCommand(void* handle, unsigned char* command, unsigned char* reply) {
  return OnDevice(handle, zem::IspCommand, Required(command), Required(reply));
}

ZemResult ZEMAPI_VcpCommand(void* handle, unsigned char* command, unsigned char* reply) {
  return OnDevice(handle, zem::VcpCommand, Required(command), Required(reply));
}

ZemResult ZEMAPI_IspCommandEx(void* handle, unsigned char* command, unsigned char* reply) {
  return OnDevice(handle, zem::IspCommandEx, Required(command), Required(reply));
}

ZemResult ZEMAPI_VcpCommandEx(void* handle, unsigned char* command, unsigned char* reply) {
  return OnDevice(handle, zem::VcpCommandEx, Required(command), Required(reply));
}

ZemResult ZEMAPI_GetDeviceInfo(void* handle, unsigned char* info) {
  return OnDevice(handle, zem::GetDeviceInfo, Required(info));
}
