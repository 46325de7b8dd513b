#include "romboot/linux_package.h"

#include <array>
#include <cstdio>
#include <optional>

#include "platform/bytes.h"
#include "platform/file_contents.h"
#include "platform/file_handle.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/firmware_package.h"
#include "romboot/storage_transfer.h"

namespace zem {
namespace {

// The body address that stands for the one in the package's header.
constexpr std::uint32_t kAddressInHeader = 0xFFFFFFFF;

// What a package that is written to its own address must at least hold.
constexpr std::size_t kFirstReadSize = 512;

}  // namespace

HRESULT UpdateLinuxFwPkg(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t bodyAddress,
                         std::uint32_t headerAddress) {
  FileContents file = ReadWholeFile(path, kSectorSize, kLinuxHeaderSize + kStorageSpace);
  const auto package = file ? ParseLinuxPackage(file.bytes()) : std::nullopt;
  if (!package) {
    return kFail;
  }
  const bool addressInHeader = bodyAddress == kAddressInHeader;
  const std::uint64_t wanted = addressInHeader ? package->bodyAddress : bodyAddress;
  if (!package->body.empty() && !FitsInStorage(wanted, package->body.size())) {
    return kFail;
  }
  if (!addressInHeader) {
    StoreLe32(file.data() + kLinuxBodyField, bodyAddress >> package->shift);
  }
  if (const HRESULT result = Erase(session, headerAddress, kLinuxHeaderSize); FAILED(result)) {
    return result;
  }
  auto address = static_cast<std::uint32_t>(wanted);
  const HRESULT result = WriteMirrored(session, address, package->body);
  return FAILED(result) ? result : WriteMirrored(session, headerAddress, package->header);
}

HRESULT UpdateLinuxFwPkgAtOwnAddress(ZemRomBootConfig& session, const wchar_t* path,
                                     std::uint32_t headerAddress) {
  {
    const FileHandle file = OpenFileHandle(path, L"rb");
    if (file == nullptr) {
      return kFail;
    }
    std::array<std::uint8_t, kFirstReadSize> start = {};
    if (std::fread(start.data(), 1, start.size(), file.get()) != start.size()) {
      platform::DebuggerOutput(L"ZEMROMAPI_UpdateLinuxFwPkg_ file error.\r\n");
      return kFail;
    }
  }
  return UpdateLinuxFwPkg(session, path, kAddressInHeader, headerAddress);
}

}  // namespace zem
