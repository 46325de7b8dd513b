// Bulk data and firmware update.
#include "exports/export_support.h"
#include "transfer/data_channel.h"
#include "transfer/firmware_update.h"

using zem::Image;
using zem::OnDevice;
using zem::Progress;
using zem::Required;

ZemResult ZEMAPI_SendData(void* handle, const uint8_t* data, uint32_t length,
                          ProgressCallback callback, uint64_t user, uint8_t param2,
                          uint8_t param3) {
  return OnDevice(handle, zem::SendData, Image{data, length}, Progress{callback, user}, param2,
                  param3);
}

ZemResult ZEMAPI_WriteFWData(void* handle, const uint8_t* data, uint32_t length,
                             ProgressCallback callback, uint64_t user) {
  return OnDevice(handle, zem::WriteFWData, Image{data, length}, Progress{callback, user});
}

ZemResult ZEMAPI_ReadFWData(void* handle, uint8_t* buffer, uint32_t bufferSize, uint32_t* outLength,
                            ProgressCallback callback, uint64_t user) {
  return OnDevice(handle, zem::ReadFWData, Required(buffer), bufferSize, Required(outLength),
                  Progress{callback, user});
}

ZemResult ZEMAPI_ReadPartialFlashData(void* handle, uint32_t address, uint32_t size,
                                      uint8_t* buffer, uint32_t* outSize, ProgressCallback callback,
                                      uint64_t user) {
  return OnDevice(handle, zem::ReadPartialFlashData, address, size, Required(buffer),
                  Required(outSize), Progress{callback, user});
}

ZemResult ZEMAPI_UpdateFW_516x(void* handle, const uint8_t* image, uint32_t length,
                               ProgressCallback callback, uint64_t user, uint8_t param) {
  return OnDevice(handle, zem::UpdateFW_516x, Image{image, length}, Progress{callback, user},
                  param);
}

ZemResult ZEMAPI_UpdateFW_517x(void* handle, const uint8_t* image, uint32_t length,
                               ProgressCallback callback, uint64_t user) {
  return OnDevice(handle, zem::UpdateFW_517x, Image{image, length}, Progress{callback, user});
}

ZemResult ZEMAPI_UpdateFlash(void* handle, const uint8_t* data, uint32_t length,
                             ProgressCallback callback, uint64_t user, uint8_t param2,
                             uint8_t param3) {
  return OnDevice(handle, zem::UpdateFlash, Image{data, length}, Progress{callback, user}, param2,
                  param3);
}

ZemResult ZEMAPI_UpdateCaliData(void* handle, const uint8_t* data, uint32_t length,
                                ProgressCallback callback, uint64_t user) {
  return OnDevice(handle, zem::UpdateCaliData, Image{data, length}, Progress{callback, user});
}
