/* Opens the first default camera and reads one processor register. Plain C against the DLL. */
#include <stdio.h>

#include "ZemUVCExtApi.h"

int main(void) {
  void* camera = NULL;
  ZemResult result = ZEMAPI_OpenDevice(0, &camera);
  if (result < 0) {
    printf("no camera (0x%08lX)\n", (unsigned long)result & 0xFFFFFFFFUL);
    return 1;
  }
  unsigned short value = 0;
  result = ZEMAPI_GetRegister(camera, 0x123456, &value);
  if (result == ZEM_OK) {
    printf("register 0x123456 = 0x%04X\n", value);
  } else {
    printf("the camera did not answer (0x%08lX)\n", (unsigned long)result & 0xFFFFFFFFUL);
  }
  ZEMAPI_CloseDevice(&camera);
  return result == ZEM_OK ? 0 : 1;
}
