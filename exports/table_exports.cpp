// The table store.
#include "exports/export_support.h"
#include "transfer/initial_table.h"
#include "transfer/table_store.h"

using zem::AnyNull;
using zem::DeviceHandle;
using zem::kRefused;
using zem::OnDevice;
using zem::Required;

ZemResult ZEMAPI_OpenTableHandle(void* handle, uint8_t** table) {
  return OnDevice(handle, zem::OpenTableHandle, Required(table));
}

ZemResult ZEMAPI_CloseTableHandle(void* /*handle*/, uint8_t** table) {
  if (AnyNull(table)) {
    return kRefused;
  }
  zem::CloseTableHandle(table);
  return ZEM_OK;
}

ZemResult ZEMAPI_GetTableSize(void* /*handle*/, uint8_t* table, uint8_t id, uint16_t* size) {
  return AnyNull(size) ? kRefused : zem::GetTableSize(table, id, size);
}

ZemResult ZEMAPI_ReadTableEx(void* /*handle*/, uint8_t* table, uint8_t id, uint8_t* out,
                             uint32_t /*outSize*/, uint32_t* size) {
  return AnyNull(table, out) ? kRefused : zem::ReadTableEx(table, id, out, size);
}

ZemResult ZEMAPI_WriteTableEx(void* handle, uint8_t* table, uint8_t id, const uint8_t* data,
                              uint32_t /*dataSize*/, uint32_t* size) {
  if (AnyNull(table, data)) {
    return kRefused;
  }
  // Deliberate: without a device the image alone is changed.
  IBaseFilter* const filter =
      handle != nullptr ? static_cast<DeviceHandle*>(handle)->filter : nullptr;
  return zem::WriteTableEx(filter, table, id, data, size);
}

ZemResult ZEMAPI_ReadTable(void* handle, uint8_t id, uint8_t* out, uint32_t /*outSize*/,
                           uint32_t* size) {
  return OnDevice(handle, zem::ReadTable, id, Required(out), Required(size));
}

ZemResult ZEMAPI_WriteTable(void* handle, uint8_t id, const uint8_t* data, uint32_t /*dataSize*/,
                            uint32_t* size) {
  return OnDevice(handle, zem::WriteTable, id, Required(data), Required(size));
}

ZemResult ZEMAPI_WriteInitialTable(void* handle, const uint8_t* image, uint32_t length) {
  return OnDevice(handle, zem::WriteInitialTable, zem::Image{image, length});
}

ZemResult ZEMAPI_DumpWholeTable(void* /*handle*/, uint8_t* table, uint8_t* out, uint32_t capacity,
                                uint32_t* size) {
  return AnyNull(table, out, size) ? kRefused : zem::DumpWholeTable(table, out, capacity, size);
}
