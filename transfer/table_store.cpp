#include "transfer/table_store.h"

#include <algorithm>

#include "platform/memory.h"
#include "platform/result.h"
#include "transfer/nvmem.h"
#include "transfer/table_image.h"

namespace zem {
namespace {

// Enough of the image to tell whether it is one, and how long it is.
constexpr std::uint32_t kProbeSize = 32;

TableImage ImageAt(std::uint8_t* bytes) { return TableImage(bytes, kTableImageSize); }

ConstTableImage ImageAt(const std::uint8_t* bytes) {
  return ConstTableImage(bytes, kTableImageSize);
}

HRESULT ReadImage(IBaseFilter* filter, TableImage image, std::uint32_t length) {
  std::uint32_t read = 0;
  return ReadNVMEM(filter, 0, image.data(), length, &read);
}

// A new image with the whole searched memory of the device in it, marked as one or not.
HRESULT ReadWholeImage(IBaseFilter* filter, ByteBuffer& buffer) {
  buffer = AllocateBytes(kTableImageSize);
  return buffer ? ReadImage(filter, ImageAt(buffer.get()), kTableImageSize) : kRefused;
}

// What a search has `found` goes to the caller. Deliberate: a table that the image lacks is no
// failure, and leaves the outputs untouched.
HRESULT CopyPayload(ConstTableImage image, HRESULT found, const TableEntry& entry,
                    std::uint8_t* out, std::uint32_t* size) {
  if (found != S_OK) {
    return found == kRefused ? S_OK : found;
  }
  const auto payload = image.subspan(entry.PayloadOffset(), entry.PayloadSize());
  std::copy(payload.begin(), payload.end(), out);
  if (size != nullptr) {
    *size = entry.PayloadSize();
  }
  return S_OK;
}

// Puts `data` into the image's entry, whose length never changes.
HRESULT ReplacePayload(TableImage image, std::uint8_t id, const std::uint8_t* data,
                       std::uint32_t* size, TableEntry& entry) {
  if (const HRESULT found = FindTableEntry(image, id, entry); found != S_OK) {
    return found;
  }
  std::copy_n(data, entry.PayloadSize(), image.begin() + entry.PayloadOffset());
  if (size != nullptr) {
    *size = entry.PayloadSize();
  }
  return S_OK;
}

// Writes a whole entry, header and payload, to its place in the device.
HRESULT WriteEntry(IBaseFilter* filter, ConstTableImage image, const TableEntry& entry) {
  std::uint32_t written = 0;
  return WriteNVMEM(filter, entry.offset, &image[entry.offset], entry.length, &written);
}

}  // namespace

HRESULT OpenTableHandle(IBaseFilter* filter, std::uint8_t** handle) {
  ByteBuffer buffer = AllocateBytes(kTableImageSize);
  if (!buffer) {
    return kRefused;
  }
  const TableImage image = ImageAt(buffer.get());
  // Whatever this read came to, the mark tells whether there is an image.
  static_cast<void>(ReadImage(filter, image, kProbeSize));
  if (image[0] != kTableImageMark) {
    return kRefused;
  }
  const std::uint32_t total = TableImageTotal(image);
  const std::uint32_t bounded = std::min<std::uint32_t>(total, kTableImageSize);
  if (const HRESULT result = ReadImage(filter, image, bounded); result != S_OK) {
    return result;
  }
  if (total > bounded) {
    return kRefused;
  }
  *handle = buffer.release();
  return S_OK;
}

void CloseTableHandle(std::uint8_t** handle) {
  const ByteBuffer closed(*handle);
  *handle = nullptr;
}

HRESULT GetTableSize(const std::uint8_t* handle, std::uint8_t id, std::uint16_t* size) {
  *size = 0;
  TableEntry entry;
  if (handle == nullptr || FindTableEntry(ImageAt(handle), id, entry) != S_OK) {
    return kRefused;
  }
  *size = entry.PayloadSize();
  return S_OK;
}

HRESULT ReadTableEx(const std::uint8_t* handle, std::uint8_t id, std::uint8_t* out,
                    std::uint32_t* size) {
  const ConstTableImage image = ImageAt(handle);
  TableEntry entry;
  // Deliberate: of all searches only this one takes no entry longer than an image.
  const HRESULT found = FindTableEntry(image, id, entry, kTableImageSize);
  return CopyPayload(image, found, entry, out, size);
}

HRESULT WriteTableEx(IBaseFilter* filter, std::uint8_t* handle, std::uint8_t id,
                     const std::uint8_t* data, std::uint32_t* size) {
  const TableImage image = ImageAt(handle);
  TableEntry entry;
  if (const HRESULT result = ReplacePayload(image, id, data, size, entry); result != S_OK) {
    return result;
  }
  // Deliberate: the image holds the new table whether the device took it or not.
  if (filter != nullptr) {
    static_cast<void>(WriteEntry(filter, image, entry));
  }
  return S_OK;
}

HRESULT ReadTable(IBaseFilter* filter, std::uint8_t id, std::uint8_t* out, std::uint32_t* size) {
  ByteBuffer buffer;
  if (const HRESULT result = ReadWholeImage(filter, buffer); result != S_OK) {
    return result;
  }
  const ConstTableImage image = ImageAt(buffer.get());
  TableEntry entry;
  const HRESULT found = FindTableEntry(image, id, entry);
  return CopyPayload(image, found, entry, out, size);
}

HRESULT WriteTable(IBaseFilter* filter, std::uint8_t id, const std::uint8_t* data,
                   std::uint32_t* size) {
  ByteBuffer buffer;
  if (const HRESULT result = ReadWholeImage(filter, buffer); result != S_OK) {
    return result;
  }
  TableEntry entry;
  if (const HRESULT result = ReplacePayload(ImageAt(buffer.get()), id, data, size, entry);
      result != S_OK) {
    return result;
  }
  return WriteEntry(filter, ImageAt(buffer.get()), entry);
}

HRESULT DumpWholeTable(const std::uint8_t* handle, std::uint8_t* out, std::uint32_t capacity,
                       std::uint32_t* size) {
  const ConstTableImage image = ImageAt(handle);
  const std::size_t total = std::min<std::size_t>(TableImageTotal(image), image.size());
  const std::size_t count = std::min<std::size_t>(total, capacity);
  std::copy_n(image.begin(), count, out);
  *size = static_cast<std::uint32_t>(count);
  return S_OK;
}

}  // namespace zem
