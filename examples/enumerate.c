/* Lists the cameras with the default ids, with what each tells of itself. Plain C against the
 * library, which has no function that lists cameras: it is asked for the first one, the next, until
 * there is none. (C++ has zemuvc::ListCameras(), which also lists cameras with other ids.) */
#include <stdio.h>

#include "ZemUVCExtApi.h"
#include "ZemUVCResults.h"

static void PrintBytes(const char* what, ZemResult result, const unsigned char* bytes,
                       size_t count) {
  printf("  %s:", what);
  if (result != ZEM_OK) {
    printf(" %s (%s)\n", ZemResultText(result), ZemResultName(result));
    return;
  }
  for (size_t index = 0; index < count; ++index) {
    printf(" %02x", bytes[index]);
  }
  printf("\n");
}

int main(void) {
  unsigned count = 0;
  for (;;) {
    void* camera = NULL;
    ZemResult result = ZEMAPI_OpenDevice(count, &camera);
    if (result == ZEM_E_FAIL) {
      break; /* There is no further one. */
    }
    if (result < 0) {
      printf("camera %u cannot be opened: %s (0x%08lX)\n", count, ZemResultText(result),
             (unsigned long)result & 0xFFFFFFFFUL);
      return 1;
    }
    printf("camera %u\n", count);
    unsigned char version[6] = {0};
    result = ZEMAPI_GetFWVersion(camera, version);
    PrintBytes("firmware version", result, version, sizeof(version));
    /* Not ZEMAPI_GetSerialNumber: that does not ask the camera, and ends the process. */
    unsigned char serial[32] = {0};
    result = ZEMAPI_GetSensorSN(camera, serial);
    PrintBytes("serial number", result, serial, sizeof(serial));
    ZEMAPI_CloseDevice(&camera);
    ++count;
  }
  printf("%u cameras\n", count);
  return count > 0 ? 0 : 1;
}
