#include "commands/registers.h"

#include "commands/command_block.h"
#include "platform/bytes.h"

namespace zem {
namespace {

// Address bits 16 to 23, which only the processor's registers have, deliberately follow the value.
CommandBlock RegisterBlock(std::uint8_t accessCode, std::uint32_t address, std::uint16_t value) {
  constexpr std::uint8_t kRegisterCommand = 0x0A;
  return {kRegisterCommand, accessCode,       ByteOf(address, 0), ByteOf(address, 1),
          ByteOf(value, 0), ByteOf(value, 1), ByteOf(address, 2), 0};
}

// Codec registers lie behind a selection of their own on the VCP channel, and their number is
// big-endian, unlike every other number in a command.
HRESULT SelectCodecRegister(IBaseFilter* filter, std::uint8_t operation, std::uint16_t reg,
                            std::uint8_t value) {
  const CommandBlock selection = {0xFF, 0x00, 0x14, 0, 0, 0, 0, 0};
  const CommandBlock access = {0xFF, operation, ByteOf(reg, 1), ByteOf(reg, 0), value, 0, 0, 0};
  for (const CommandBlock& block : {selection, access}) {
    if (const HRESULT result = WriteBlock(kVcpChannel.commandSelector, block, filter);
        FAILED(result)) {
      return result;
    }
  }
  return S_OK;
}

}  // namespace

HRESULT WriteRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                      std::uint16_t value) {
  return StandardCommand(kIspChannel, RegisterBlock(space.writeCode, address, value), filter);
}

HRESULT ReadRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                     std::uint16_t* value) {
  CommandBlock reply = {};
  const HRESULT result =
      StandardCommand(kIspChannel, RegisterBlock(space.readCode, address, 0), filter, &reply);
  if (result == S_OK) {
    *value = LoadLe16(&reply[2]);
  }
  return result;
}

HRESULT ReadByteRegister(IBaseFilter* filter, RegisterSpace space, std::uint32_t address,
                         std::uint8_t* value) {
  std::uint16_t word = 0;
  const HRESULT result = ReadRegister(filter, space, address, &word);
  if (result == S_OK) {
    *value = ByteOf(word, 0);
  }
  return result;
}

HRESULT SetLensPos(IBaseFilter* filter, std::uint32_t position) {
  const CommandBlock block = {0x00,
                              0x00,
                              0x00,
                              0x00,
                              ByteOf(position, 0),
                              ByteOf(position, 1),
                              ByteOf(position, 2),
                              ByteOf(position, 3)};
  return StandardCommand(kIspChannel, block, filter);
}

HRESULT WriteCodecReg(IBaseFilter* filter, std::uint16_t reg, std::uint8_t value) {
  return SelectCodecRegister(filter, 0x01, reg, value);
}

HRESULT ReadCodecReg(IBaseFilter* filter, std::uint16_t reg, std::uint8_t* value) {
  if (const HRESULT result = SelectCodecRegister(filter, 0x02, reg, 0); FAILED(result)) {
    return result;
  }
  CommandBlock reply = {};
  if (const HRESULT result = ReadBlock(kVcpChannel.replySelector, reply, filter); FAILED(result)) {
    return result;
  }
  *value = reply[2];
  return S_OK;
}

}  // namespace zem
