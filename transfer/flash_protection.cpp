#include "transfer/flash_protection.h"

#include <cstdint>
#include <span>

#include "commands/registers.h"
#include "platform/platform.h"

namespace zem {
namespace {

// Registers of the flash controller; their values are bytes.
constexpr std::uint16_t kMode = 0x6900;
constexpr std::uint16_t kUnlock = 0x6902;
constexpr std::uint16_t kPins = 0x6926;
constexpr std::uint16_t kSelect = 0x6708;
constexpr std::uint16_t kStart = 0x6710;
constexpr std::uint16_t kOpcode = 0x6714;
constexpr std::uint16_t kDataOut = 0x6720;
constexpr std::uint16_t kDataIn = 0x6730;

constexpr std::uint8_t kModeNeedsUnprotect = 0x40;
constexpr std::uint8_t kPinsDriveFlash = 0x04;
constexpr std::uint8_t kStatusProtectBits = 0xFC;

struct RegisterValue {
  std::uint16_t address;
  std::uint8_t value;
};

// Opcodes are those of any serial flash: 0x05 reads its status, 0x06 enables writing, 0x01 writes
// the status.
constexpr RegisterValue kReadStatus[] = {{kSelect, 1}, {kOpcode, 0x05}, {kStart, 0xA8}};
constexpr RegisterValue kEnableWrite[] = {{kSelect, 1}, {kOpcode, 0x06}, {kStart, 0x80}};
constexpr RegisterValue kClearStatus[] = {
    {kSelect, 1}, {kOpcode, 0x01}, {kDataOut, 0}, {kStart, 0x88}};

void Write(IBaseFilter* filter, RegisterValue write) {
  static_cast<void>(WriteRegister(filter, kProcessorRegisters, write.address, write.value));
}

// 0 where nothing can be read.
std::uint8_t Read(IBaseFilter* filter, std::uint16_t address) {
  std::uint8_t value = 0;
  static_cast<void>(ReadByteRegister(filter, kProcessorRegisters, address, &value));
  return value;
}

void RunFlashCommand(IBaseFilter* filter, std::span<const RegisterValue> writes) {
  for (const RegisterValue& write : writes) {
    Write(filter, write);
  }
  platform::Sleep(1);
}

}  // namespace

void UnprotectSerialFlash(IBaseFilter* filter) {
  if ((Read(filter, kMode) & kModeNeedsUnprotect) == 0) {
    return;
  }
  Write(filter, {kUnlock, 0x57});
  const std::uint8_t pins = Read(filter, kPins);
  Write(filter, {kPins, static_cast<std::uint8_t>(pins | kPinsDriveFlash)});
  RunFlashCommand(filter, kReadStatus);
  if ((Read(filter, kDataIn) & kStatusProtectBits) != 0) {
    RunFlashCommand(filter, kEnableWrite);
    RunFlashCommand(filter, kClearStatus);
  }
  Write(filter, {kSelect, 1});
}

}  // namespace zem
