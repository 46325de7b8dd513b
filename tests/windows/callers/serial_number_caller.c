/*
 * A host without an invalid-parameter handler asks for the serial number. The runtime ends the
 * process with 0xC0000417; an exit code of 0 would mean that the call returned.
 */
#include <stdlib.h>

#include "include/ZemUVCExtApi.h"

int main(void) {
  char serial[16];
  _set_invalid_parameter_handler(NULL);
  ZEMAPI_GetSerialNumber(NULL, serial);
  return 0;
}
