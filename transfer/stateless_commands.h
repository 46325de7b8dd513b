// Commands to the default camera without a handle: each access to a control opens the camera and
// releases it again, so that a command and its reply are two openings.
//
// Commands that are the same with a handle are those of commands/ and encoding/, run without a
// filter.
#pragma once

#include <cstdint>

#include "commands/command_block.h"
#include "platform/bytes.h"
#include "platform/com.h"

namespace zem::stateless {

constexpr CommandBlock DoAF(std::uint16_t value) {
  return {0x00, ByteOf(value, 0), ByteOf(value, 1)};
}

// In units of 8 pixels, of which only the low byte is sent.
constexpr CommandBlock SetResolution(std::uint32_t width, std::uint32_t height) {
  return {0x03, ByteOf(width / 8, 0), ByteOf(height / 8, 0)};
}

constexpr CommandBlock SetVideoQuality(std::uint8_t quality) { return {0x08, quality}; }

constexpr CommandBlock SetFlickMode(std::uint8_t mode) { return {0x09, mode}; }

constexpr CommandBlock SetH264Mode(std::uint8_t mode) { return {0x0D, mode}; }

constexpr CommandBlock SetWDR(std::uint8_t value) { return {0x0E, value}; }

// Sends one of the above by the standard rule.
HRESULT Send(const CommandBlock& command);

// Sixteen bytes.
HRESULT GetChipInfo(IBaseFilter* filter, std::uint8_t* info);

// Memory of the processor, 16 bytes an access. Any result of an access but 0 ends the transfer and
// is returned as it is; the piece of a read that ended so is handed out all the same, with zeros
// for what was not read.
HRESULT WriteMemory(const std::uint8_t* data, std::int32_t length);
HRESULT ReadMemory(std::uint8_t* buffer, std::uint32_t length);

}  // namespace zem::stateless
