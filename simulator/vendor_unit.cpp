#include "simulator/vendor_unit.h"

#include <algorithm>
#include <utility>

#include "device/extension_units.h"

namespace zem::simulator {
namespace {

constexpr std::uint8_t kUnknownCommand = 1;
constexpr std::uint8_t kWrongCheckSum = 0x80;

constexpr std::uint8_t kTransferControl = 0x01;

constexpr std::uint32_t kChipRegister = 0;
constexpr std::uint32_t kProtectionRegister = 0x6900;
constexpr std::uint16_t kCanBeProtected = 0x40;
constexpr std::uint8_t kFactoryProtection = 0x1C;

constexpr FirmwareVersion kFactoryVersion = {1, 2, 3, 4, 5, 6};

// Pieces of the processor's memory.
constexpr std::size_t kMemoryPiece = 16;
constexpr std::size_t kProcessorMemorySize = 0x10000;

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
  command[0] = kAcceptedStatus;
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

VendorUnit::VendorUnit(const VendorSettings& settings, std::shared_ptr<H264Encoder> encoder)
    : ExtensionUnit(VendorXu), encoder_(std::move(encoder)), data_(settings.data, state.flash) {
  const bool is517x = settings.chip == VendorSettings::Chip::k517x;
  state.processorRegisters[kChipRegister] = is517x ? 0x5170 : 0x5160;
  state.deviceInfo = {0x51, static_cast<std::uint8_t>(is517x ? 0x70 : 0x60), 1, 0, 0x5A, 0x45, 0,
                      1};
  if (is517x) {
    state.processorRegisters[kProtectionRegister] = kCanBeProtected;
    state.flash.SetStatus(kFactoryProtection);
  }
  state.flash.Program(AreaFor(FlashArea::Use::kFirmware), MakeFirmwareImage(kFactoryVersion, {}));
  state.firmwareVersion = kFactoryVersion;
  data_.SetFlashObserver([this](const FlashArea& area) {
    if (area.use == FlashArea::Use::kFirmware) {
      CheckFirmware();
    }
    if (area.use == FlashArea::Use::kTable) {
      const auto tables = state.flash.BytesOf(area);
      state.nvmem.assign(tables.begin(), tables.end());
    }
    if (flashObserver_) {
      flashObserver_();
    }
  });
}

void VendorUnit::CheckFirmware() {
  const auto image = ReadFirmwareImage(state.flash.BytesOf(AreaFor(FlashArea::Use::kFirmware)));
  state.checkSumStatus = image && image->checkSumRight ? kAcceptedStatus : kWrongCheckSum;
}

void VendorUnit::SaveMemory(KeptMemory& memory) const {
  memory["flash"].assign(state.flash.bytes().begin(), state.flash.bytes().end());
  memory["flashStatus"] = {state.flash.status()};
  memory["data"] = data_.ReadyData();
  memory["nvmem"] = state.nvmem;
}

void VendorUnit::LoadMemory(const KeptMemory& memory) {
  std::vector<std::uint8_t> flash(state.flash.bytes().begin(), state.flash.bytes().end());
  LoadBytes(memory, "flash", flash);
  state.flash.Replace(std::move(flash));
  std::vector<std::uint8_t> status = {state.flash.status()};
  LoadBytes(memory, "flashStatus", status);
  state.flash.SetStatus(status.front());
  if (const auto data = memory.find("data"); data != memory.end()) {
    data_.SetReadyData(data->second);
  }
  LoadBytes(memory, "nvmem", state.nvmem);
  const auto image = ReadFirmwareImage(state.flash.BytesOf(AreaFor(FlashArea::Use::kFirmware)));
  state.firmwareVersion = image ? image->version : FirmwareVersion{};
  CheckFirmware();
}

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
    case vendor_selector::kBulkData:
    case vendor_selector::kFastBulkData:
      return data_.Write(selector, bytes);
    case vendor_selector::kMemoryWrite:
      return WriteMemory(bytes);
    default:
      return Outcome::kNoSuchControl;
  }
}

Outcome VendorUnit::Get(std::uint16_t selector, std::size_t length,
                        std::vector<std::uint8_t>& bytes) {
  const auto answer = [&bytes](const auto& block) {
    bytes.assign(block.begin(), block.end());
    return Outcome::kDone;
  };
  switch (selector) {
    case vendor_selector::kIspReply:
      return answer(ispReply_);
    case vendor_selector::kVcpReply:
      return answer(transferControlled_ ? data_.Status() : vcpReply_);
    case vendor_selector::kIspExtendedReply:
      return answer(ispExtendedReply_);
    case vendor_selector::kVcpExtendedReply:
      return answer(vcpExtendedReply_);
    case vendor_selector::kDeviceInfo:
      return answer(state.deviceInfo);
    case vendor_selector::kNvmem:
      return nvmem_.Get(bytes);
    case vendor_selector::kSlowFlashRead:
      // One control, for whatever was asked for last: the sensor's serial number behind the command
      // that prepares it, flash, or the format list.
      if (std::exchange(tuning.serialPrepared, false)) {
        return answer(tuning.serial);
      }
      return transferControlled_ ? data_.Read(selector, bytes) : answer(encoder_->NextListPiece());
    case vendor_selector::kMemoryRead:
      if (length <= kMemoryPiece) {
        return ReadMemory(length, bytes);
      }
      [[fallthrough]];
    case vendor_selector::kBulkData:
    case vendor_selector::kFastBulkData:
      return data_.Read(selector, bytes);
    default:
      return Outcome::kNoSuchControl;
  }
}

