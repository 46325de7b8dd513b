// The camera's TIRELLA unit: a memory of its own and an LED.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "simulator/camera.h"
#include "simulator/nvmem_control.h"

namespace zem::simulator {

struct TirellaState {
  std::vector<std::uint8_t> nvmem = std::vector<std::uint8_t>(256, 0xFF);
  std::uint8_t led = 0;
};

class TirellaUnit : public ExtensionUnit {
 public:
  TirellaUnit();

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

  // Keeps "tirellaNvmem".
  void SaveMemory(KeptMemory& memory) const override { memory["tirellaNvmem"] = state.nvmem; }
  void LoadMemory(const KeptMemory& memory) override {
    LoadBytes(memory, "tirellaNvmem", state.nvmem);
  }

  TirellaState state;

 private:
  NvmemControl nvmem_{state.nvmem};
};

}  // namespace zem::simulator
