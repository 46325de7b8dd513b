#include "commands/manual_gain.h"

#include "commands/command_block.h"
#include "device/standard_controls.h"
#include "platform/result.h"

namespace zem {
namespace {

// Deliberate: this number, whatever name the system's own list of properties has for it.
constexpr LONG kGainProperty = 7;

constexpr LONG kAutomatic = 1;
constexpr LONG kManual = 2;

}  // namespace

HRESULT EnableManualGainCtrl(IBaseFilter* filter, int enable) {
  auto amplifier = AskForControls<IAMVideoProcAmp>(filter);
  if (!amplifier) {
    return kDeviceRefused;
  }
  LONG value = 0;
  LONG flags = 0;
  if (const HRESULT result = amplifier->Get(kGainProperty, &value, &flags); FAILED(result)) {
    return result;
  }
  amplifier.Reset();
  // Deliberate: neither the second request for the interface nor the write may stop the command.
  amplifier = AskForControls<IAMVideoProcAmp>(filter);
  if (amplifier) {
    static_cast<void>(amplifier->Set(kGainProperty, value, enable != 0 ? kManual : kAutomatic));
    amplifier.Reset();
  }
  const auto automatic = static_cast<std::uint8_t>(enable != 0 ? 0x00 : 0x01);
  return TransportAndStatusResult(SendCommand(kIspChannel, CommandBlock{0x11, automatic}, filter));
}

}  // namespace zem
