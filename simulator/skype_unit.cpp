#include "simulator/skype_unit.h"

#include <utility>

#include "device/extension_units.h"

namespace zem::simulator {

SkypeUnit::SkypeUnit(std::uint8_t version, std::shared_ptr<H264Encoder> encoder)
    : ExtensionUnit(SkypeXu), version_(version), encoder_(std::move(encoder)) {}

Outcome SkypeUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  if (selector != skype_selector::kResolution && selector != skype_selector::kH264Switch) {
    return Outcome::kNoSuchControl;
  }
  if (bytes.size() != 1) {
    return Outcome::kWrongLength;
  }
  if (selector == skype_selector::kResolution) {
    encoder_->resolutionCode = bytes[0];
  } else {
    encoder_->running = bytes[0] == 2;
  }
  return Outcome::kDone;
}

Outcome SkypeUnit::Get(std::uint16_t selector, std::size_t /*length*/,
                       std::vector<std::uint8_t>& bytes) {
  if (selector != skype_selector::kVersion) {
    return Outcome::kNoSuchControl;
  }
  bytes = {version_};
  return Outcome::kDone;
}

}  // namespace zem::simulator
