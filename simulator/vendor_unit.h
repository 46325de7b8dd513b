// The camera's vendor extension unit: commands and what they act on.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "simulator/camera.h"
#include "simulator/h264_encoder.h"
#include "simulator/nvmem_control.h"

namespace zem::simulator {

// What the vendor unit's commands read and change. A register that was never written reads 0, but
// for the processor's first one, which names the chip series.
struct VendorState {
  std::map<std::uint32_t, std::uint16_t> processorRegisters = {{0, 0x5170}};  // by 24-bit address
  std::map<std::uint32_t, std::uint16_t> sensorRegisters;
  std::map<std::uint32_t, std::uint16_t> lensRegisters;
  std::map<std::uint16_t, std::uint8_t> codecRegisters;
  std::uint32_t lensPosition = 0;
  std::array<std::uint8_t, 6> firmwareVersion = {1, 2, 3, 4, 5, 6};
  std::uint8_t checkSumStatus = 0;
  std::array<std::uint8_t, 8> deviceInfo = {0x51, 0x70, 0x01, 0x00, 0x5A, 0x45, 0x00, 0x01};
  std::vector<std::uint8_t> nvmem = std::vector<std::uint8_t>(8192, 0xFF);
};

class VendorUnit : public ExtensionUnit {
 public:
  explicit VendorUnit(std::shared_ptr<H264Encoder> encoder = std::make_shared<H264Encoder>());

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

  VendorState state;

  // Called when the host sends the camera into ROM boot. Without it the camera has no boot loader
  // to go to, and treats the two commands like any other.
  std::function<void()> enterRomBoot;

 private:
  using Block = std::array<std::uint8_t, 8>;
  using LongBlock = std::array<std::uint8_t, 16>;

  Block RunIspCommand(const Block& command);
  Block RunRegisterCommand(const Block& command);
  Block RunVcpCommand(const Block& command);
  Block RunCodecCommand(const Block& command);
  LongBlock RunVcpExtendedCommand(const LongBlock& command);

  Block ispReply_ = {};
  Block vcpReply_ = {};
  LongBlock ispExtendedReply_ = {};
  LongBlock vcpExtendedReply_ = {};
  bool codecSelected_ = false;
  NvmemControl nvmem_{state.nvmem};
  std::shared_ptr<H264Encoder> encoder_;
};

}  // namespace zem::simulator
