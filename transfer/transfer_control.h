// The blocks by which a transfer is steered. A TransferControl announces a transfer or orders the
// device to act on what it was sent; it is a command with code 0x01 on the VCP channel. The reply
// read from that channel is the TransferStatus.
#pragma once

#include <cstdint>

#include "commands/command_block.h"

namespace zem {

// Code 0x01, the action, and what the action needs.
using TransferControl = CommandBlock;

// Byte 0 is the device's state; after kBeginRead bytes 2 to 5 are the length of the data that the
// device has ready.
using TransferStatus = CommandBlock;

namespace transfer_action {

inline constexpr std::uint8_t kBeginWrite = 0x00;
inline constexpr std::uint8_t kAct = 0x01;
inline constexpr std::uint8_t kBeginRead = 0x02;
inline constexpr std::uint8_t kReadFlash = 0x10;

}  // namespace transfer_action

// States of the device; any other value is busy.
namespace transfer_state {

inline constexpr std::uint8_t kIdle = 0x00;
inline constexpr std::uint8_t kFailed = 0x82;

}  // namespace transfer_state

inline constexpr std::uint8_t kTransferCode = 0x01;

// The announce of data from the host, and the order to act on it once it has been sent; the
// parameters tell the device what it is. Bytes 4 to 7, for a length, are zeros.
constexpr TransferControl BeginWrite(std::uint8_t param2, std::uint8_t param3) {
  return {kTransferCode, transfer_action::kBeginWrite, param2, param3};
}
constexpr TransferControl ActOnData(std::uint8_t param2, std::uint8_t param3) {
  return {kTransferCode, transfer_action::kAct, param2, param3};
}

inline HRESULT WriteTransferControl(const TransferControl& control, IBaseFilter* filter) {
  return WriteBlock(kVcpChannel.commandSelector, control, filter);
}

// Leaves `status` as it is where nothing is read.
inline HRESULT ReadTransferStatus(TransferStatus& status, IBaseFilter* filter) {
  return ReadBlock(kVcpChannel.replySelector, status, filter);
}

}  // namespace zem
