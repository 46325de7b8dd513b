#include "commands/raw_commands.h"

#include <algorithm>

#include "commands/command_block.h"
#include "platform/result.h"

namespace zem {
namespace {

template <class Block>
Block BlockOf(const std::uint8_t* bytes) {
  Block block = {};
  std::copy_n(bytes, block.size(), block.begin());
  return block;
}

// Sends the caller's block; the reply goes to the caller unless the block could not be written.
template <class Block>
Exchange<Block> SendRaw(const Channel<Block>& channel, IBaseFilter* filter,
                        const std::uint8_t* command, std::uint8_t* reply) {
  const Exchange<Block> exchange = SendCommand(channel, BlockOf<Block>(command), filter);
  if (SUCCEEDED(exchange.written)) {
    std::copy(exchange.reply.begin(), exchange.reply.end(), reply);
  }
  return exchange;
}

}  // namespace

HRESULT IspCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  return TransportResult(SendRaw(kIspChannel, filter, command, reply));
}

HRESULT VcpCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  return TransportResult(SendRaw(kVcpChannel, filter, command, reply));
}

HRESULT IspCommandEx(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  return StandardResult(SendRaw(kIspExtendedChannel, filter, command, reply));
}

HRESULT VcpCommandEx(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  return StandardResult(SendRaw(kVcpExtendedChannel, filter, command, reply));
}

HRESULT StandardIspCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  return StandardResult(SendRaw(kIspChannel, filter, command, reply));
}

HRESULT StandardVcpCommand(IBaseFilter* filter, const std::uint8_t* command, std::uint8_t* reply) {
  if (reply == nullptr) {
    const auto block = BlockOf<CommandBlock>(command);
    return FAILED(WriteBlock(kVcpChannel.commandSelector, block, filter)) ? kNoDevice : S_OK;
  }
  return StandardResult(SendRaw(kVcpChannel, filter, command, reply));
}

}  // namespace zem
