#include "simulator/image_tuning.h"

#include <algorithm>

namespace zem::simulator {
namespace {

constexpr std::uint8_t kFocusValues = 9;

// Sub-codes of the feature command.
constexpr std::uint8_t kFocusRead = 0x09;
constexpr std::uint8_t kMiscWrite = 0x11;
constexpr std::uint8_t kMiscRead = 0x12;
constexpr std::array<std::uint8_t, 5> kByteFeatures = {0x00, 0x05, 0x08, 0x0B, 0x13};

// A reply that carries `values` in its bytes 2 to 7.
Block ReplyWith(const std::array<std::uint8_t, 6>& values) {
  Block reply = {kAcceptedStatus};
  std::copy(values.begin(), values.end(), reply.begin() + 2);
  return reply;
}

Block Keep(const Block& command, std::array<std::uint8_t, 6>& values) {
  std::copy(command.begin() + 2, command.end(), values.begin());
  return Block{kAcceptedStatus};
}

}  // namespace

std::array<std::uint8_t, 32> ImageTuning::MakeSerial() {
  std::array<std::uint8_t, 32> serial = {};
  for (std::size_t index = 0; index < serial.size(); ++index) {
    serial[index] = static_cast<std::uint8_t>(0xA0 + index);
  }
  return serial;
}

std::optional<Block> ImageTuning::RunIspCommand(const Block& command) {
  switch (command[0]) {
    case 0x0C:
      return Block{0, '2', '4', 'M', 'a', 'r', '0', '5'};
    case 0x03:
    case 0x08:
    case 0x09:
    case 0x0D:
    case 0x0E:
      unreadSettings[command[0]] = command;
      return Block{kAcceptedStatus};
    case 0x10:
      recordingMode = command[1];
      return Block{kAcceptedStatus};
    case 0x11:
      return RunGainCommand(command);
    case 0xFF:
      return RunFeatureCommand(command);
    default:
      return std::nullopt;
  }
}

std::optional<Block> ImageTuning::RunVcpCommand(const Block& command) {
  switch (command[0]) {
    case 0x07:
      maxQp = command[1];
      return Block{kAcceptedStatus};
    case 0x08:
      minQp = command[1];
      return Block{kAcceptedStatus};
    case 0x19:
      if (command[1] != 0x81) {
        return std::nullopt;
      }
      serialPrepared = true;
      return Block{kAcceptedStatus};
    default:
      return std::nullopt;
  }
}

std::optional<Block> ImageTuning::RunGainCommand(const Block& command) {
  switch (command[1]) {
    case 0x00:
    case 0x01:
      manualGain = command[1] == 0x00;
      return Block{kAcceptedStatus};
    case 0x02:
      return Keep(command, gains);
    case 0x03:
      return ReplyWith(gains);
    default:
      return std::nullopt;
  }
}

std::optional<Block> ImageTuning::RunFeatureCommand(const Block& command) {
  const std::uint8_t feature = command[1];
  switch (feature) {
    case kFocusRead:
      if (command[2] >= kFocusValues) {
        return std::nullopt;
      }
      return Block{0, 0, command[2], 0x01};
    case kMiscWrite:
      return Keep(command, miscSettings);
    case kMiscRead:
      return ReplyWith(miscSettings);
    default:
      break;
  }
  if (std::find(kByteFeatures.begin(), kByteFeatures.end(), feature) == kByteFeatures.end()) {
    return std::nullopt;
  }
  features[feature] = command[2];
  return Block{kAcceptedStatus};
}

}  // namespace zem::simulator
