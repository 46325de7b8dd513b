#include "simulator/usb/terminal_controls.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>

#include "platform/linux/control_units.h"
#include "simulator/standard_controls.h"

namespace zem::simulator::usb {
namespace {

using platform::ControlUnit;
using platform::ToV4l2;
using Bytes = std::vector<std::uint8_t>;

// A control on the wire: the properties in it one behind the other, each of `size` bytes.
struct WireControl {
  std::uint8_t selector;
  std::size_t size;
  ControlUnit unit;
  std::vector<std::int32_t> properties;
};

// The switch between the automatic and the manual setting of a property.
struct WireSwitch {
  std::uint8_t selector;
  std::int32_t property;
  std::uint8_t automatic;
  std::uint8_t manual;
};

const std::vector<WireControl>& ControlsOf(ControlFamily family) {
  static const std::vector<WireControl> processing = {
      {0x02, 2, ControlUnit::kAsItIs, {0}}, {0x03, 2, ControlUnit::kAsItIs, {1}},
      {0x06, 2, ControlUnit::kAsItIs, {2}}, {0x07, 2, ControlUnit::kAsItIs, {3}},
      {0x08, 2, ControlUnit::kAsItIs, {4}}, {0x09, 2, ControlUnit::kAsItIs, {5}},
      {0x0A, 2, ControlUnit::kAsItIs, {7}}, {0x01, 2, ControlUnit::kAsItIs, {8}},
      {0x04, 2, ControlUnit::kAsItIs, {9}}};
  static const std::vector<WireControl> terminal = {{0x0D, 4, ControlUnit::kDegrees, {0, 1}},
                                                    {0x0B, 2, ControlUnit::kAsItIs, {3}},
                                                    {0x04, 4, ControlUnit::kExposure, {4}},
                                                    {0x09, 2, ControlUnit::kFStop, {5}},
                                                    {0x06, 2, ControlUnit::kAsItIs, {6}}};
  return family == ControlFamily::kVideoProcessing ? processing : terminal;
}

// The exposure's modes are bits: manual, and aperture priority.
const std::vector<WireSwitch>& SwitchesOf(ControlFamily family) {
  static const std::vector<WireSwitch> processing = {{0x10, 2, 1, 0}, {0x0B, 7, 1, 0}};
  static const std::vector<WireSwitch> terminal = {{0x02, 4, 8, 1}, {0x08, 6, 1, 0}};
  return family == ControlFamily::kVideoProcessing ? processing : terminal;
}

template <class Row>
const Row* FindRow(const std::vector<Row>& rows, std::uint8_t selector) {
  const auto found = std::find_if(rows.begin(), rows.end(),
                                  [selector](const Row& row) { return row.selector == selector; });
  return found != rows.end() ? &*found : nullptr;
}

Answer AnswerOfTerminal(Outcome outcome) {
  return AnswerOf(outcome, {}, {StallReason::kInvalidControl, StallReason::kOutOfRange});
}

void AddNumber(Bytes& bytes, std::int32_t number, std::size_t size) {
  for (std::size_t index = 0; index < size; ++index) {
    bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(number) >> (8 * index)));
  }
}

// Signed as wide as it is.
std::int32_t ReadNumber(std::span<const std::uint8_t> bytes) {
  std::uint32_t number = 0;
  for (std::size_t index = bytes.size(); index-- > 0;) {
    number = (number << 8) | bytes[index];
  }
  const std::size_t missing = 32 - 8 * bytes.size();
  return static_cast<std::int32_t>(number << missing) >> missing;
}

constexpr std::uint8_t kGetAndSet = 3;

// The number of a range that a request asks for; nothing for other requests.
std::optional<std::int32_t> OfRange(const ControlRange& range, VideoRequest request) {
  switch (request) {
    case VideoRequest::kGetMinimum:
      return range.minimum;
    case VideoRequest::kGetMaximum:
      return range.maximum;
    case VideoRequest::kGetDefault:
      return range.defaultValue;
    default:
      return std::nullopt;
  }
}

// A step on the wire is as wide as one of the model's; an exposure's steps are not even.
std::int32_t WireStep(ControlUnit unit, std::int32_t step) {
  return unit == ControlUnit::kExposure ? 1 : ToV4l2(unit, step);
}

class FamilyControls {
 public:
  FamilyControls(Camera& camera, ControlFamily family)
      : camera_(camera), family_(family), controls_(DefaultControls(family)) {}

  Answer Request(const ControlRequest& request) {
    if (const WireControl* const control = FindRow(ControlsOf(family_), request.selector);
        control != nullptr && HasAll(*control)) {
      return RequestValue(*control, request);
    }
    if (const WireSwitch* const found = FindRow(SwitchesOf(family_), request.selector);
        found != nullptr && HasAutomatic(found->property)) {
      return RequestSwitch(*found, request);
    }
    return Answer::Stalled(StallReason::kInvalidControl);
  }

