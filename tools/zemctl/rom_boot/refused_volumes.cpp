#include "tools/zemctl/rom_boot/refused_volumes.h"

#include <array>

#include "tools/zemctl/camera/opening_refusal.h"

namespace zemctl {
namespace {

struct Reason {
  std::uint32_t error;
  const char* one;
  const char* several;
  const char* next;
};
const std::array<Reason, 2> kReasons = {{
    {5, " may not be opened by this user", " may not be opened by this user",
     AdviceForPermission()},
    {170, " is in use by another program", " are in use by other programs",
     "End the program that uses it; \"sudo fuser -v FILE\" names it."},
}};

// The system has no way to volumes at all, so that each is refused.
constexpr std::uint32_t kNoWay = 50;

}  // namespace

RefusalWords Describe(const std::map<std::string, VolumeOpening>& refusals) {
  RefusalWords words;
  const auto next = [&](const std::string& sentence) {
    words.next += (words.next.empty() ? "" : " ") + sentence;
  };
  if (!refusals.empty() && refusals.begin()->second.error == kNoWay) {
    words.why = "; this kernel offers no SCSI generic devices: " + refusals.begin()->second.path +
                " is missing";
    next(
        "Load the driver with \"sudo modprobe sg\"; a kernel that has none cannot reach a camera "
        "in ROM boot.");
    return words;
  }
  for (const Reason& reason : kReasons) {
    std::string drives;
    unsigned count = 0;
    for (const auto& [drive, opening] : refusals) {
      if (opening.error == reason.error) {
        drives += (count++ == 0 ? "" : ", ") + drive + " (" + opening.path + ")";
      }
    }
    if (count > 0) {
      words.why += "; " + drives + (count == 1 ? reason.one : reason.several);
      next(reason.next);
    }
  }
  for (const auto& [drive, opening] : refusals) {
    if (opening.error != kReasons[0].error && opening.error != kReasons[1].error) {
      words.why += "; " + drive + " (" + opening.path + ") cannot be opened, error " +
                   std::to_string(opening.error);
    }
  }
  return words;
}

}  // namespace zemctl