// The processor's memory is a window that starts at its beginning with every ISP command.
Outcome VendorUnit::WriteMemory(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != kMemoryPiece) {
    return Outcome::kWrongLength;
  }
  if (memoryPosition_ + kMemoryPiece > kProcessorMemorySize) {
    return Outcome::kFailed;
  }
  state.processorMemory.resize(
      std::max(state.processorMemory.size(), memoryPosition_ + kMemoryPiece));
  std::copy(bytes.begin(), bytes.end(),
            state.processorMemory.begin() + static_cast<std::ptrdiff_t>(memoryPosition_));
  memoryPosition_ += kMemoryPiece;
  return Outcome::kDone;
}

Outcome VendorUnit::ReadMemory(std::size_t length, std::vector<std::uint8_t>& bytes) {
  if (length != kMemoryPiece) {
    return Outcome::kWrongLength;
  }
  bytes.assign(kMemoryPiece, 0);
  if (memoryPosition_ + kMemoryPiece <= state.processorMemory.size()) {
    std::copy_n(state.processorMemory.begin() + static_cast<std::ptrdiff_t>(memoryPosition_),
                kMemoryPiece, bytes.begin());
  }
  memoryPosition_ += kMemoryPiece;
  return Outcome::kDone;
}

Block VendorUnit::RunIspCommand(const Block& command) {
  memoryPosition_ = 0;
  switch (command[0]) {
    case 0x00:
      state.lensPosition = static_cast<std::uint32_t>(Word(command[4], command[5])) |
                           (static_cast<std::uint32_t>(Word(command[6], command[7])) << 16);
      return {kAcceptedStatus};
    case 0x0A:
      return RunRegisterCommand(command);
    case 0x0B: {
      Block reply = {kAcceptedStatus};
      std::copy(state.firmwareVersion.begin(), state.firmwareVersion.end(), reply.begin() + 2);
      return reply;
    }
    default: {
      const std::optional<Block> reply = encoder_->RunIspCommand(command);
      return reply ? *reply : tuning.RunIspCommand(command).value_or(Block{kUnknownCommand});
    }
  }
}

Block VendorUnit::RunRegisterCommand(const Block& command) {
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
    const std::uint16_t value = Word(command[4], command[5]);
    (*spaces[space])[address] = value;
    if (space == 0) {
      state.flash.OnRegisterWrite(address, value, state.processorRegisters);
    }
    return {kAcceptedStatus};
  }
  const std::uint16_t value = ValueOrZero(*spaces[space], address);
  return {kAcceptedStatus, 0, static_cast<std::uint8_t>(value & 0xFF),
          static_cast<std::uint8_t>(value >> 8)};
}

Block VendorUnit::RunVcpCommand(const Block& command) {
  transferControlled_ = command[0] == kTransferControl;
  switch (command[0]) {
    case kTransferControl:
      data_.Control(command);
      return {};
    case 0x06:
      return {state.checkSumStatus};
    case 0x16:
      if (!enterRomBoot) {
        return {kUnknownCommand};
      }
      enterRomBoot();
      return {kAcceptedStatus};
    case 0xFF:
      return RunCodecCommand(command);
    default: {
      const std::optional<Block> reply = encoder_->RunVcpCommand(command);
      return reply ? *reply : tuning.RunVcpCommand(command).value_or(Block{kUnknownCommand});
    }
  }
}

VendorUnit::LongBlock VendorUnit::RunVcpExtendedCommand(const LongBlock& command) {
  if (enterRomBoot && command[0] == 0xFF && command[1] == 0x03) {
    enterRomBoot();
  }
  return Echo(command);
}

Block VendorUnit::RunCodecCommand(const Block& command) {
  const std::uint16_t reg = Word(command[3], command[2]);
  if (command[1] == 0x00) {
    codecSelected_ = command[2] == 0x14;
    return {kAcceptedStatus};
  }
  if (!codecSelected_) {
    return {kUnknownCommand};
  }
  switch (command[1]) {
    case 0x01:
      state.codecRegisters[reg] = command[4];
      return {kAcceptedStatus};
    case 0x02:
      return {kAcceptedStatus, 0, ValueOrZero(state.codecRegisters, reg)};
    default:
      return {kUnknownCommand};
  }
}

}  // namespace zem::simulator
