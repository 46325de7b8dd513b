/* A C caller: the header as C, the exports under their plain names. */
#include "include/ZemUVCExtApi.h"

static const GUID kVendorUnit = ZEM_VENDOR_XU;

int main(void) {
  unsigned short value = 0;
  void* handle = NULL;
  int right = ZEMAPI_GetRegister(NULL, 0, &value) == ZEM_E_NO_DEVICE &&
              ZEMAPI_UvcCheckXuGuid(NULL, &kVendorUnit) == ZEM_E_NO_DEVICE &&
              WREN_EuSet(NULL, 0x10000, NULL, 0) == ZEM_E_REFUSED &&
              ZEMAPI_OpenDeviceBySourceFilter(NULL, &handle) == ZEM_E_FAIL && handle == NULL;
  ZEMAPI_CloseDevice(&handle);
  return right ? 0 : 1;
}
