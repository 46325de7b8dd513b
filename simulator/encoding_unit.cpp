#include "simulator/encoding_unit.h"

#include <algorithm>

#include "device/extension_units.h"

namespace zem::simulator {
namespace {

constexpr std::uint16_t kFirstEncodingControl = 1;
constexpr std::uint16_t kLastEncodingControl = 8;

bool IsEncodingControl(std::uint16_t selector) {
  return selector >= kFirstEncodingControl && selector <= kLastEncodingControl;
}

// 1920x1080 at 30 pictures a second, two reference frames.
constexpr std::array<std::uint8_t, 51> kFirstBlock = {
    0x00, 0x00, 0x01, 0x00, 0x15, 0x16, 0x05, 0x00, 0x1E, 0x00, 0x1D, 0x00, 0x32,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x0C, 0x00, 0x00,
    0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x02, 0x01, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x40, 0xBB, 0x03, 0x00};

}  // namespace

EncodingUnit::EncodingUnit() : ExtensionUnit(EncodingUnitXu) {}

Outcome EncodingUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  if (!IsEncodingControl(selector)) {
    return Outcome::kNoSuchControl;
  }
  values_[selector].assign(bytes.begin(), bytes.end());
  return Outcome::kDone;
}

Outcome EncodingUnit::Get(std::uint16_t selector, std::size_t length,
                          std::vector<std::uint8_t>& bytes) {
  if (!IsEncodingControl(selector)) {
    return Outcome::kNoSuchControl;
  }
  bytes = values_[selector];
  bytes.resize(length);
  return Outcome::kDone;
}

StreamProbeUnit::StreamProbeUnit()
    : ExtensionUnit(StreamProbeXu),
      blocks_({{stream_probe_selector::kProbe, kFirstBlock},
               {stream_probe_selector::kCommit, kFirstBlock}}) {}

Outcome StreamProbeUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  const auto block = blocks_.find(selector);
  if (block == blocks_.end()) {
    return Outcome::kNoSuchControl;
  }
  if (bytes.size() != block->second.size()) {
    return Outcome::kWrongLength;
  }
  std::copy(bytes.begin(), bytes.end(), block->second.begin());
  return Outcome::kDone;
}

Outcome StreamProbeUnit::Get(std::uint16_t selector, std::size_t /*length*/,
                             std::vector<std::uint8_t>& bytes) {
  const auto block = blocks_.find(selector);
  if (block == blocks_.end()) {
    return Outcome::kNoSuchControl;
  }
  bytes.assign(block->second.begin(), block->second.end());
  return Outcome::kDone;
}

}  // namespace zem::simulator
