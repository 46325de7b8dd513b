#include "encoding/encoder_settings.h"

#include "commands/command_block.h"
#include "platform/bytes.h"
#include "platform/debugger_line.h"
#include "platform/result.h"

namespace zem {

HRESULT SetFps(IBaseFilter* filter, std::uint16_t fps) {
  return StandardCommand(kIspChannel, {0x02, ByteOf(fps, 0), ByteOf(fps, 1)}, filter);
}

// Shares its code with the picture quality, where 0xFF stands for "by bit rate".
HRESULT SetBitRate(IBaseFilter* filter, std::uint16_t bitRate) {
  return StandardCommand(kIspChannel, {0x08, 0xFF, ByteOf(bitRate, 0), ByteOf(bitRate, 1)}, filter);
}

HRESULT ForceIFrame(IBaseFilter* filter) {
  return StandardCommand(kIspChannel, {0x04, 0x00, 0x00}, filter);
}

HRESULT SetPframeCount(std::uint32_t count) {
  platform::DebuggerLine<64>(L"Set POC=%d\r\n", count);
  return kDeviceRefused;
}

}  // namespace zem
