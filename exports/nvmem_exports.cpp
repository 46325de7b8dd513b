// Non-volatile memory of the vendor unit and the TIRELLA unit, and the TIRELLA LED.
#include "exports/export_support.h"
#include "transfer/nvmem.h"
#include "transfer/tirella_led.h"

using zem::OnDevice;

ZemResult ZEMAPI_WriteNVMEM(void* handle, uint16_t address, const uint8_t* data, uint32_t length,
                            uint32_t* written) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, uint32_t* moved) {
        return zem::WriteNVMEM(filter, address, data, length, moved);
      },
      written);
}

ZemResult ZEMAPI_ReadNVMEM(void* handle, uint16_t address, uint8_t* buffer, uint32_t length,
                           uint32_t* read) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, uint32_t* moved) {
        return zem::ReadNVMEM(filter, address, buffer, length, moved);
      },
      read);
}

ZemResult ZEMAPI_TIRELLA_WriteNVMEM(void* handle, const uint8_t* data, uint32_t length,
                                    uint32_t* written) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, uint32_t* moved) {
        return zem::WriteTirellaNVMEM(filter, data, length, moved);
      },
      written);
}

ZemResult ZEMAPI_TIRELLA_ReadNVMEM(void* handle, uint8_t* buffer, uint32_t length, uint32_t* read) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, uint32_t* moved) {
        return zem::ReadTirellaNVMEM(filter, buffer, length, moved);
      },
      read);
}

ZemResult ZEMAPI_TIRELLA_LedCtrl(void* handle, uint8_t value) {
  return OnDevice(handle, zem::SetTirellaLed, value);
}
