// The camera's encoding unit and stream-probe unit: controls that keep what is written to them.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "simulator/camera.h"

namespace zem::simulator {

// Selectors 1 to 8, in whatever length the host writes. A read gets what was written, cut or filled
// up with zeros to the length it asks for.
class EncodingUnit : public ExtensionUnit {
 public:
  EncodingUnit();

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

 private:
  std::map<std::uint16_t, std::vector<std::uint8_t>> values_;
};

// The probe (selector 23) and the commit (24), 51 bytes each.
class StreamProbeUnit : public ExtensionUnit {
 public:
  StreamProbeUnit();

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

 private:
  std::map<std::uint16_t, std::array<std::uint8_t, 51>> blocks_;
};

}  // namespace zem::simulator
