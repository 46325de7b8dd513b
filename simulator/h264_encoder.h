// The camera's H.264 encoder: what several units and commands read and change.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/command_block.h"

namespace zem::simulator {

// One format of the camera's list.
struct H264Format {
  std::uint8_t type = 1;
  std::uint8_t frameIndex = 0;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::uint16_t subWidth = 0;
  std::uint16_t subHeight = 0;
  std::uint32_t maxBitRate = 2500;
  std::uint32_t minBitRate = 100;
  std::uint8_t maxFps = 30;
  std::uint8_t minFps = 5;
};

class H264Encoder {
 public:
  using Piece = std::array<std::uint8_t, 32>;

  // As many as the list's 16-bit length can say.
  static constexpr std::size_t kMostFormats = 2978;

  // A camera without formats has no list to tell.
  explicit H264Encoder(const std::vector<H264Format>& formats = {});

  // Carries out a command block of the vendor unit and gives its reply; nothing for a command that
  // is none of the encoder's.
  std::optional<Block> RunIspCommand(const Block& command);
  std::optional<Block> RunVcpCommand(const Block& command);

  // The next 32 bytes of the list; zeros behind its end and before it is asked for.
  Piece NextListPiece();

  bool running = false;
  std::uint8_t resolutionCode = 0;
  std::uint16_t fps = 30;
  std::uint16_t bitRate = 2500;
  unsigned keyFrames = 0;  // those that a host asked for

  // What the multicast commands set: the stream they act on, its format as sent, the layer.
  std::uint8_t multicastStream = 0;
  std::uint8_t multicastLayer = 0;
  Block multicastFormat = {};

 private:
  std::vector<std::uint8_t> list_;
  std::size_t listPosition_ = 0;
};

}  // namespace zem::simulator
