#include "romboot/partial_access.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "platform/bytes.h"
#include "platform/file_contents.h"
#include "platform/file_handle.h"
#include "platform/memory.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/firmware_package.h"
#include "romboot/storage_transfer.h"
#include "romboot/vendor_commands.h"

namespace zem {
namespace {

// How much of a file PartialUpdate holds at a time.
constexpr std::size_t kPieceSize = 4194304;

bool ReadStorage(UsbScsiCmd& scsi, std::uint32_t address, std::uint32_t length, void* data) {
  VendorCdb cdb = MakeCdb(SubCommand::kReadStorage);
  // Deliberate: read addresses are not divided.
  StoreBe32(&cdb[4], address);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(length / kSectorSize));
  return scsi.SendScsiCmd(1, kDataIn, length, cdb.data(), data) != 0;
}

}  // namespace

HRESULT PartialUpdateWithHeader(ZemRomBootConfig& session, const wchar_t* path,
                                std::uint32_t* address) {
  const FileContents file = ReadWholeFile(path, kSectorSize, kStorageSpace);
  if (!file || !FitsInStorage(*address, std::max<std::size_t>(file.size(), kHeaderBlockSize))) {
    return kFail;
  }
  if (const HRESULT result = Erase(session, *address, kHeaderBlockSize); FAILED(result)) {
    return result;
  }
  if (file.size() <= kHeaderBlockSize) {
    return WriteMirrored(session, *address, file.bytes());
  }
  std::uint32_t headerAddress = *address;
  *address += kHeaderBlockSize;
  const HRESULT result = WriteMirrored(session, *address, file.bytes().subspan(kHeaderBlockSize));
  return FAILED(result)
             ? result
             : WriteMirrored(session, headerAddress, file.bytes().first(kHeaderBlockSize));
}

HRESULT PartialUpdate(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address) {
  const FileHandle file = OpenFileHandle(path, L"rb");
  const auto size = file != nullptr ? platform::MeasureFile(file.get()) : std::nullopt;
  if (!size || !FitsInStorage(*address, *size)) {
    return kFail;
  }
  const ByteBuffer piece = AllocateBytes(kPieceSize);
  if (piece == nullptr) {
    return kFail;
  }
  for (std::uint64_t remaining = *size; remaining > 0;) {
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, kPieceSize));
    if (std::fread(piece.get(), 1, length, file.get()) != length) {
      return kFail;
    }
    std::memset(piece.get() + length, 0, static_cast<std::size_t>(WholeSectors(length)) - length);
    if (const HRESULT result = WriteMirrored(session, *address, {piece.get(), length});
        FAILED(result)) {
      return result;
    }
    remaining -= length;
  }
  return 1;
}

HRESULT PartialRead(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address,
                    std::uint32_t length) {
  const FileHandle file = OpenFileHandle(path, L"w+b");
  if (file == nullptr) {
    platform::DebuggerOutput(L"Failed to create destination file.\r\n");
    return kFail;
  }
  // Deliberate: reading starts at the beginning of the storage, whatever the caller's address.
  *address = 0;
  std::array<std::uint8_t, kMaxTransfer> piece = {};
  bool received = true;
  const bool stored =
      ForEachTransfer(*address, length, [&](std::uint64_t /*offset*/, std::uint32_t size) {
        received = ReadStorage(session.scsi, *address, size, piece.data());
        return received && std::fwrite(piece.data(), 1, size, file.get()) == size;
      });
  if (!received) {
    platform::DebuggerOutput(L"Usb transfer failed\r\n");
  }
  return stored && std::fflush(file.get()) == 0 ? 1 : kFail;
}

}  // namespace zem
