// The standard controls of a camera: the video processing amplifier and the camera terminal.
#pragma once

#include <cstdint>
#include <map>

namespace zem::simulator {

enum class ControlFamily { kVideoProcessing, kCameraTerminal };

// Flags of a control's setting and of its range.
inline constexpr std::int32_t kAutomatic = 1;
inline constexpr std::int32_t kManual = 2;

struct ControlSetting {
  std::int32_t value = 0;
  std::int32_t flags = kManual;  // kAutomatic or kManual
};

struct ControlRange {
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
  std::int32_t step = 1;
  std::int32_t defaultValue = 0;
  std::int32_t flags = kManual;  // those that a setting may have
};

struct StandardControl {
  ControlRange range;
  ControlSetting setting;

  // Whether the camera takes this setting: a flag that it has and, if manual, a value of its range.
  bool Takes(const ControlSetting& wanted) const;

  // An automatic control keeps its value.
  void Apply(const ControlSetting& wanted);
};

// The controls of one family by their property number.
using StandardControls = std::map<std::int32_t, StandardControl>;

// What a simulated camera has when nothing else is asked for.
StandardControls DefaultControls(ControlFamily family);

}  // namespace zem::simulator
