#include "tests/sweep/plan.h"

namespace zem::testing::sweep {

const char* NameOf(Fault fault) {
  static constexpr std::array<const char*, kFaults + 1> kNames = {
      "fails", "fails in full", "short",      "garbage", "positive",
      "gone",  "busy",          "stays busy", "none"};
  return kNames.at(static_cast<std::size_t>(fault));
}

std::string TextOf(const Request& request) {
  static constexpr std::array<const char*, 5> kWays = {"set", "get", "range", "in", "out"};
  static constexpr std::array<const char*, 11> kTargets = {
      "vendor", "h264",      "skype",    "tirella", "orva",  "encoding",
      "probe",  "amplifier", "terminal", "mixer",   "volume"};
  return std::string(kWays.at(static_cast<std::size_t>(request.way))) + " " +
         kTargets.at(static_cast<std::size_t>(request.target)) + " " +
         std::to_string(request.number) + " [" + std::to_string(request.length) + "]";
}

}  // namespace zem::testing::sweep
