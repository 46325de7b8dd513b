#include "commands/command_block.h"

#include "device/transport.h"
#include "platform/result.h"

namespace zem {

namespace {

template <class Block>
constexpr ULONG kSizeOf = static_cast<ULONG>(std::tuple_size_v<Block>);

}  // namespace

template <class Block>
HRESULT WriteBlock(std::uint16_t selector, Block block, IBaseFilter* filter) {
  return XuSetControl(VendorXu, selector, block.data(), kSizeOf<Block>, nullptr, filter);
}

template <class Block>
HRESULT ReadBlock(std::uint16_t selector, Block& block, IBaseFilter* filter) {
  return XuGetControl(VendorXu, selector, block.data(), kSizeOf<Block>, nullptr, filter);
}

template <class Block>
Exchange<Block> SendCommand(const Channel<Block>& channel, const Block& command,
                            IBaseFilter* filter, const Block& before) {
  Exchange<Block> exchange;
  exchange.reply = before;
  exchange.written = WriteBlock(channel.commandSelector, command, filter);
  if (SUCCEEDED(exchange.written)) {
    exchange.read = ReadBlock(channel.replySelector, exchange.reply, filter);
  }
  return exchange;
}

template <class Block>
HRESULT StandardResult(const Exchange<Block>& exchange) {
  if (FAILED(exchange.written)) {
    return kNoDevice;
  }
  return exchange.status() != 0 ? kDeviceRefused : S_OK;
}

HRESULT StandardCommand(const Channel<CommandBlock>& channel, const CommandBlock& command,
                        IBaseFilter* filter, CommandBlock* reply) {
  const Exchange<CommandBlock> exchange = SendCommand(channel, command, filter);
  const HRESULT result = StandardResult(exchange);
  if (result == S_OK && reply != nullptr) {
    *reply = exchange.reply;
  }
  return result;
}

template HRESULT WriteBlock(std::uint16_t, CommandBlock, IBaseFilter*);
template HRESULT ReadBlock(std::uint16_t, CommandBlock&, IBaseFilter*);
template Exchange<CommandBlock> SendCommand(const Channel<CommandBlock>&, const CommandBlock&,
                                            IBaseFilter*, const CommandBlock&);
template HRESULT StandardResult(const Exchange<CommandBlock>&);

template HRESULT WriteBlock(std::uint16_t, ExtendedBlock, IBaseFilter*);
template HRESULT ReadBlock(std::uint16_t, ExtendedBlock&, IBaseFilter*);
template Exchange<ExtendedBlock> SendCommand(const Channel<ExtendedBlock>&, const ExtendedBlock&,
                                             IBaseFilter*, const ExtendedBlock&);
template HRESULT StandardResult(const Exchange<ExtendedBlock>&);

}  // namespace zem
