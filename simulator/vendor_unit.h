// The camera's vendor extension unit: commands and what they act on.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "simulator/camera.h"
#include "simulator/command_block.h"
#include "simulator/data_channel.h"
#include "simulator/firmware_image.h"
#include "simulator/flash_memory.h"
#include "simulator/h264_encoder.h"
#include "simulator/image_tuning.h"
#include "simulator/nvmem_control.h"

namespace zem::simulator {

// Size of the non-volatile memory.
inline constexpr std::size_t kNvmemSize = 8192;

// How the camera is made.
struct VendorSettings {
  enum class Chip { k516x, k517x };

  Chip chip = Chip::k517x;
  DataChannelSettings data;
};

// What the vendor unit's commands read and change. A register that was never written reads 0, but
// for the processor's first one, which names the chip series, and 0x6900, whose bit 6 says that a
// serial flash can be protected (517x).
struct VendorState {
  std::map<std::uint32_t, std::uint16_t> processorRegisters;  // by 24-bit address
  std::map<std::uint32_t, std::uint16_t> sensorRegisters;
  std::map<std::uint32_t, std::uint16_t> lensRegisters;
  std::map<std::uint16_t, std::uint8_t> codecRegisters;
  std::uint32_t lensPosition = 0;
  // Of the firmware that runs: the one in the flash when the camera was switched on.
  FirmwareVersion firmwareVersion = {};
  std::uint8_t checkSumStatus = 0;  // of the firmware in the flash
  std::array<std::uint8_t, 8> deviceInfo = {};
  FlashMemory flash;
  std::vector<std::uint8_t> processorMemory;
  std::vector<std::uint8_t> nvmem = std::vector<std::uint8_t>(kNvmemSize, 0xFF);
};

class VendorUnit : public ExtensionUnit {
 public:
  explicit VendorUnit(const VendorSettings& settings = {},
                      std::shared_ptr<H264Encoder> encoder = std::make_shared<H264Encoder>());

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

  // Keeps "flash", "flashStatus" (the status register of its chip), "data" (what was sent last) and
  // "nvmem", which a burned table image replaces.
  void SaveMemory(KeptMemory& memory) const override;
  void LoadMemory(const KeptMemory& memory) override;
  void Settle() override { data_.Settle(); }

  // Called when an area of the flash has been erased, and when one has been burned.
  void SetFlashObserver(std::function<void()> observer) { flashObserver_ = std::move(observer); }

  VendorState state;
  ImageTuning tuning;

  // Called when the host sends the camera into ROM boot. Without it the camera has no boot loader
  // to go to, and treats the two commands like any other.
  std::function<void()> enterRomBoot;

 private:
  using LongBlock = std::array<std::uint8_t, 16>;

  Block RunIspCommand(const Block& command);
  Block RunRegisterCommand(const Block& command);
  Block RunVcpCommand(const Block& command);
  Outcome ReadMemory(std::size_t length, std::vector<std::uint8_t>& bytes);
  Outcome WriteMemory(std::span<const std::uint8_t> bytes);
  void CheckFirmware();
  Block RunCodecCommand(const Block& command);
  LongBlock RunVcpExtendedCommand(const LongBlock& command);

  Block ispReply_ = {};
  Block vcpReply_ = {};
  LongBlock ispExtendedReply_ = {};
  LongBlock vcpExtendedReply_ = {};
  bool codecSelected_ = false;
  NvmemControl nvmem_{state.nvmem};
  std::shared_ptr<H264Encoder> encoder_;
  bool transferControlled_ = false;  // the VCP channel's last command was a transfer control
  std::size_t memoryPosition_ = 0;
  std::function<void()> flashObserver_;
  DataChannel data_;
};

}  // namespace zem::simulator
