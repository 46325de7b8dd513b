// The table of the extension units' controls beside the model itself.
#include "simulator/usb/unit_controls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "device/extension_units.h"

namespace {

using zem::simulator::CameraOptions;
using zem::simulator::MakeCamera;
using zem::simulator::Outcome;
using zem::simulator::usb::DescribedUnit;
using zem::simulator::usb::DescribeUnits;
using zem::simulator::usb::UnitControl;
using Bytes = std::vector<std::uint8_t>;

CameraOptions AllUnits() {
  CameraOptions options;
  options.h264Unit = true;
  options.skypeUnit = true;
  options.orvaUnit = true;
  options.encodingUnit = true;
  options.streamProbeUnit = true;
  options.tirellaUnit = true;
  return options;
}

const UnitControl* FindControl(const DescribedUnit& unit, std::uint16_t selector) {
  const auto found =
      std::find_if(unit.controls.begin(), unit.controls.end(),
                   [selector](const UnitControl& control) { return control.selector == selector; });
  return found != unit.controls.end() ? &*found : nullptr;
}

TEST(UnitControlsTest, UnitsAreTheModelsInItsOrder) {
  const auto camera = MakeCamera(AllUnits());
  const auto units = DescribeUnits(AllUnits());
  ASSERT_EQ(camera->nodeCount(), units.size() + 2);
  for (std::size_t index = 0; index < units.size(); ++index) {
    EXPECT_TRUE(units[index].id == camera->UnitAt(index + 2)->id()) << index;
  }
  CameraOptions none;
  none.vendorUnit = false;
  EXPECT_TRUE(DescribeUnits(none).empty());
}

// Every selector in every direction: the model takes just those of the table, in their lengths.
TEST(UnitControlsTest, ControlsAreThoseThatTheModelTakes) {
  for (const bool highSpeed : {true, false}) {
    CameraOptions options = AllUnits();
    options.vendor.data.highSpeed = highSpeed;
    const auto units = DescribeUnits(options);
    for (std::size_t index = 0; index < units.size(); ++index) {
      for (std::uint16_t selector = 0; selector < 256; ++selector) {
        const UnitControl* const control = FindControl(units[index], selector);
        const auto camera = MakeCamera(options);
        const std::size_t node = index + 2;
        Bytes bytes(control != nullptr ? control->length : 512);
        std::uint32_t moved = 0;
        const Outcome read = camera->Get(node, selector, bytes, moved);
        const Outcome written = camera->Set(node, selector, bytes);
        if (control == nullptr) {
          EXPECT_NE(read, Outcome::kDone) << index << " " << selector;
          EXPECT_NE(written, Outcome::kDone) << index << " " << selector;
          continue;
        }
        EXPECT_EQ(read == Outcome::kNoSuchControl, !control->isRead) << index << " " << selector;
        EXPECT_EQ(written == Outcome::kNoSuchControl, !control->isWritten)
            << index << " " << selector;
        EXPECT_NE(read, Outcome::kWrongLength) << index << " " << selector;
        EXPECT_NE(written, Outcome::kWrongLength) << index << " " << selector;
        if (read == Outcome::kDone) {
          EXPECT_EQ(moved, control->length) << index << " " << selector;
        }
      }
    }
  }
}

TEST(UnitControlsTest, LengthsOfTheDataControlsAreTheOptions) {
  CameraOptions options;
  options.vendor.data.dataLength = 64;
  const DescribedUnit fast = DescribeUnits(options).front();
  EXPECT_EQ(FindControl(fast, 3)->length, 64);
  EXPECT_EQ(FindControl(fast, 8)->length, 512);
  EXPECT_EQ(FindControl(fast, 13)->length, 512);
  options.vendor.data.highSpeed = false;
  const DescribedUnit slow = DescribeUnits(options).front();
  EXPECT_EQ(FindControl(slow, 8)->length, 16);
  EXPECT_EQ(FindControl(slow, 13), nullptr);
}

}  // namespace
