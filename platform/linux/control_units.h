// The numbers of standard controls: V4L2's beside DirectShow's.
#pragma once

#include <cstdint>

namespace zem::platform {

enum class ControlUnit {
  kAsItIs,    // both count the same
  kDegrees,   // V4L2 in arc seconds, DirectShow in degrees
  kFStop,     // V4L2 in hundredths of the f-stop, DirectShow in tenths
  kExposure,  // V4L2 in 100 microseconds, DirectShow n for 2^n seconds
};

// The nearest of DirectShow's numbers. An exposure below 100 microseconds counts as that.
std::int32_t FromV4l2(ControlUnit unit, std::int32_t value);

// The nearest of V4L2's numbers, cut to what 32 bits hold.
std::int32_t ToV4l2(ControlUnit unit, std::int32_t value);

// The distance of two of DirectShow's numbers for that of two of V4L2's; at least 1.
std::int32_t StepFromV4l2(ControlUnit unit, std::int32_t step);

}  // namespace zem::platform
