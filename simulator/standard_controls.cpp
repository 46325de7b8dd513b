#include "simulator/standard_controls.h"

namespace zem::simulator {
namespace {

StandardControl Make(const ControlRange& range) {
  const bool automatic = (range.flags & kAutomatic) != 0;
  return {range, {range.defaultValue, automatic ? kAutomatic : kManual}};
}

constexpr std::int32_t kEither = kAutomatic | kManual;

}  // namespace

bool StandardControl::Takes(const ControlSetting& wanted) const {
  const bool oneFlag = wanted.flags == kAutomatic || wanted.flags == kManual;
  if (!oneFlag || (range.flags & wanted.flags) == 0) {
    return false;
  }
  return wanted.flags == kAutomatic ||
         (wanted.value >= range.minimum && wanted.value <= range.maximum);
}

void StandardControl::Apply(const ControlSetting& wanted) {
  setting.flags = wanted.flags;
  if (wanted.flags == kManual) {
    setting.value = wanted.value;
  }
}

StandardControls DefaultControls(ControlFamily family) {
  if (family == ControlFamily::kCameraTerminal) {
    return {
        {0, Make({-36000, 36000, 3600, 0, kManual})},  // pan
        {1, Make({-36000, 36000, 3600, 0, kManual})},  // tilt
        {3, Make({100, 500, 1, 100, kManual})},        // zoom
        {4, Make({-11, -2, 1, -5, kEither})},          // exposure
        {6, Make({0, 250, 5, 0, kEither})},            // focus
    };
  }
  return {
      {0, Make({0, 255, 1, 128, kManual})},        // brightness
      {1, Make({0, 255, 1, 128, kManual})},        // contrast
      {2, Make({-180, 180, 1, 0, kManual})},       // hue
      {3, Make({0, 255, 1, 128, kManual})},        // saturation
      {4, Make({0, 255, 1, 64, kManual})},         // sharpness
      {5, Make({100, 500, 10, 300, kManual})},     // gamma
      {7, Make({2800, 6500, 10, 4000, kEither})},  // white balance
      {8, Make({0, 1, 1, 0, kManual})},            // backlight compensation
      {9, Make({0, 255, 1, 0, kManual})},          // gain: the video class has no switch for it
  };
}

}  // namespace zem::simulator
