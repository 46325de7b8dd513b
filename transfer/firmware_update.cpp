#include "transfer/firmware_update.h"

#include "platform/bytes.h"
#include "platform/result.h"
#include "transfer/burn_sequence.h"
#include "transfer/data_channel.h"
#include "transfer/flash_protection.h"

namespace zem {

HRESULT UpdateFW_516x(IBaseFilter* filter, Image image, Progress progress, std::uint8_t param) {
  constexpr std::uint32_t kUnit = 512;
  constexpr std::uint32_t kLongest = 0xFFFFFFFF - kUnit + 1;
  if (image.length > kLongest) {
    return kRefused;
  }
  const std::uint32_t announced = (image.length + kUnit - 1) / kUnit * kUnit;
  BurnProcedure procedure = {.announce = BeginWrite(0x03, 0x00),
                             .order = ActOnData(0x03, param),
                             .sendImage = WriteFWData,
                             .stopsWhenSendFails = true,
                             .end = PollUntilDone{L"[ERR] Firmware burning error.\r\n", 10}};
  StoreLe32(&procedure.announce[4], announced);
  StoreLe32(&procedure.order[4], announced);
  return Burn(filter, procedure, image, progress);
}

HRESULT UpdateFW_517x(IBaseFilter* filter, Image image, Progress progress) {
  if (image.Missing() || !progress) {
    return kRefused;
  }
  UnprotectSerialFlash(filter);
  const BurnProcedure procedure = {.announce = BeginWrite(0x03, 0x00),
                                   .order = ActOnData(0x03, 0x00),
                                   .sendImage = WriteFWData,
                                   .stopsWhenSendFails = false,
                                   .end = WaitAndLook{10, 500, true}};
  return Burn(filter, procedure, image, progress);
}

HRESULT UpdateFlash(IBaseFilter* filter, Image data, Progress progress, std::uint8_t param2,
                    std::uint8_t param3) {
  BurnProcedure procedure = {.announce = BeginWrite(param2, param3),
                             .order = ActOnData(param2, param3),
                             .sendImage = WriteFWData,
                             .stopsWhenSendFails = false,
                             .end = PollUntilDone{L"[ERR] Flash data burning error\r\n", 10}};
  // Deliberate: 16 bits of the length are announced, whatever the length.
  const auto announced = static_cast<std::uint16_t>(data.length);
  StoreLe16(&procedure.announce[4], announced);
  StoreLe16(&procedure.order[4], announced);
  return Burn(filter, procedure, data, progress);
}

HRESULT UpdateCaliData(IBaseFilter* filter, Image data, Progress progress) {
  const BurnProcedure procedure = {
      .announce = BeginWrite(0x03, 0x05),
      .order = ActOnData(0x03, 0x05),
      .sendImage = WriteFWData,
      .stopsWhenSendFails = false,
      .end = PollUntilDone{L"[ERR] Calibration data burning error.\r\n", 10}};
  return Burn(filter, procedure, data, progress);
}

}  // namespace zem
