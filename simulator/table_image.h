// The table store that a simulated camera's memory holds.
#pragma once

#include <cstdint>
#include <vector>

namespace zem::simulator {

struct Table {
  std::uint8_t id = 0;
  std::vector<std::uint8_t> data;
};

// The image of a store with these tables. Throws std::invalid_argument when it does not fit the
// camera's memory.
std::vector<std::uint8_t> MakeTableImage(const std::vector<Table>& tables);

// The store of a camera fresh from the factory: table 1 with 01 02 ... 08, the empty table 2, and
// table 0x20 with 64 bytes 00 01 ... 3f.
std::vector<std::uint8_t> FactoryTableImage();

}  // namespace zem::simulator
