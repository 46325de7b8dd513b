#include "romboot/linux_package.h"

#include <array>
#include <optional>

#include "platform/bytes.h"
#include "platform/file_contents.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/firmware_package.h"
#include "romboot/storage_transfer.h"

namespace zem {
namespace {

// The body address that stands for the one in the package's header.
constexpr std::uint32_t kAddressInHeader = 0xFFFFFFFF;

// How much of a package is read to learn where its body goes.
constexpr std::size_t kFirstReadSize = 512;

HRESULT ReportFileError() {
  platform::DebuggerOutput(L"ZEMROMAPI_UpdateLinuxFwPkg_ file error.\r\n");
  return kFail;
}

}  // namespace

HRESULT UpdateLinuxFwPkg(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t bodyAddress,
                         std::uint32_t headerAddress) {
  const FileContents file = ReadWholeFile(path, kSectorSize, kLinuxHeaderSize + kStorageSpace);
  const auto package = file ? ParseLinuxPackage(file.bytes()) : std::nullopt;
  if (!package) {
    return kFail;
  }
  if (bodyAddress == kAddressInHeader) {
    const auto ownAddress = ParseLinuxBodyAddress(package->header);
    if (!ownAddress) {
      return kFail;
    }
    bodyAddress = *ownAddress;
  } else {
    StoreLe32(&file.buffer[kLinuxBodyField], bodyAddress >> package->shift);
  }
  if (!FitsInStorage(headerAddress, kLinuxHeaderSize) ||
      (package->hasBody && !FitsInStorage(bodyAddress, package->body.size()))) {
    return kFail;
  }
  if (const HRESULT result = Erase(session, headerAddress, kLinuxHeaderSize); FAILED(result)) {
    return result;
  }
  // The header comes last: a camera takes nothing for a package that has none.
  const HRESULT result =
      package->hasBody ? WriteBlock(session, bodyAddress, package->body) : HRESULT{1};
  return FAILED(result) ? result : WriteBlock(session, headerAddress, package->header);
}

HRESULT UpdateLinuxFwPkgAtOwnAddress(ZemRomBootConfig& session, const wchar_t* path,
                                     std::uint32_t headerAddress) {
  std::array<std::uint8_t, kFirstReadSize> start = {};
  {
    const FileHandle file = OpenFileHandle(path, L"rb");
    if (file == nullptr) {
      return kFail;
    }
    if (std::fread(start.data(), 1, start.size(), file.get()) != start.size()) {
      return ReportFileError();
    }
  }
  const auto bodyAddress = ParseLinuxBodyAddress(start);
  return bodyAddress ? UpdateLinuxFwPkg(session, path, *bodyAddress, headerAddress) : kFail;
}

}  // namespace zem
