#include "transfer/data_channel.h"

#include <algorithm>
#include <cstring>

#include "device/extension_units.h"
#include "device/transport.h"
#include "platform/bytes.h"
#include "platform/debugger_line.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "transfer/transfer_control.h"

namespace zem {
namespace {

using platform::DebuggerLine;

constexpr DataControl kFastData = {vendor_selector::kFastBulkData, 512};
constexpr DataControl kSlowData = {vendor_selector::kBulkData, 32};
constexpr DataControl kFastFlashRead = {vendor_selector::kMemoryRead, 512};
constexpr DataControl kSlowFlashRead = {vendor_selector::kSlowFlashRead, 32};

// A buffer for a chunk of either speed.
constexpr std::uint32_t kLongestChunk =
    std::max({kFastData.chunkLength, kSlowData.chunkLength, kFastFlashRead.chunkLength,
              kSlowFlashRead.chunkLength});

// Characters of a line about data that is announced and sent, with its end.
constexpr std::size_t kShortLine = 64;

// Repeats a transfer that came to `result` until it does not fail, up to five times, each after a
// line and 5 ms. The result of the last one.
template <std::size_t Capacity, class Transfer>
HRESULT Retry(HRESULT result, const wchar_t* line, Transfer transfer) {
  constexpr int kRetries = 5;
  constexpr std::uint32_t kPauseMilliseconds = 5;
  for (int retry = 0; FAILED(result) && retry < kRetries; ++retry) {
    DebuggerLine<Capacity>(line, retry);
    platform::Sleep(kPauseMilliseconds);
    result = transfer();
  }
  return result;
}

// Fills the front of `buffer` and zeroes the rest of its `length` bytes.
void Pad(std::uint8_t* buffer, std::uint32_t length, const std::uint8_t* bytes,
         std::uint32_t count) {
  std::memcpy(buffer, bytes, count);
  std::memset(buffer + count, 0, length - count);
}

HRESULT ReadChunk(const DataControl& control, std::uint8_t* bytes, IBaseFilter* filter) {
  return XuGetControl(VendorXu, control.selector, bytes, control.chunkLength, nullptr, filter);
}

// How many bytes of a chunk that has been read go to the caller.
std::uint32_t CopiedCount(std::uint32_t remaining, std::uint32_t chunkLength) {
  // Deliberate: cut to 16 bits. The most that they hold stands for 0, with which no read would end.
  constexpr std::uint16_t kMost = 0xFFFF;
  const auto count = static_cast<std::uint16_t>(std::min(remaining, chunkLength));
  return count != 0 ? count : kMost;
}

// The share done so far. Deliberate: in single precision.
std::uint32_t DonePercent(std::uint32_t done, std::uint32_t size) {
  return static_cast<std::uint32_t>(static_cast<float>(done) / static_cast<float>(size) * 100.0F);
}

}  // namespace

DataControl ProbeDataSpeed(IBaseFilter* filter) {
  const ByteBuffer discarded = AllocateBytes(kFastData.chunkLength);
  ULONG moved = 0;
  const bool isFast = discarded &&
                      SUCCEEDED(XuGetControl(VendorXu, kFastData.selector, discarded.get(),
                                             kFastData.chunkLength, &moved, filter)) &&
                      moved == kFastData.chunkLength;
  const DataControl& chosen = isFast ? kFastData : kSlowData;
  // The spelling is deliberate: callers depend on it.
  DebuggerLine<kTransferLine>(L"[MSG] Set Speeed:: %dBytes, CS=0x%X, Len=0x%X\r\n",
                              chosen.chunkLength, chosen.selector, chosen.chunkLength);
  return chosen;
}

HRESULT WriteChunk(const DataControl& control, const std::uint8_t* bytes, IBaseFilter* filter) {
  // A write does not change the bytes; the system's interface does not say so.
  return XuSetControl(VendorXu, control.selector, const_cast<std::uint8_t*>(bytes),
                      control.chunkLength, nullptr, filter);
}

HRESULT SendData(IBaseFilter* filter, Image data, Progress progress, std::uint8_t param2,
                 std::uint8_t param3) {
  if (data.Missing()) {
    return kRefused;
  }
  const std::uint32_t start = platform::MillisecondClock();
  // Deliberate: 16 bits of the length are announced, whatever the length.
  TransferControl announce = BeginWrite(param2, param3);
  StoreLe16(&announce[4], static_cast<std::uint16_t>(data.length));
  if (FAILED(WriteTransferControl(announce, filter))) {
    return kNoDevice;
  }
  const ByteBuffer padded = AllocateBytes(kSlowData.chunkLength);
  if (!padded) {
    return kNoDevice;
  }
  const auto send = [&](const std::uint8_t* position, std::uint32_t count) {
    Pad(padded.get(), kSlowData.chunkLength, position, count);
    // Deliberate: a retry takes the whole chunk from the caller's memory, so that a short last
    // chunk is followed by whatever follows it there.
    const bool isSent = SUCCEEDED(
        Retry<kShortLine>(WriteChunk(kSlowData, padded.get(), filter), L"SendData: retry (%d).\r\n",
                          [&] { return WriteChunk(kSlowData, position, filter); }));
    if (!isSent) {
      // Deliberate: the two numbers of the format meet the address of the name and the length; the
      // result is not printed.
      static const wchar_t name[] = L"ZEMAPI_SendData";
      DebuggerLine<kShortLine>(L"[ERR]Len = %d, hr = %X\r\n",
                               static_cast<int>(reinterpret_cast<std::intptr_t>(name)),
                               kSlowData.chunkLength);
    }
    return isSent;
  };
  // Deliberate: not a share of the whole. It is divided by the length of this chunk, in 32 bits.
  const auto value = [](std::uint32_t remaining, std::uint32_t count) {
    return remaining * 100 / count;
  };
  // Deliberate: data that could not be sent is no failure of the operation.
  static_cast<void>(SendChunks(data, kSlowData.chunkLength, progress, send, value));
  DebuggerLine<kShortLine>(L" Size(%dbytes)Time =%dms.\r\n", data.length,
                           platform::MillisecondClock() - start);
  return S_OK;
}

HRESULT WriteFWData(IBaseFilter* filter, Image data, Progress progress) {
  if (data.Missing()) {
    return kRefused;
  }
  const ByteBuffer padded = AllocateBytes(kLongestChunk);
  if (!padded) {
    return kNoDevice;
  }
  const DataControl control = ProbeDataSpeed(filter);
  const auto send = [&](const std::uint8_t* position, std::uint32_t count) {
    Pad(padded.get(), control.chunkLength, position, count);
    const HRESULT result = WriteChunk(control, padded.get(), filter);
    if (FAILED(result)) {
      DebuggerLine<kTransferLine>(L"[ERR] %s: Len = %d, hr = %X\r\n", L"ZEMAPI_WriteFWData",
                                  control.chunkLength, result);
    }
    return SUCCEEDED(result);
  };
  const auto value = [&data](std::uint32_t remaining, std::uint32_t /*count*/) {
    return RemainingPercent(remaining, data.length);
  };
  return SendChunks(data, control.chunkLength, progress, send, value) ? S_OK : kNoDevice;
}

HRESULT ReadFWData(IBaseFilter* filter, std::uint8_t* buffer, std::uint32_t bufferSize,
                   std::uint32_t* outLength, Progress progress) {
  return ReadFWDataFrom(filter, filter, buffer, bufferSize, outLength, progress);
}

HRESULT ReadFWDataFrom(IBaseFilter* dataFilter, IBaseFilter* controlFilter, std::uint8_t* buffer,
                       std::uint32_t bufferSize, std::uint32_t* outLength, Progress progress) {
  // How much the device moves at once is asked by reading; what it gave is overwritten later.
  ULONG reported = 0;
  const HRESULT probed =
      XuGetControl(VendorXu, vendor_selector::kBulkData, buffer, bufferSize, &reported, dataFilter);
  if (FAILED(probed) && reported == 0) {
    return kDeviceRefused;
  }
  constexpr TransferControl kBeginRead = {kTransferCode, transfer_action::kBeginRead};
  if (FAILED(WriteTransferControl(kBeginRead, controlFilter))) {
    return kDeviceRefused;
  }
  TransferStatus status = {};
  // Deliberate: a status that cannot be read means no data.
  static_cast<void>(ReadTransferStatus(status, controlFilter));
  const std::uint32_t total = LoadLe32(&status[2]);
  if (total > bufferSize) {
    return kBufferTooSmall;
  }
  const bool hasData = static_cast<std::int32_t>(total) > 0;
  if (hasData && reported == 0) {
    return kDeviceRefused;
  }
  *outLength = total;
  const DataControl control = {vendor_selector::kBulkData, reported};
  for (std::uint32_t remaining = hasData ? total : 0; remaining > 0;) {
    const ByteBuffer chunk = AllocateBytes(control.chunkLength);
    if (!chunk) {
      return kDeviceRefused;
    }
    progress.Report(RemainingPercent(remaining, total));
    // Deliberate: a chunk that cannot be read counts as one of zeros.
    static_cast<void>(ReadChunk(control, chunk.get(), dataFilter));
    const std::uint32_t count = CopiedCount(remaining, control.chunkLength);
    std::memcpy(buffer + (total - remaining), chunk.get(), count);
    remaining -= count;
  }
  return S_OK;
}

HRESULT ReadPartialFlashData(IBaseFilter* filter, std::uint32_t address, std::uint32_t size,
                             std::uint8_t* buffer, std::uint32_t* outSize, Progress progress) {
  DebuggerLine<kTransferLine>(L"ZEMAPI_ReadPartialFlashData:Size(%d)\r\n", size);
  const std::uint32_t start = platform::MillisecondClock();
  // Deliberate: 16 bits of the size are announced, and all of it is read.
  TransferControl announce = {kTransferCode, transfer_action::kReadFlash};
  StoreLe32(&announce[2], address);
  StoreLe16(&announce[6], static_cast<std::uint16_t>(size));
  if (FAILED(WriteTransferControl(announce, filter))) {
    return kDeviceRefused;
  }
  const ByteBuffer chunk = AllocateBytes(kLongestChunk);
  if (!chunk) {
    return kDeviceRefused;
  }
  const bool isFast = ProbeDataSpeed(filter).selector == kFastData.selector;
  const DataControl& control = isFast ? kFastFlashRead : kSlowFlashRead;
  const auto read = [&] { return ReadChunk(control, chunk.get(), filter); };
  // A size that is negative as a signed number reads nothing.
  for (std::uint32_t remaining = size; static_cast<std::int32_t>(remaining) > 0;) {
    std::memset(chunk.get(), 0, kLongestChunk);
    progress.Report(DonePercent(size - remaining, size));
    const HRESULT result = Retry<kTransferLine>(read(), L"[ReadData]: retry (%d).\r\n", read);
    if (FAILED(result)) {
      DebuggerLine<kTransferLine>(L"[ERR] %s: hr = 0x%x.\r\n", L"ZEMAPI_ReadPartialFlashData",
                                  result);
      return result;
    }
    const std::uint32_t count = std::min(remaining, control.chunkLength);
    std::memcpy(buffer + (size - remaining), chunk.get(), count);
    remaining -= count;
  }
  *outSize = size;
  DebuggerLine<kTransferLine>(L"ZEMAPI_ReadPartialFlashData readdata:Size(%d),Time =%dms.\r\n",
                              size, platform::MillisecondClock() - start);
  return S_OK;
}

}  // namespace zem
