#include "romboot/burning.h"

#include "platform/file_contents.h"
#include "platform/result.h"
#include "romboot/firmware_package.h"
#include "romboot/storage_transfer.h"

namespace zem {
namespace {

// What the first command of a package carries; the boot code knows what it means.
constexpr std::uint8_t kFirstTransferFlag = 1;

FileContents ReadFirmware(const wchar_t* path) { return ReadWholeFile(path, kSectorSize); }

// The payload behind the place of its header block, and the header block when all of it is there.
HRESULT WriteSection(ZemRomBootConfig& session, std::uint32_t start, const Section& section,
                     std::uint32_t& address) {
  const HRESULT result =
      WriteSectors(session, address, section.payload.data(), section.payload.size());
  std::uint32_t headerAddress = start;
  return FAILED(result)
             ? result
             : WriteSectors(session, headerAddress, section.header.data(), section.header.size());
}

}  // namespace

HRESULT BurnFw(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address) {
  const FileContents file = ReadFirmware(path);
  const auto section = file ? ParseImage(file.bytes()) : std::nullopt;
  const std::uint32_t start = *address;
  if (!section || !FitsInStorage(start, section->size())) {
    return kFail;
  }
  *address = start + kHeaderBlockSize;
  // Deliberate: a failed erase is ignored; callers depend on it.
  static_cast<void>(Erase(session, start, kHeaderBlockSize));
  const HRESULT result = WriteSection(session, start, *section, *address);
  if (SUCCEEDED(result)) {
    *address = (*address + kHeaderBlockSize - 1) / kHeaderBlockSize * kHeaderBlockSize;
  }
  return result;
}

HRESULT BurnPcCamFw(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address) {
  const FileContents file = ReadFirmware(path);
  const auto data = file ? ParsePcCamPackage(file.bytes()) : std::nullopt;
  if (!data) {
    return kFail;
  }
  *address = 0;
  return WriteSectors(session, *address, data->data(), data->size(), kFirstTransferFlag);
}

HRESULT BurnPcCamFwPnsV2(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address) {
  const FileContents file = ReadFirmware(path);
  const auto section = file ? ParsePcCamPnsV2Package(file.bytes()) : std::nullopt;
  if (!section) {
    return kFail;
  }
  *address = kHeaderBlockSize;
  if (const HRESULT result = Erase(session, 0, kHeaderBlockSize); FAILED(result)) {
    return result;
  }
  return WriteSection(session, 0, *section, *address);
}

}  // namespace zem
