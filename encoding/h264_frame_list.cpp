#include "encoding/h264_frame_list.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "commands/command_block.h"
#include "device/transport.h"
#include "encoding/h264_default_list.h"
#include "platform/bytes.h"
#include "platform/memory.h"
#include "platform/result.h"

namespace zem {
namespace {

constexpr CommandBlock kListRequest = {0x0A, 0x01};

// The camera hands its list out in pieces of this size.
constexpr std::size_t kChunkSize = 32;

// Camera's list: total length and number of entries, then the entries.
constexpr std::size_t kRawHeaderSize = 4;
// Entry: length, type, frame index, sizes, bit rates, frame rates. An entry whose type says that it
// is to be skipped may end behind the type.
constexpr std::size_t kRawTypeEnd = 3;
constexpr std::size_t kRawEntrySize = 22;

// Deliberate: the length counts two bytes more than header and records take. Callers depend on it.
constexpr std::size_t kListExtra = 6;
// As many entries as a 16-bit total length can say.
constexpr std::size_t kMostEntries = (0xFFFF - kListExtra) / sizeof(H264FrameInfo);

struct RawList {
  ByteBuffer bytes;
  std::size_t size = 0;

  std::span<const std::uint8_t> span() const { return {bytes.get(), size}; }
};

HRESULT ReadChunk(std::uint8_t* chunk, IBaseFilter* filter) {
  return XuGetControl(VendorXu, vendor_selector::kH264ListRead, chunk, kChunkSize, nullptr, filter);
}

// Reads the camera's own list; `raw` stays empty when the camera has none to give. Fails only when
// there is no memory.
HRESULT ReadRawList(IBaseFilter* filter, RawList& raw) {
  const Exchange<CommandBlock> request = SendCommand(kVcpChannel, kListRequest, filter);
  if (FAILED(request.written) || FAILED(request.read) || request.status() != 0) {
    return S_OK;
  }
  std::array<std::uint8_t, kChunkSize> first = {};
  if (FAILED(ReadChunk(first.data(), filter)) || LoadLe16(first.data()) == 0) {
    return S_OK;
  }
  const std::size_t chunks = (LoadLe16(first.data()) + kChunkSize - 1) / kChunkSize;
  raw.size = chunks * kChunkSize;
  raw.bytes = AllocateBytes(raw.size);
  if (!raw.bytes) {
    return kFail;
  }
  std::copy(first.begin(), first.end(), raw.bytes.get());
  for (std::size_t at = kChunkSize; at < raw.size; at += kChunkSize) {
    // Deliberately not looked at: a piece that cannot be read is one of zeros, and ends the walk.
    static_cast<void>(ReadChunk(&raw.bytes[at], filter));
  }
  if (LoadLe16(&raw.bytes[2]) == 0) {
    raw = {};
  }
  return S_OK;
}

// The camera's entry at `offset`; empty when it does not lie wholly inside the list, or is too
// short for what it has to hold.
std::span<const std::uint8_t> EntryAt(std::span<const std::uint8_t> raw, std::size_t offset) {
  const std::span<const std::uint8_t> rest = raw.subspan(offset);
  if (rest.size() < kRawTypeEnd) {
    return {};
  }
  const std::size_t length = LoadLe16(rest.data());
  const std::size_t needed = rest[2] == 0 ? kRawTypeEnd : kRawEntrySize;
  return length >= needed && length <= rest.size() ? rest.first(length)
                                                   : std::span<const std::uint8_t>();
}

H264FrameInfo RecordOf(std::span<const std::uint8_t> entry, bool isLast) {
  H264FrameInfo record = {};
  record.wLength = sizeof(record);
  record.wType = entry[2];
  record.wFrameIndex = entry[3];
  // Deliberately the opposite of the default list's mark.
  record.bListMark = isLast ? 0 : 1;
  record.wWidth = LoadLe16(&entry[4]);
  record.wHeight = LoadLe16(&entry[6]);
  record.wSubWidth = LoadLe16(&entry[8]);
  record.wSubHeight = LoadLe16(&entry[10]);
  record.dwMaxBitRate = LoadLe32(&entry[12]);
  record.dwMinBitRate = LoadLe32(&entry[16]);
  record.wMaxFps = entry[20];
  record.wMinFps = entry[21];
  return record;
}

// The list that the camera's bytes describe. Its length counts skipped entries too, its count does
// not. Null when there is no memory.
FrameListPtr MakeList(std::span<const std::uint8_t> raw) {
  const std::size_t entryCount = std::min<std::size_t>(LoadLe16(&raw[2]), kMostEntries);
  const std::size_t size = entryCount * sizeof(H264FrameInfo) + kListExtra;
  FrameListPtr list = AllocateFrameList(size);
  if (!list) {
    return list;
  }
  list->wTotalLength = static_cast<std::uint16_t>(size);
  std::size_t offset = kRawHeaderSize;
  for (std::size_t number = 1; number <= entryCount; ++number) {
    const std::span<const std::uint8_t> entry = EntryAt(raw, offset);
    if (entry.empty()) {
      break;
    }
    if (const bool isSkipped = entry[2] == 0; !isSkipped) {
      AppendRecord(*list, RecordOf(entry, number == entryCount));
    }
    offset += entry.size();
  }
  return list;
}

}  // namespace

FrameListPtr AllocateFrameList(std::size_t size) {
  return FrameListPtr(reinterpret_cast<H264FrameList*>(AllocateBytes(size).release()));
}

std::span<const H264FrameInfo> RecordsOf(const H264FrameList& list) {
  return {reinterpret_cast<const H264FrameInfo*>(&list + 1), list.wCount};
}

void AppendRecord(H264FrameList& list, const H264FrameInfo& record) {
  reinterpret_cast<H264FrameInfo*>(&list + 1)[list.wCount] = record;
  ++list.wCount;
}

HRESULT EnsureFrameList(DeviceHandle& device) {
  if (device.frameList) {
    return S_OK;
  }
  RawList raw;
  if (const HRESULT result = ReadRawList(device.filter, raw); FAILED(result)) {
    return result;
  }
  device.frameList = raw.bytes ? MakeList(raw.span()) : MakeDefaultFrameList();
  return device.frameList ? S_OK : kFail;
}

HRESULT GetH264FrameList(DeviceHandle& device, void** list) {
  if (const HRESULT result = EnsureFrameList(device); FAILED(result)) {
    return result;
  }
  const std::uint16_t size = device.frameList->wTotalLength;
  FrameListPtr copy = AllocateFrameList(size);
  if (!copy) {
    return kFail;
  }
  std::memcpy(copy.get(), device.frameList.get(), size);
  *list = copy.release();
  return size;
}

void ReleaseH264FrameList(void* list) { FrameListPtr(static_cast<H264FrameList*>(list)).reset(); }

}  // namespace zem
