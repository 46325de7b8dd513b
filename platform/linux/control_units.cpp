#include "platform/linux/control_units.h"

#include <algorithm>
#include <limits>

namespace zem::platform {
namespace {

constexpr std::int32_t kMaximum = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMinimum = std::numeric_limits<std::int32_t>::min();

// V4L2's units in one of DirectShow's, where the two differ by a factor.
std::int64_t RatioOf(ControlUnit unit) {
  switch (unit) {
    case ControlUnit::kDegrees:
      return 3600;
    case ControlUnit::kFStop:
      return 10;
    case ControlUnit::kAsItIs:
    case ControlUnit::kExposure:
      break;
  }
  return 1;
}

// Halves go away from zero.
std::int64_t DivideToNearest(std::int64_t number, std::int64_t divisor) {
  const std::int64_t half = number < 0 ? -(divisor / 2) : divisor / 2;
  return (number + half) / divisor;
}

constexpr double kUnitsInASecond = 10000;

// 2^exponent seconds in 100 microseconds.
double UnitsOf(std::int32_t exponent) {
  double units = kUnitsInASecond;
  for (; exponent > 0; --exponent) {
    units *= 2;
  }
  for (; exponent < 0; ++exponent) {
    units /= 2;
  }
  return units;
}

// Behind these no 32-bit number of 100 microseconds has its exponent.
constexpr std::int32_t kShortestExposure = -13;
constexpr std::int32_t kLongestExposure = 18;

std::int32_t ExponentOf(std::int32_t units) {
  const double wanted = std::max(units, 1);
  std::int32_t exponent = kShortestExposure;
  // 2^(n + 1/2) is where n + 1 becomes nearer; its square is 2 * 4^n.
  while (exponent < kLongestExposure &&
         wanted * wanted >= 2 * UnitsOf(exponent) * UnitsOf(exponent)) {
    ++exponent;
  }
  return exponent;
}

}  // namespace

std::int32_t FromV4l2(ControlUnit unit, std::int32_t value) {
  return unit == ControlUnit::kExposure
             ? ExponentOf(value)
             : static_cast<std::int32_t>(DivideToNearest(value, RatioOf(unit)));
}

std::int32_t ToV4l2(ControlUnit unit, std::int32_t value) {
  if (unit == ControlUnit::kExposure) {
    const double units = UnitsOf(std::clamp(value, kShortestExposure, kLongestExposure)) + 0.5;
    return units < kMaximum ? static_cast<std::int32_t>(units) : kMaximum;
  }
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(value * RatioOf(unit), kMinimum, kMaximum));
}

std::int32_t StepFromV4l2(ControlUnit unit, std::int32_t step) {
  return unit == ControlUnit::kExposure ? 1 : std::max(FromV4l2(unit, step), 1);
}

}  // namespace zem::platform
