#include "simulator/vendor_unit.h"

#include <algorithm>
#include <utility>

#include "device/extension_units.h"

namespace zem::simulator {
namespace {

constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kUnknownCommand = 1;

std::uint16_t Word(std::uint8_t low, std::uint8_t high) {
  return static_cast<std::uint16_t>(low | (high << 8));
}

template <class Map, class Key>
typename Map::mapped_type ValueOrZero(const Map& map, Key key) {
  const auto found = map.find(key);
  return found == map.end() ? typename Map::mapped_type{} : found->second;
}

// What the extended commands mean is the firmware's; this one accepts all and echoes them.
template <class Block>
Block Echo(Block command) {
  command[0] = kAccepted;
  return command;
}

// Runs `run` on a command block of the right length.
template <class Block, class Run>
Outcome Accept(std::span<const std::uint8_t> bytes, Block& reply, Run run) {
  Block command = {};
  if (bytes.size() != command.size()) {
    return Outcome::kWrongLength;
  }
  std::copy(bytes.begin(), bytes.end(), command.begin());
  reply = run(command);
  return Outcome::kDone;
}

}  // namespace

VendorUnit::VendorUnit(std::shared_ptr<H264Encoder> encoder)
    : ExtensionUnit(VendorXu), encoder_(std::move(encoder)) {}

Outcome VendorUnit::Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  switch (selector) {
    case vendor_selector::kIspCommand:
      return Accept(bytes, ispReply_, [this](const Block& block) { return RunIspCommand(block); });
    case vendor_selector::kVcpCommand:
      return Accept(bytes, vcpReply_, [this](const Block& block) { return RunVcpCommand(block); });
    case vendor_selector::kIspExtendedCommand:
      return Accept(bytes, ispExtendedReply_, Echo<LongBlock>);
    case vendor_selector::kVcpExtendedCommand:
      return Accept(bytes, vcpExtendedReply_,
                    [this](const LongBlock& block) { return RunVcpExtendedCommand(block); });
    case vendor_selector::kNvmem:
      return nvmem_.Set(bytes);
    default:
      return Outcome::kNoSuchControl;
  }
}

Outcome VendorUnit::Get(std::uint16_t selector, std::size_t /*length*/,
                        std::vector<std::uint8_t>& bytes) {
  const auto answer = [&bytes](const auto& block) {
    bytes.assign(block.begin(), block.end());
    return Outcome::kDone;
  };
  switch (selector) {
    case vendor_selector::kIspReply:
      return answer(ispReply_);
    case vendor_selector::kVcpReply:
      return answer(vcpReply_);
    case vendor_selector::kIspExtendedReply:
      return answer(ispExtendedReply_);
    case vendor_selector::kVcpExtendedReply:
      return answer(vcpExtendedReply_);
    case vendor_selector::kDeviceInfo:
      return answer(state.deviceInfo);
    case vendor_selector::kNvmem:
      return nvmem_.Get(bytes);
    case vendor_selector::kH264ListRead:
      return answer(encoder_->NextListPiece());
    default:
      return Outcome::kNoSuchControl;
  }
}

VendorUnit::Block VendorUnit::RunIspCommand(const Block& command) {
  switch (command[0]) {
    case 0x00:
      state.lensPosition = static_cast<std::uint32_t>(Word(command[4], command[5])) |
                           (static_cast<std::uint32_t>(Word(command[6], command[7])) << 16);
      return {kAccepted};
    case 0x0A:
      return RunRegisterCommand(command);
    case 0x0B: {
      Block reply = {kAccepted};
      std::copy(state.firmwareVersion.begin(), state.firmwareVersion.end(), reply.begin() + 2);
      return reply;
    }
    default:
      return encoder_->RunIspCommand(command).value_or(Block{kUnknownCommand});
  }
}

VendorUnit::Block VendorUnit::RunRegisterCommand(const Block& command) {
  std::map<std::uint32_t, std::uint16_t>* const spaces[] = {
      &state.processorRegisters, &state.sensorRegisters, &state.lensRegisters};
  const std::size_t space = command[1] / 2;
  const bool isWrite = command[1] % 2 != 0;
  if (space >= std::size(spaces)) {
    return {kUnknownCommand};
  }
  const std::uint32_t address =
      Word(command[2], command[3]) | (static_cast<std::uint32_t>(command[6]) << 16);
  if (isWrite) {
    (*spaces[space])[address] = Word(command[4], command[5]);
    return {kAccepted};
  }
  const std::uint16_t value = ValueOrZero(*spaces[space], address);
  return {kAccepted, 0, static_cast<std::uint8_t>(value & 0xFF),
          static_cast<std::uint8_t>(value >> 8)};
}

VendorUnit::Block VendorUnit::RunVcpCommand(const Block& command) {
  switch (command[0]) {
    case 0x06:
      return {state.checkSumStatus};
    case 0x16:
      if (!enterRomBoot) {
        return {kUnknownCommand};
      }
      enterRomBoot();
      return {kAccepted};
    case 0xFF:
      return RunCodecCommand(command);
    default:
      return encoder_->RunVcpCommand(command).value_or(Block{kUnknownCommand});
  }
}

VendorUnit::LongBlock VendorUnit::RunVcpExtendedCommand(const LongBlock& command) {
  if (enterRomBoot && command[0] == 0xFF && command[1] == 0x03) {
    enterRomBoot();
  }
  return Echo(command);
}

VendorUnit::Block VendorUnit::RunCodecCommand(const Block& command) {
  const std::uint16_t reg = Word(command[3], command[2]);
  if (command[1] == 0x00) {
    codecSelected_ = command[2] == 0x14;
    return {kAccepted};
  }
  if (!codecSelected_) {
    return {kUnknownCommand};
  }
  switch (command[1]) {
    case 0x01:
      state.codecRegisters[reg] = command[4];
      return {kAccepted};
    case 0x02:
      return {kAccepted, 0, ValueOrZero(state.codecRegisters, reg)};
    default:
      return {kUnknownCommand};
  }
}

}  // namespace zem::simulator
