#include "transfer/nvmem.h"

#include <algorithm>
#include <array>

#include "device/extension_units.h"
#include "device/transport.h"
#include "platform/bytes.h"
#include "platform/result.h"
#include "transfer/chunks.h"

namespace zem {
namespace {

// Address (16 bits), number of data bytes, data.
using NvmemBlock = std::array<std::uint8_t, 32>;

constexpr std::size_t kDataOffset = 3;
constexpr std::uint32_t kPieceSize = std::tuple_size_v<NvmemBlock> - kDataOffset;
// In the number of data bytes: the device shall fill them in for the next read of the control.
constexpr std::uint32_t kReadRequest = 0x80;

constexpr std::uint32_t kTirellaSize = 256;

struct NvmemControl {
  const GUID& unit;
  std::uint16_t selector;
};

constexpr NvmemControl kVendorNvmem = {VendorXu, vendor_selector::kNvmem};
constexpr NvmemControl kTirellaNvmem = {TirellaXu, tirella_selector::kNvmem};

void SetHeader(NvmemBlock& block, std::uint32_t address, std::uint32_t count) {
  StoreLe16(block.data(), static_cast<std::uint16_t>(address));
  block[2] = static_cast<std::uint8_t>(count);
}

HRESULT Send(const NvmemControl& control, NvmemBlock& block, IBaseFilter* filter) {
  return XuSetControl(control.unit, control.selector, block.data(),
                      static_cast<ULONG>(block.size()), nullptr, filter);
}

// Writes one piece. Bytes of `block` behind the data go out as they are.
HRESULT WritePiece(const NvmemControl& control, NvmemBlock& block, std::uint32_t address,
                   const std::uint8_t* data, std::uint32_t count, IBaseFilter* filter) {
  SetHeader(block, address, count);
  std::copy_n(data, count, block.begin() + kDataOffset);
  return Send(control, block, filter);
}

// Asks for one piece and reads it into `block`; data that the device leaves out is zero.
// Deliberate: only the result of the read counts, not that of the request.
HRESULT ReadPiece(const NvmemControl& control, std::uint32_t address, std::uint32_t count,
                  NvmemBlock& block, IBaseFilter* filter) {
  block = {};
  SetHeader(block, address, count | kReadRequest);
  static_cast<void>(Send(control, block, filter));
  return XuGetControl(control.unit, control.selector, block.data(),
                      static_cast<ULONG>(block.size()), nullptr, filter);
}

}  // namespace

HRESULT WriteNVMEM(IBaseFilter* filter, std::uint16_t address, const std::uint8_t* data,
                   std::uint32_t length, std::uint32_t* written) {
  if (IsMissing(data, length)) {
    return kRefused;
  }
  *written = 0;
  // Deliberate: not zeroed between pieces, so that a short last one carries the tail of the piece
  // before it behind its data.
  NvmemBlock block = {};
  while (*written < length) {
    const std::uint32_t count = std::min(kPieceSize, length - *written);
    if (const HRESULT result =
            WritePiece(kVendorNvmem, block, address + *written, data + *written, count, filter);
        result != S_OK) {
      return result;
    }
    *written += count;
  }
  return S_OK;
}

HRESULT ReadNVMEM(IBaseFilter* filter, std::uint16_t address, std::uint8_t* buffer,
                  std::uint32_t length, std::uint32_t* read) {
  if (IsMissing(buffer, length)) {
    return kRefused;
  }
  *read = 0;
  while (*read < length) {
    const std::uint32_t count = std::min(kPieceSize, length - *read);
    NvmemBlock block;
    if (const HRESULT result = ReadPiece(kVendorNvmem, address + *read, count, block, filter);
        result != S_OK) {
      return result;
    }
    std::copy_n(block.begin() + kDataOffset, count, buffer + *read);
    *read += count;
  }
  return S_OK;
}

HRESULT WriteTirellaNVMEM(IBaseFilter* filter, const std::uint8_t* data, std::uint32_t length,
                          std::uint32_t* written) {
  if (IsMissing(data, length) || length < kTirellaSize) {
    return kRefused;
  }
  // Deliberate: as many pieces as `length` has, though the memory ends before them. Those past its
  // end go out empty.
  std::uint32_t offset = 0;
  for (std::uint64_t begin = 0; begin < length; begin += kPieceSize) {
    const std::uint32_t count = std::min(kPieceSize, kTirellaSize - offset);
    NvmemBlock block = {};
    if (const HRESULT result =
            WritePiece(kTirellaNvmem, block, offset, data + offset, count, filter);
        result != S_OK) {
      return result;
    }
    offset += count;
  }
  *written = kTirellaSize;
  return S_OK;
}

HRESULT ReadTirellaNVMEM(IBaseFilter* filter, std::uint8_t* buffer, std::uint32_t length,
                         std::uint32_t* read) {
  if (IsMissing(buffer, length)) {
    return kRefused;
  }
  const std::uint32_t wanted = std::min(length, kTirellaSize);
  std::uint32_t offset = 0;
  while (offset < wanted) {
    const std::uint32_t count = std::min(kPieceSize, wanted - offset);
    NvmemBlock block;
    const HRESULT result = ReadPiece(kTirellaNvmem, offset, count, block, filter);
    // Deliberate: copied before the result is looked at.
    std::copy_n(block.begin() + kDataOffset, count, buffer + offset);
    offset += count;
    if (result != S_OK) {
      return result;
    }
  }
  *read = offset;
  return S_OK;
}

}  // namespace zem
