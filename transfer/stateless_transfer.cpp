#include "transfer/stateless_transfer.h"

#include "device/discovery.h"
#include "device/extension_units.h"
#include "device/transport.h"
#include "platform/debugger_line.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "transfer/burn_sequence.h"
#include "transfer/data_channel.h"

namespace zem::stateless {
namespace {

constexpr std::uint32_t kLongChunk = 64;
constexpr std::uint32_t kShortChunk = 32;
constexpr std::uint32_t kPauseMilliseconds = 300;

constexpr const wchar_t* kBurnError = L"[ERR] Firmware burning error\r\n";

// Runs `operation(device)` on the default camera, held open meanwhile.
template <class Operation>
HRESULT WithDefaultCamera(Operation operation) {
  ComPtr<IBaseFilter> device;
  if (FAILED(OpenDefault(device))) {
    return kNoDevice;
  }
  return operation(device.get());
}

// The longest chunk that the data control takes.
std::uint32_t ProbeChunkLength(IBaseFilter* device) {
  const ByteBuffer discarded = AllocateBytes(kLongChunk);
  ULONG moved = 0;
  const bool isLong = discarded &&
                      SUCCEEDED(XuGetControl(VendorXu, vendor_selector::kBulkData, discarded.get(),
                                             kLongChunk, &moved, device)) &&
                      moved == kLongChunk;
  return isLong ? kLongChunk : kShortChunk;
}

HRESULT SendImage(IBaseFilter* device, const Image& image, const Progress& progress) {
  const DataControl control = {vendor_selector::kBulkData, ProbeChunkLength(device)};
  platform::Sleep(kPauseMilliseconds);
  // Deliberate: whole chunks from the caller's memory; a short last one is followed by whatever
  // follows it there.
  const auto send = [&](const std::uint8_t* position, std::uint32_t /*count*/) {
    const HRESULT result = WriteChunk(control, position, device);
    if (FAILED(result)) {
      platform::DebuggerLine<kTransferLine>(L"[ERR] Send Data Len = %d, hr = %X\r\n",
                                            control.chunkLength, result);
    }
    return SUCCEEDED(result);
  };
  const auto value = [&image](std::uint32_t remaining, std::uint32_t /*count*/) {
    return RemainingPercent(remaining, image.length);
  };
  return SendChunks(image, control.chunkLength, progress, send, value) ? S_OK : kNoDevice;
}

// The burn procedures' way to the above, which takes no device from them.
HRESULT SendOnItsOwn(IBaseFilter* /*filter*/, Image image, Progress progress) {
  return WriteFWData(image, progress);
}

}  // namespace

HRESULT WriteFWData(Image image, Progress progress) {
  if (image.Missing()) {
    return kRefused;
  }
  if (static_cast<std::int32_t>(image.length) < 0) {
    image.length = 0;
  }
  return WithDefaultCamera([&](IBaseFilter* device) { return SendImage(device, image, progress); });
}

HRESULT ReadFWData(std::uint8_t* buffer, std::uint32_t bufferSize, std::uint32_t* outLength,
                   Progress progress) {
  return WithDefaultCamera([&](IBaseFilter* device) {
    // The transfer control and its status deliberately open the camera once more.
    return ReadFWDataFrom(device, nullptr, buffer, bufferSize, outLength, progress);
  });
}

HRESULT UpdateFW(Image image, Progress progress) {
  const BurnProcedure procedure = {.announce = BeginWrite(0x00, 0x00),
                                   .order = ActOnData(0x00, 0x00),
                                   .sendImage = SendOnItsOwn,
                                   .stopsWhenSendFails = true,
                                   .end = PollUntilDone{kBurnError, 80}};
  return Burn(nullptr, procedure, image, progress);
}

HRESULT UpdateFWEx(Image image, Progress progress) {
  const BurnProcedure procedure = {.announce = BeginWrite(0x00, 0x01),
                                   .order = ActOnData(0x00, 0x01),
                                   .sendImage = SendOnItsOwn,
                                   .stopsWhenSendFails = false,
                                   .end = PollUntilDone{kBurnError, 10}};
  return Burn(nullptr, procedure, image, progress);
}

HRESULT UpdateFWVision(Image image, std::uint8_t param, Progress progress) {
  const BurnProcedure procedure = {.announce = BeginWrite(param, 0x00),
                                   .order = ActOnData(param, 0x00),
                                   .sendImage = SendOnItsOwn,
                                   .stopsWhenSendFails = false,
                                   .end = WaitAndLook{1, 10000, false}};
  return Burn(nullptr, procedure, image, progress);
}

}  // namespace zem::stateless
