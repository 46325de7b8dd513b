#include "encoding/multicast.h"

#include "commands/command_block.h"
#include "platform/bytes.h"

namespace zem {

HRESULT MulticastStreamId(IBaseFilter* filter, std::uint8_t streamId) {
  return WriteBlock(kVcpChannel.commandSelector, CommandBlock{0x23, streamId}, filter);
}

HRESULT MulticastToggleLayer(IBaseFilter* filter, std::uint8_t value) {
  return WriteBlock(kVcpChannel.commandSelector, CommandBlock{0x24, value}, filter);
}

HRESULT MulticastCommit(IBaseFilter* filter, std::uint8_t streamFormat, std::uint16_t width,
                        std::uint16_t height, std::uint8_t packedLow, std::uint16_t packedHigh) {
  const auto packed =
      static_cast<std::uint16_t>((packedLow & 0x1FU) | ((packedHigh & 0x7FFU) << 5));
  return StandardCommand(kVcpChannel,
                         {0x25, streamFormat, ByteOf(width, 0), ByteOf(width, 1), ByteOf(height, 0),
                          ByteOf(height, 1), ByteOf(packed, 0), ByteOf(packed, 1)},
                         filter);
}

}  // namespace zem
