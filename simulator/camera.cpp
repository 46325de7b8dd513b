#include "simulator/camera.h"

#include <algorithm>
#include <utility>

#include "simulator/noise.h"

namespace zem::simulator {

Camera::Disturbance Camera::NextTransfer() {
  ++transfers_;
  failValue_ = 0;
  Disturbance disturbance;
  for (const Fault& fault : faults_) {
    if (!fault.Hits(transfers_)) {
      continue;
    }
    switch (fault.kind) {
      case Fault::Kind::kFail:
        disturbance.fail = true;
        failValue_ = fault.value;
        break;
      case Fault::Kind::kRefuse:
        disturbance.refuse = &fault;
        break;
      case Fault::Kind::kShort:
        disturbance.shorten = &fault;
        break;
      case Fault::Kind::kLength:
        disturbance.length = &fault;
        break;
      case Fault::Kind::kGarbage:
        disturbance.garbage = true;
        break;
      case Fault::Kind::kDrop:
        disturbance.drop = true;
        break;
      case Fault::Kind::kUnplug:
        Unplug();
        break;
      case Fault::Kind::kLeave:
        disturbance.leave = true;
        break;
      case Fault::Kind::kReplug:
        Unplug();
        if (replugObserver_) {
          replugObserver_();
        }
        break;
      case Fault::Kind::kSilent:
        disturbance.silent = true;
        break;
    }
  }
  return disturbance;
}

void Camera::Unplug() {
  const bool first = !std::exchange(unplugged_, true);
  if (first && unplugObserver_) {
    unplugObserver_();
  }
}

KeptMemory Camera::SaveMemory() const {
  KeptMemory memory = loadedMemory_;
  for (const auto& unit : nodes_) {
    if (unit != nullptr) {
      unit->SaveMemory(memory);
    }
  }
  return memory;
}

void Camera::Settle() {
  for (const auto& unit : nodes_) {
    if (unit != nullptr && !unplugged_) {
      unit->Settle();
    }
  }
}

void Camera::LoadMemory(const KeptMemory& memory) {
  loadedMemory_ = memory;
  for (const auto& unit : nodes_) {
    if (unit != nullptr) {
      unit->LoadMemory(memory);
    }
  }
}

void Camera::Report(const Transfer& transfer) const {
  if (observer_) {
    observer_(transfer);
  }
}

Outcome Camera::Set(std::size_t node, std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  const Disturbance disturbance = NextTransfer();
  ExtensionUnit& unit = *nodes_.at(node);
  Outcome outcome = Outcome::kDone;
  if (unplugged_) {
    outcome = Outcome::kUnplugged;
  } else if (disturbance.silent) {
    outcome = Outcome::kSilent;
  } else if (disturbance.fail) {
    outcome = Outcome::kFailed;
  } else if (disturbance.garbage) {
    std::vector<std::uint8_t> garbage(bytes.size());
    FillWithNoise(garbage, transfers_);
    outcome = unit.Set(selector, garbage);
  } else if (!disturbance.drop) {
    outcome = unit.Set(selector, bytes);
  }
  Report({true, unit.id(), selector, bytes.size(), {bytes.begin(), bytes.end()}, outcome});
  if (disturbance.leave) {
    Unplug();
  }
  return outcome;
}

Outcome Camera::Answer(ExtensionUnit& unit, std::uint16_t selector, std::size_t length,
                       const Disturbance& disturbance, std::vector<std::uint8_t>& answer) {
  if (unplugged_) {
    return Outcome::kUnplugged;
  }
  if (disturbance.silent) {
    return Outcome::kSilent;
  }
  if (disturbance.fail) {
    return Outcome::kFailed;
  }
  const Outcome outcome = unit.Get(selector, length, answer);
  if (outcome != Outcome::kDone) {
    return outcome;
  }
  if (answer.size() > length) {
    return Outcome::kWrongLength;
  }
  if (disturbance.garbage) {
    FillWithNoise(answer, transfers_);
  }
  if (disturbance.refuse != nullptr && !answer.empty()) {
    answer[0] = static_cast<std::uint8_t>(disturbance.refuse->value);
  }
  if (disturbance.shorten != nullptr) {
    answer.resize(std::min<std::size_t>(answer.size(), disturbance.shorten->value));
  }
  return Outcome::kDone;
}

Outcome Camera::Get(std::size_t node, std::uint16_t selector, std::span<std::uint8_t> bytes,
                    std::uint32_t& reported) {
  const Disturbance disturbance = NextTransfer();
  ExtensionUnit& unit = *nodes_.at(node);
  std::vector<std::uint8_t> answer;
  const Outcome outcome = Answer(unit, selector, bytes.size(), disturbance, answer);
  if (outcome != Outcome::kDone) {
    answer.clear();
  }
  std::copy(answer.begin(), answer.end(), bytes.begin());
  reported = static_cast<std::uint32_t>(answer.size());
  if (disturbance.length != nullptr) {
    reported = disturbance.length->value;
  }
  Report({false, unit.id(), selector, bytes.size(), std::move(answer), outcome});
  if (disturbance.leave) {
    Unplug();
  }
  return outcome;
}

// Finds a standard control for one access to it.
Outcome Camera::UseControl(ControlFamily family, std::int32_t property, StandardControl*& control) {
  const Disturbance disturbance = NextTransfer();
  if (unplugged_) {
    return Outcome::kUnplugged;
  }
  if (disturbance.silent) {
    return Outcome::kSilent;
  }
  if (disturbance.fail) {
    return Outcome::kFailed;
  }
  StandardControls& controls = controls_[family];
  const auto found = controls.find(property);
  if (found == controls.end()) {
    return Outcome::kNoSuchControl;
  }
  control = &found->second;
  return Outcome::kDone;
}

Outcome Camera::GetControl(ControlFamily family, std::int32_t property, ControlSetting& setting) {
  StandardControl* control = nullptr;
  const Outcome outcome = UseControl(family, property, control);
  if (outcome == Outcome::kDone) {
    setting = control->setting;
  }
  return outcome;
}

Outcome Camera::SetControl(ControlFamily family, std::int32_t property,
                           const ControlSetting& setting) {
  StandardControl* control = nullptr;
  const Outcome outcome = UseControl(family, property, control);
  if (outcome != Outcome::kDone) {
    return outcome;
  }
  if (!control->Takes(setting)) {
    return Outcome::kInvalidValue;
  }
  control->Apply(setting);
  return Outcome::kDone;
}

Outcome Camera::GetControlRange(ControlFamily family, std::int32_t property, ControlRange& range) {
  StandardControl* control = nullptr;
  const Outcome outcome = UseControl(family, property, control);
  if (outcome == Outcome::kDone) {
    range = control->range;
  }
  return outcome;
}

}  // namespace zem::simulator
