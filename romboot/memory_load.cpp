#include "romboot/memory_load.h"

#include "platform/bytes.h"
#include "platform/debugger_line.h"
#include "platform/file_contents.h"
#include "platform/result.h"
#include "romboot/storage_transfer.h"

namespace zem {

std::uint32_t WordSum(std::span<const std::uint8_t> piece) {
  constexpr std::size_t kWordSize = sizeof(std::uint32_t);
  const std::size_t words = piece.size() / kWordSize;
  std::uint32_t sum = 0;
  for (std::size_t word = 0; word < words; ++word) {
    sum += LoadLe32(&piece[word * kWordSize]);
  }
  return sum;
}

HRESULT LoadFW2Memory(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address) {
  const FileContents file = ReadWholeFile(path, kMaxTransfer, kStorageSpace);
  if (!file) {
    return kFail;
  }
  *address = 0;
  return WriteResult(
      ForEachTransfer(*address, file.size(), [&](std::uint64_t offset, std::uint32_t length) {
        const std::uint8_t* const piece = file.data() + offset;
        platform::DebuggerLine<64>(L"ChkSum=0x%X\r\n", WordSum({piece, length}));
        return session.scsi.WriteStorage(*address, length / kSectorSize, piece, 0) != 0;
      }));
}

}  // namespace zem
