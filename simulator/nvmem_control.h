// The control through which a host moves a unit's non-volatile memory, piece by piece.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/camera.h"

namespace zem::simulator {

class NvmemControl {
 public:
  // `memory` must outlive the control.
  explicit NvmemControl(std::vector<std::uint8_t>& memory) : memory_(memory) {}

  // A block with data is written to the memory; one with a read request makes the next Get answer
  // it. A piece that is too long or does not lie inside the memory fails, and so does Get then.
  Outcome Set(std::span<const std::uint8_t> bytes);

  // The last block, with the data of a read request filled in.
  Outcome Get(std::vector<std::uint8_t>& bytes) const;

 private:
  std::vector<std::uint8_t>& memory_;
  std::array<std::uint8_t, 32> block_ = {};
  bool failed_ = false;
};

}  // namespace zem::simulator
