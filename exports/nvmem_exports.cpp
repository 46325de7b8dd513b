// Non-volatile memory of the vendor unit and the TIRELLA unit, and the TIRELLA LED.
#include "exports/export_support.h"
#include "transfer/nvmem.h"
#include "transfer/tirella_led.h"

using zem::MaybeNull;
using zem::OnDevice;
using zem::Required;

ZemResult ZEMAPI_WriteNVMEM(void* handle, uint16_t address, const uint8_t* data, uint32_t length,
                            uint32_t* written) {
  return OnDevice(handle, zem::WriteNVMEM, address, MaybeNull(data), length, Required(written));
}

ZemResult ZEMAPI_ReadNVMEM(void* handle, uint16_t address, uint8_t* buffer, uint32_t length,
                           uint32_t* read) {
  return OnDevice(handle, zem::ReadNVMEM, address, MaybeNull(buffer), length, Required(read));
}

ZemResult ZEMAPI_TIRELLA_WriteNVMEM(void* handle, const uint8_t* data, uint32_t length,
                                    uint32_t* written) {
  return OnDevice(handle, zem::WriteTirellaNVMEM, MaybeNull(data), length, Required(written));
}

ZemResult ZEMAPI_TIRELLA_ReadNVMEM(void* handle, uint8_t* buffer, uint32_t length, uint32_t* read) {
  return OnDevice(handle, zem::ReadTirellaNVMEM, MaybeNull(buffer), length, Required(read));
}

ZemResult ZEMAPI_TIRELLA_LedCtrl(void* handle, uint8_t value) {
  return OnDevice(handle, zem::SetTirellaLed, value);
}