 private:
  bool HasAll(const WireControl& control) const {
    return std::all_of(control.properties.begin(), control.properties.end(),
                       [this](std::int32_t property) { return controls_.contains(property); });
  }

  bool HasAutomatic(std::int32_t property) const {
    const auto found = controls_.find(property);
    return found != controls_.end() && (found->second.range.flags & kAutomatic) != 0;
  }

  Answer RequestValue(const WireControl& control, const ControlRequest& request) {
    const std::size_t length = control.size * control.properties.size();
    switch (request.request) {
      case VideoRequest::kSetCurrent:
        return SetValues(control, request.data, length);
      case VideoRequest::kGetCurrent:
        return GetValues(control);
      case VideoRequest::kGetLength:
        return Answer::Done({static_cast<std::uint8_t>(length), 0});
      case VideoRequest::kGetInformation:
        return Answer::Done({kGetAndSet});
      default:
        return DescribeValues(control, request.request);
    }
  }

  Answer DescribeValues(const WireControl& control, VideoRequest request) const {
    Bytes bytes;
    for (const std::int32_t property : control.properties) {
      const ControlRange& range = controls_.at(property).range;
      const auto number = OfRange(range, request);
      AddNumber(bytes, number ? ToV4l2(control.unit, *number) : WireStep(control.unit, range.step),
                control.size);
    }
    return Answer::Done(std::move(bytes));
  }

  Answer GetValues(const WireControl& control) {
    Bytes bytes;
    for (const std::int32_t property : control.properties) {
      ControlSetting setting;
      if (const Outcome outcome = camera_.GetControl(family_, property, setting);
          outcome != Outcome::kDone) {
        return AnswerOfTerminal(outcome);
      }
      AddNumber(bytes, ToV4l2(control.unit, setting.value), control.size);
    }
    return Answer::Done(std::move(bytes));
  }

  Answer SetValues(const WireControl& control, std::span<const std::uint8_t> data,
                   std::size_t length) {
    if (data.size() != length) {
      return Answer::Stalled(StallReason::kInvalidRequest);
    }
    for (const std::int32_t property : control.properties) {
      const std::int32_t number = ReadNumber(data.first(control.size));
      data = data.subspan(control.size);
      ControlSetting present;
      Outcome outcome = camera_.GetControl(family_, property, present);
      if (outcome == Outcome::kDone && present.flags == kAutomatic) {
        return Answer::Stalled(StallReason::kWrongState);
      }
      if (outcome == Outcome::kDone) {
        outcome = camera_.SetControl(family_, property,
                                     {platform::FromV4l2(control.unit, number), kManual});
      }
      if (outcome != Outcome::kDone) {
        return AnswerOfTerminal(outcome);
      }
    }
    return Answer::Done();
  }

  Answer RequestSwitch(const WireSwitch& row, const ControlRequest& request) {
    const auto stateOf = [&row](std::int32_t flags) {
      return Answer::Done({flags == kAutomatic ? row.automatic : row.manual});
    };
    ControlSetting setting = controls_.at(row.property).setting;
    switch (request.request) {
      case VideoRequest::kSetCurrent:
        return Turn(row, request.data);
      case VideoRequest::kGetCurrent: {
        const Outcome outcome = camera_.GetControl(family_, row.property, setting);
        return outcome == Outcome::kDone ? stateOf(setting.flags) : AnswerOfTerminal(outcome);
      }
      case VideoRequest::kGetDefault:
        return stateOf(setting.flags);
      case VideoRequest::kGetLength:
        return Answer::Done({1, 0});
      case VideoRequest::kGetInformation:
        return Answer::Done({kGetAndSet});
      case VideoRequest::kGetResolution:
        // Of modes that are bits it says which there are.
        return Answer::Done({static_cast<std::uint8_t>(row.automatic | row.manual)});
      case VideoRequest::kGetMinimum:
        return Answer::Done({std::min(row.automatic, row.manual)});
      case VideoRequest::kGetMaximum:
        return Answer::Done({std::max(row.automatic, row.manual)});
    }
    return Answer::Stalled(StallReason::kInvalidRequest);
  }

  Answer Turn(const WireSwitch& row, std::span<const std::uint8_t> data) {
    if (data.size() != 1) {
      return Answer::Stalled(StallReason::kInvalidRequest);
    }
    if (data[0] != row.automatic && data[0] != row.manual) {
      return Answer::Stalled(StallReason::kInvalidValue);
    }
    ControlSetting setting;
    const Outcome outcome = camera_.GetControl(family_, row.property, setting);
    if (outcome != Outcome::kDone) {
      return AnswerOfTerminal(outcome);
    }
    setting.flags = data[0] == row.automatic ? kAutomatic : kManual;
    return AnswerOfTerminal(camera_.SetControl(family_, row.property, setting));
  }

  Camera& camera_;
  ControlFamily family_;
  StandardControls controls_;
};

}  // namespace

Answer RequestStandardControl(Camera& camera, ControlFamily family, const ControlRequest& request) {
  return FamilyControls(camera, family).Request(request);
}

}  // namespace zem::simulator::usb
