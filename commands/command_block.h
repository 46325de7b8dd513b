// The framing of vendor commands: a block written to one control of the vendor unit, and a reply of
// the same size read back from the paired control.
//
// There is no wait, retry or sequence number between the two transfers; callers serialise commands
// per device. Nothing is allocated.
#pragma once

#include <array>
#include <cstdint>

#include "device/extension_units.h"
#include "platform/com.h"

namespace zem {

// Code, sub-code and six argument bytes; or, as a reply, status and seven result bytes.
using CommandBlock = std::array<std::uint8_t, 8>;

// Command and reply of the extended channels, laid out as the caller defines them; reply byte 0 is
// the status.
using ExtendedBlock = std::array<std::uint8_t, 16>;

// A pair of controls of the vendor unit.
template <class Block>
struct Channel {
  std::uint16_t commandSelector;
  std::uint16_t replySelector;
};

inline constexpr Channel<CommandBlock> kIspChannel = {vendor_selector::kIspCommand,
                                                      vendor_selector::kIspReply};
inline constexpr Channel<CommandBlock> kVcpChannel = {vendor_selector::kVcpCommand,
                                                      vendor_selector::kVcpReply};
inline constexpr Channel<ExtendedBlock> kIspExtendedChannel = {vendor_selector::kIspExtendedCommand,
                                                               vendor_selector::kIspExtendedReply};
inline constexpr Channel<ExtendedBlock> kVcpExtendedChannel = {vendor_selector::kVcpExtendedCommand,
                                                               vendor_selector::kVcpExtendedReply};

// Writes one block to a control of the vendor unit; the platform's result. `filter` as in
// device/transport.h.
template <class Block>
HRESULT WriteBlock(std::uint16_t selector, Block block, IBaseFilter* filter);

// Reads one block from a control of the vendor unit over what `block` holds; the platform's result.
template <class Block>
HRESULT ReadBlock(std::uint16_t selector, Block& block, IBaseFilter* filter);

// What one command came to.
template <class Block>
struct Exchange {
  HRESULT written = 0;  // the platform's result of the write
  HRESULT read = 0;     // of the read; no read is made after a failed write
  Block reply = {};     // zeros wherever nothing was read, unless told otherwise

  std::uint8_t status() const { return reply[0]; }
};

// Writes `command` and, if that did not fail, reads the reply over `before`.
template <class Block>
Exchange<Block> SendCommand(const Channel<Block>& channel, const Block& command,
                            IBaseFilter* filter, const Block& before = {});

// The rule by which most commands are judged: a failed write is kNoDevice, a status other than 0 is
// kDeviceRefused, all else 0. A failed read is deliberately not looked at: its zeros look like
// success.
template <class Block>
HRESULT StandardResult(const Exchange<Block>& exchange);

// The other rule: the failed write's own result, or else the read's. The status is not looked at.
template <class Block>
HRESULT TransportResult(const Exchange<Block>& exchange) {
  return FAILED(exchange.written) ? exchange.written : exchange.read;
}

// TransportResult, but kDeviceRefused for a status other than 0.
template <class Block>
HRESULT TransportAndStatusResult(const Exchange<Block>& exchange) {
  return exchange.status() != 0 ? HRESULT{ZEM_E_DEVICE_REFUSED} : TransportResult(exchange);
}

// One command by the standard rule; its reply goes to `reply` when, and only when, the device
// accepted.
HRESULT StandardCommand(const Channel<CommandBlock>& channel, const CommandBlock& command,
                        IBaseFilter* filter, CommandBlock* reply = nullptr);

}  // namespace zem
