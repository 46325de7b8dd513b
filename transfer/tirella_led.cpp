#include "transfer/tirella_led.h"

#include "device/extension_units.h"
#include "device/transport.h"

namespace zem {

HRESULT SetTirellaLed(IBaseFilter* filter, std::uint8_t value) {
  // Deliberate: a camera without the LED is no failure to the caller.
  static_cast<void>(
      XuSetControl(TirellaXu, tirella_selector::kLed, &value, sizeof(value), nullptr, filter));
  return S_OK;
}

}  // namespace zem
