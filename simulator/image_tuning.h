// What the vendor unit's tuning commands act on: features of the image processing and the encoder,
// build date and serial number.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>

#include "simulator/command_block.h"

namespace zem::simulator {

class ImageTuning {
 public:
  // The reply to a command of the ISP or the VCP channel; none for a command that is not its own.
  std::optional<Block> RunIspCommand(const Block& command);
  std::optional<Block> RunVcpCommand(const Block& command);

  // The serial number, once a command has prepared it.
  bool serialPrepared = false;
  std::array<std::uint8_t, 32> serial = MakeSerial();

  // Features of the ISP command 0xFF by their sub-code; those never set read 0.
  std::map<std::uint8_t, std::uint8_t> features;
  std::array<std::uint8_t, 6> miscSettings = {};
  // The last of each ISP command that sets what no command reads: resolution, video quality,
  // flicker mode, H.264 mode, wide dynamic range.
  std::map<std::uint8_t, Block> unreadSettings;
  // Three 16-bit gains as they pass over the wire.
  std::array<std::uint8_t, 6> gains = {0x00, 0x01, 0x00, 0x01, 0x00, 0x01};
  bool manualGain = false;
  std::uint8_t recordingMode = 0;
  std::uint8_t maxQp = 51;
  std::uint8_t minQp = 0;

 private:
  static std::array<std::uint8_t, 32> MakeSerial();

  std::optional<Block> RunFeatureCommand(const Block& command);
  std::optional<Block> RunGainCommand(const Block& command);
};

}  // namespace zem::simulator
