#include "simulator/h264_unit.h"

#include <algorithm>
#include <utility>

#include "device/extension_units.h"

namespace zem::simulator {

H264Unit::H264Unit(std::shared_ptr<H264Encoder> encoder)
    : ExtensionUnit(H264Xu), encoder_(std::move(encoder)) {}

Outcome H264Unit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  if (selector != h264_selector::kProbe && selector != h264_selector::kCommit) {
    return Outcome::kNoSuchControl;
  }
  Configuration configuration = {};
  if (bytes.size() != configuration.size()) {
    return Outcome::kWrongLength;
  }
  std::copy(bytes.begin(), bytes.end(), configuration.begin());
  if (selector == h264_selector::kProbe) {
    probe = configuration;
  } else {
    commits.push_back(configuration);
    encoder_->running = true;
  }
  return Outcome::kDone;
}

Outcome H264Unit::Get(std::uint16_t selector, std::size_t /*length*/,
                      std::vector<std::uint8_t>& bytes) {
  if (selector != h264_selector::kProbe) {
    return Outcome::kNoSuchControl;
  }
  bytes.assign(probe.begin(), probe.end());
  return Outcome::kDone;
}

}  // namespace zem::simulator
