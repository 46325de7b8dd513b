#include "transfer/table_image.h"

#include "platform/result.h"

namespace zem {

HRESULT FindTableEntry(ConstTableImage image, std::uint8_t id, TableEntry& entry,
                       std::size_t longest) {
  const std::size_t total = TableImageTotal(image);
  std::size_t offset = kTableHeaderSize;
  while (offset < total) {
    if (offset + kTableHeaderSize > image.size()) {
      return kFail;
    }
    const std::uint16_t length = LoadLe16(&image[offset + 2]);
    if (length < kTableHeaderSize || length > longest) {
      return kFail;
    }
    if (image[offset + 1] == id) {
      if (offset + length > image.size()) {
        return kFail;
      }
      entry = {static_cast<std::uint16_t>(offset), length};
      return S_OK;
    }
    offset += length;
  }
  return kRefused;
}

}  // namespace zem
