#include "commands/image_tuning.h"

#include <algorithm>

#include "platform/bytes.h"
#include "platform/result.h"

namespace zem {

HRESULT SetFeature(IBaseFilter* filter, ByteFeature feature, std::uint8_t value) {
  feature.command[feature.valueAt] = value;
  return feature.judge(SendCommand(feature.channel, feature.command, filter));
}

HRESULT SetVideoRecMode(IBaseFilter* filter, std::uint8_t mode) {
  const HRESULT result = WriteBlock(kIspChannel.commandSelector, CommandBlock{0x10, mode}, filter);
  return FAILED(result) ? kNoDevice : result;
}

HRESULT GetAFACC(IBaseFilter* filter, unsigned* values) {
  constexpr std::uint8_t kValues = 9;
  CommandBlock reply = {};
  for (std::uint8_t index = 0; index < kValues; ++index) {
    // Deliberate: only the first pass starts from zeros, so a reply that cannot be read repeats the
    // one before it.
    const Exchange<CommandBlock> pass =
        SendCommand(kIspChannel, CommandBlock{0xFF, 0x09, index}, filter, reply);
    if (const HRESULT result = StandardResult(pass); FAILED(result)) {
      return result;
    }
    reply = pass.reply;
    values[index] = LoadLe32(&reply[2]);
  }
  return S_OK;
}

HRESULT SetAWBGain(IBaseFilter* filter, std::uint16_t gain1, std::uint16_t gain2,
                   std::uint16_t gain3) {
  CommandBlock command = {0x11, 0x02};
  StoreLe16(&command[2], gain1);
  StoreLe16(&command[4], gain2);
  StoreLe16(&command[6], gain3);
  return TransportResult(SendCommand(kIspChannel, command, filter));
}

HRESULT GetAWBGain(IBaseFilter* filter, std::uint16_t* gain1, std::uint16_t* gain2,
                   std::uint16_t* gain3) {
  const Exchange<CommandBlock> exchange =
      SendCommand(kIspChannel, CommandBlock{0x11, 0x03}, filter);
  *gain1 = LoadLe16(&exchange.reply[2]);
  *gain2 = LoadLe16(&exchange.reply[4]);
  *gain3 = LoadLe16(&exchange.reply[6]);
  return TransportResult(exchange);
}

HRESULT SetMiscSetting(IBaseFilter* filter, const std::uint8_t* settings) {
  CommandBlock command = {0xFF, 0x11};
  std::copy_n(settings, command.size() - 2, command.begin() + 2);
  return TransportAndStatusResult(SendCommand(kIspChannel, command, filter));
}

HRESULT GetMiscSetting(IBaseFilter* filter, std::uint8_t* settings) {
  const Exchange<CommandBlock> exchange =
      SendCommand(kIspChannel, CommandBlock{0xFF, 0x12}, filter);
  if (SUCCEEDED(exchange.written) && exchange.status() == 0) {
    std::copy(exchange.reply.begin() + 2, exchange.reply.end(), settings);
  }
  return TransportAndStatusResult(exchange);
}

}  // namespace zem
