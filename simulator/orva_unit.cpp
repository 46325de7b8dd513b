#include "simulator/orva_unit.h"

#include <algorithm>

#include "device/extension_units.h"
#include "platform/bytes.h"

namespace zem::simulator {
namespace {

Outcome KeepByte(std::span<const std::uint8_t> bytes, std::uint8_t& kept) {
  if (bytes.size() != 1) {
    return Outcome::kWrongLength;
  }
  kept = bytes[0];
  return Outcome::kDone;
}

Outcome KeepFormat(std::span<const std::uint8_t> bytes, OrvaUnit::Format& kept) {
  if (bytes.size() != kept.size()) {
    return Outcome::kWrongLength;
  }
  std::copy(bytes.begin(), bytes.end(), kept.begin());
  return Outcome::kDone;
}

}  // namespace

OrvaUnit::OrvaUnit() : ExtensionUnit(OrvaXu) {}

Outcome OrvaUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  switch (selector) {
    case orva_selector::kStreamId:
      return KeepByte(bytes, streamId);
    case orva_selector::kProbe:
      return KeepFormat(bytes, streams[streamId].probe);
    case orva_selector::kCommit:
      return KeepFormat(bytes, streams[streamId].commit);
    case orva_selector::kToggleLayer:
      return KeepByte(bytes, layer);
    default:
      return Outcome::kNoSuchControl;
  }
}

Outcome OrvaUnit::Get(std::uint16_t selector, std::size_t /*length*/,
                      std::vector<std::uint8_t>& bytes) {
  const auto answer = [&bytes](const Format& format) {
    bytes.assign(format.begin(), format.end());
  };
  switch (selector) {
    case orva_selector::kVersion:
      bytes = {version};
      return Outcome::kDone;
    case orva_selector::kBuildDay:
      bytes = {ByteOf(buildDay, 0), ByteOf(buildDay, 1)};
      return Outcome::kDone;
    case orva_selector::kEndpointSetting:
      bytes = {endpointSetting};
      return Outcome::kDone;
    case orva_selector::kProbe:
      answer(streams[streamId].probe);
      return Outcome::kDone;
    case orva_selector::kCommit:
      answer(streams[streamId].commit);
      return Outcome::kDone;
    default:
      return Outcome::kNoSuchControl;
  }
}

}  // namespace zem::simulator
