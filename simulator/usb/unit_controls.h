// The extension units of a simulated camera by the controls that each has. On the wire a control
// has one length, which the camera tells.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/com.h"
#include "simulator/options.h"

namespace zem::simulator::usb {

struct UnitControl {
  std::uint8_t selector;
  std::uint16_t length;
  bool isRead;
  bool isWritten;
};

struct DescribedUnit {
  GUID id;
  std::vector<UnitControl> controls;
};

// The units that the options ask for, in the order of the model's nodes.
std::vector<DescribedUnit> DescribeUnits(const CameraOptions& options);

}  // namespace zem::simulator::usb
