#include "simulator/flash_memory.h"

#include <algorithm>
#include <array>

namespace zem::simulator {
namespace {

constexpr std::array<FlashArea, 5> kAreas = {{
    {FlashArea::Use::kFirmware, 0x00000, 0x80000},
    {FlashArea::Use::kVision, 0x80000, 0x40000},
    {FlashArea::Use::kData, 0xC0000, 0x20000},
    {FlashArea::Use::kCalibration, 0xE0000, 0x10000},
    {FlashArea::Use::kTable, 0xF0000, 0x02000},
}};

// Registers of the flash controller.
constexpr std::uint32_t kStart = 0x6710;
constexpr std::uint32_t kOpcode = 0x6714;
constexpr std::uint32_t kDataOut = 0x6720;
constexpr std::uint32_t kDataIn = 0x6730;

// What the start register begins: a command that reads a byte, a plain one, one that writes a byte.
constexpr std::uint16_t kStartRead = 0xA8;
constexpr std::uint16_t kStartPlain = 0x80;
constexpr std::uint16_t kStartWrite = 0x88;

constexpr std::uint16_t kWriteStatus = 0x01;
constexpr std::uint16_t kReadStatus = 0x05;
constexpr std::uint16_t kWriteEnable = 0x06;

}  // namespace

const FlashArea& AreaFor(FlashArea::Use use) { return kAreas.at(static_cast<std::size_t>(use)); }

const FlashArea* FindFlashArea(std::uint8_t kind, std::uint8_t subKind) {
  switch (kind) {
    case 0x00:
      return &AreaFor(FlashArea::Use::kFirmware);
    case 0x01:
      return &AreaFor(FlashArea::Use::kVision);
    case 0x02:
      return &AreaFor(FlashArea::Use::kData);
    case 0x03:
      if (subKind == 0x04) {
        return &AreaFor(FlashArea::Use::kTable);
      }
      return &AreaFor(subKind == 0x05 ? FlashArea::Use::kCalibration : FlashArea::Use::kFirmware);
    default:
      return nullptr;
  }
}

void FlashMemory::Erase(const FlashArea& area) {
  std::fill_n(bytes_.begin() + area.address, area.size, kErased);
}

void FlashMemory::Program(const FlashArea& area, std::span<const std::uint8_t> data) {
  std::copy(data.begin(), data.end(), bytes_.begin() + area.address);
}

void FlashMemory::OnRegisterWrite(std::uint32_t address, std::uint16_t value,
                                  std::map<std::uint32_t, std::uint16_t>& registers) {
  if (address != kStart) {
    return;
  }
  const std::uint16_t opcode = registers[kOpcode];
  if (value == kStartRead && opcode == kReadStatus) {
    registers[kDataIn] = status_;
  } else if (value == kStartPlain && opcode == kWriteEnable) {
    writeEnabled_ = true;
  } else if (value == kStartWrite && opcode == kWriteStatus && writeEnabled_) {
    status_ = static_cast<std::uint8_t>(registers[kDataOut]);
    writeEnabled_ = false;
  }
}

}  // namespace zem::simulator
