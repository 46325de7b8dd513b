// The camera's serial flash: its bytes, the areas they are divided into, and the protection that
// the flash controller's registers lift.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace zem::simulator {

struct FlashArea {
  enum class Use { kFirmware, kVision, kData, kCalibration, kTable };

  Use use;
  std::uint32_t address;
  std::uint32_t size;
};

// The area that the kind bytes (bytes 2 and 3 of a transfer control) name; null for none.
const FlashArea* FindFlashArea(std::uint8_t kind, std::uint8_t subKind);

const FlashArea& AreaFor(FlashArea::Use use);

class FlashMemory {
 public:
  static constexpr std::uint32_t kSize = 0x100000;
  static constexpr std::uint8_t kErased = 0xFF;

  FlashMemory() : bytes_(kSize, kErased) {}

  std::span<const std::uint8_t> bytes() const { return bytes_; }
  std::span<const std::uint8_t> BytesOf(const FlashArea& area) const {
    return bytes().subspan(area.address, area.size);
  }
  void Replace(std::vector<std::uint8_t> bytes) { bytes_ = std::move(bytes); }

  // The status register of the flash chip. Bits 2 to 7, any of them, protect the firmware.
  std::uint8_t status() const { return status_; }
  void SetStatus(std::uint8_t status) { status_ = status; }
  bool IsProtected(const FlashArea& area) const {
    return area.use == FlashArea::Use::kFirmware && (status_ & 0xFC) != 0;
  }

  void Erase(const FlashArea& area);

  // Writes `data`, which fits, at the beginning of an erased area.
  void Program(const FlashArea& area, std::span<const std::uint8_t> data);

  // The host wrote a processor register. Those of the flash controller act on the flash;
  // `registers` are all the processor's, and receive what the flash answers.
  void OnRegisterWrite(std::uint32_t address, std::uint16_t value,
                       std::map<std::uint32_t, std::uint16_t>& registers);

 private:
  std::vector<std::uint8_t> bytes_;
  std::uint8_t status_ = 0;
  bool writeEnabled_ = false;
};

}  // namespace zem::simulator
