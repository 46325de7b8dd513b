// Volumes that are there but may not be opened: a camera in ROM boot may be one of them.
#pragma once

#include <map>
#include <string>

#include "tools/zemctl/camera/scsi_record.h"

namespace zemctl {

struct RefusalWords {
  std::string why;   // "; C: (/dev/sg0) is in use by another program"; empty when none is refused
  std::string next;  // what to do about it
};

RefusalWords Describe(const std::map<std::string, VolumeOpening>& refusals);

}  // namespace zemctl
