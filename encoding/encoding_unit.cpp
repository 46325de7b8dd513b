#include "encoding/encoding_unit.h"

#include "device/discovery.h"
#include "device/extension_units.h"
#include "device/transport.h"
#include "encoding/command_log.h"
#include "platform/result.h"

namespace zem {
namespace {

constexpr std::uint16_t kStreamBlockSize = 51;

// One transfer and its log entry; the transport's result.
HRESULT LoggedTransfer(Direction direction, const GUID& unit, std::uint16_t selector, void* data,
                       std::uint16_t length, IBaseFilter* device) {
  const auto transfer = direction == Direction::kSet ? XuSetControl : XuGetControl;
  const HRESULT result = transfer(unit, selector, data, length, nullptr, device);
  LogTransfer(direction, unit, selector, {static_cast<const std::uint8_t*>(data), length}, result);
  return result;
}

HRESULT EuTransfer(Direction direction, std::uint32_t selector, void* data, std::uint16_t length,
                   IBaseFilter* device) {
  return LoggedTransfer(direction, EncodingUnitXu, static_cast<std::uint16_t>(selector), data,
                        length, device);
}

bool IsRefused(std::uint32_t selector, const void* data, std::uint16_t length) {
  return selector > 0xFFFF || (data == nullptr && length != 0);
}

HRESULT NoDeviceIfFailed(HRESULT result) { return FAILED(result) ? kNoDevice : result; }

HRESULT StreamBlock(Direction direction, std::uint16_t selector, void* block, IBaseFilter* device) {
  if (block == nullptr) {
    return kRefused;
  }
  return NoDeviceIfFailed(
      LoggedTransfer(direction, StreamProbeXu, selector, block, kStreamBlockSize, device));
}

}  // namespace

HRESULT OpenEncodingDevice(unsigned index, IBaseFilter** device) {
  if (device == nullptr) {
    return kRefused;
  }
  IBaseFilter* found = nullptr;
  const HRESULT result = FindDefaultDevice(&found, static_cast<int>(index));
  if (FAILED(result)) {
    return result;
  }
  *device = found;
  return S_OK;
}

void CloseEncodingDevice(IBaseFilter** device) {
  if (device != nullptr && *device != nullptr) {
    (*device)->Release();
    *device = nullptr;
  }
}

HRESULT EuSet(IBaseFilter* device, std::uint32_t selector, void* data, std::uint16_t length) {
  if (IsRefused(selector, data, length)) {
    return kRefused;
  }
  return EuTransfer(Direction::kSet, selector, data, length, device);
}

HRESULT EuGet(IBaseFilter* device, std::uint32_t selector, void* data, std::uint16_t length) {
  if (IsRefused(selector, data, length)) {
    return kRefused;
  }
  // Deliberate: unlike EuSet, the log alone has the transport's failure.
  return NoDeviceIfFailed(EuTransfer(Direction::kGet, selector, data, length, device));
}

HRESULT StreamBlockSet(IBaseFilter* device, std::uint16_t selector, void* block) {
  return StreamBlock(Direction::kSet, selector, block, device);
}

HRESULT StreamBlockGet(IBaseFilter* device, std::uint16_t selector, void* block) {
  return StreamBlock(Direction::kGet, selector, block, device);
}

}  // namespace zem
