#include "transfer/stateless_commands.h"

#include <algorithm>
#include <array>

#include "device/extension_units.h"
#include "platform/result.h"
#include "transfer/chunks.h"

namespace zem::stateless {
namespace {

using Piece = ExtendedBlock;
constexpr std::uint32_t kPieceLength = std::tuple_size_v<Piece>;

}  // namespace

HRESULT Send(const CommandBlock& command) { return StandardCommand(kIspChannel, command, nullptr); }

HRESULT GetChipInfo(IBaseFilter* filter, std::uint8_t* info) {
  ExtendedBlock block = {};
  if (FAILED(ReadBlock(vendor_selector::kDeviceInfo, block, filter))) {
    return kNoDevice;
  }
  std::copy(block.begin(), block.end(), info);
  return S_OK;
}

HRESULT WriteMemory(const std::uint8_t* data, std::int32_t length) {
  if (IsMissing(data, static_cast<std::uint32_t>(length))) {
    return kRefused;
  }
  // Deliberate: a negative length sends one whole piece.
  std::uint32_t remaining = length < 0 ? kPieceLength : static_cast<std::uint32_t>(length);
  while (remaining > 0) {
    const std::uint32_t count = std::min(remaining, kPieceLength);
    Piece piece = {};
    std::copy_n(data, count, piece.begin());
    if (const HRESULT result = WriteBlock(vendor_selector::kMemoryWrite, piece, nullptr);
        result != S_OK) {
      return result;
    }
    data += count;
    remaining -= count;
  }
  return S_OK;
}

HRESULT ReadMemory(std::uint8_t* buffer, std::uint32_t length) {
  if (IsMissing(buffer, length)) {
    return kRefused;
  }
  for (std::uint32_t remaining = length; remaining > 0;) {
    Piece piece = {};
    const HRESULT result = ReadBlock(vendor_selector::kMemoryRead, piece, nullptr);
    // Deliberate: copied before the result is looked at.
    const std::uint32_t count = std::min(remaining, kPieceLength);
    buffer = std::copy_n(piece.begin(), count, buffer);
    if (result != S_OK) {
      return result;
    }
    remaining -= count;
  }
  return S_OK;
}

}  // namespace zem::stateless
