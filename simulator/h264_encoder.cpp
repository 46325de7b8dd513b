#include "simulator/h264_encoder.h"

#include <algorithm>

#include "platform/bytes.h"

namespace zem::simulator {
namespace {

constexpr std::size_t kListHeaderSize = 4;
constexpr std::size_t kEntrySize = 22;

std::vector<std::uint8_t> ListBytes(const std::vector<H264Format>& formats) {
  if (formats.empty()) {
    return {};
  }
  std::vector<std::uint8_t> list(kListHeaderSize + formats.size() * kEntrySize);
  StoreLe16(list.data(), static_cast<std::uint16_t>(list.size()));
  StoreLe16(&list[2], static_cast<std::uint16_t>(formats.size()));
  std::uint8_t* entry = &list[kListHeaderSize];
  for (const H264Format& format : formats) {
    StoreLe16(entry, kEntrySize);
    entry[2] = format.type;
    entry[3] = format.frameIndex;
    StoreLe16(entry + 4, format.width);
    StoreLe16(entry + 6, format.height);
    StoreLe16(entry + 8, format.subWidth);
    StoreLe16(entry + 10, format.subHeight);
    StoreLe32(entry + 12, format.maxBitRate);
    StoreLe32(entry + 16, format.minBitRate);
    entry[20] = format.maxFps;
    entry[21] = format.minFps;
    entry += kEntrySize;
  }
  return list;
}

}  // namespace

H264Encoder::H264Encoder(const std::vector<H264Format>& formats)
    : list_(ListBytes(formats)), listPosition_(list_.size()) {}

std::optional<Block> H264Encoder::RunIspCommand(const Block& command) {
  switch (command[0]) {
    case 0x02:
      fps = LoadLe16(&command[1]);
      return Block{kAcceptedStatus};
    case 0x04:
      ++keyFrames;
      return Block{kAcceptedStatus};
    case 0x08:
      // Any other sub-code sets a quality, which is not the encoder's.
      if (command[1] != 0xFF) {
        return std::nullopt;
      }
      bitRate = LoadLe16(&command[2]);
      return Block{kAcceptedStatus};
    default:
      return std::nullopt;
  }
}

std::optional<Block> H264Encoder::RunVcpCommand(const Block& command) {
  switch (command[0]) {
    case 0x0A:
      if (command[1] != 0x01) {
        return std::nullopt;
      }
      listPosition_ = 0;
      return Block{list_.empty() ? kRefusedStatus : kAcceptedStatus};
    case 0x0B:
      resolutionCode = command[1];
      return Block{kAcceptedStatus};
    case 0x0C:
      running = command[1] == 0x02;
      return Block{kAcceptedStatus};
    case 0x23:
      multicastStream = command[1];
      return Block{kAcceptedStatus};
    case 0x24:
      multicastLayer = command[1];
      return Block{kAcceptedStatus};
    case 0x25:
      multicastFormat = command;
      return Block{kAcceptedStatus};
    default:
      return std::nullopt;
  }
}

H264Encoder::Piece H264Encoder::NextListPiece() {
  Piece piece = {};
  const std::size_t count = std::min(piece.size(), list_.size() - listPosition_);
  std::copy_n(list_.data() + listPosition_, count, piece.begin());
  listPosition_ += count;
  return piece;
}

}  // namespace zem::simulator
