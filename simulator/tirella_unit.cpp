#include "simulator/tirella_unit.h"

#include "device/extension_units.h"

namespace zem::simulator {

TirellaUnit::TirellaUnit() : ExtensionUnit(TirellaXu) {}

Outcome TirellaUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  switch (selector) {
    case tirella_selector::kLed:
      if (bytes.size() != 1) {
        return Outcome::kWrongLength;
      }
      state.led = bytes[0];
      return Outcome::kDone;
    case tirella_selector::kNvmem:
      return nvmem_.Set(bytes);
    default:
      return Outcome::kNoSuchControl;
  }
}

Outcome TirellaUnit::Get(std::uint16_t selector, std::size_t /*length*/,
                         std::vector<std::uint8_t>& bytes) {
  switch (selector) {
    case tirella_selector::kLed:
      bytes.assign(1, state.led);
      return Outcome::kDone;
    case tirella_selector::kNvmem:
      return nvmem_.Get(bytes);
    default:
      return Outcome::kNoSuchControl;
  }
}

}  // namespace zem::simulator
