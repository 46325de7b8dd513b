/* A C program as its authors build it with a package: reads what it wrote to a simulated camera. */
#include <ZemSimulator.h>
#include <ZemUVCExtApi.h>
#include <stdio.h>

int main(void) {
  void* camera = NULL;
  unsigned short value = 0;
  ZemResult result = ZEM_OK;
  if (ZemSimulatorStartPrivate("{}") < 0) {
    printf("%s\n", ZemSimulatorLastError());
    return 1;
  }
  result = ZEMAPI_OpenDevice(0, &camera);
  if (result == ZEM_OK) {
    result = ZEMAPI_SetRegister(camera, 0x123456, 0xABCD);
  }
  if (result == ZEM_OK) {
    result = ZEMAPI_GetRegister(camera, 0x123456, &value);
  }
  ZEMAPI_CloseDevice(&camera);
  ZemSimulatorStop();
  printf("C %s 0x%08X 0x%04X\n", ZEM_VERSION, (unsigned)result, (unsigned)value);
  return 0;
}
