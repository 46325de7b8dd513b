#include "romboot/package_split.h"

#include <array>
#include <cstring>
#include <string_view>

#include "platform/bytes.h"
#include "platform/file_contents.h"
#include "platform/result.h"
#include "romboot/firmware_package.h"

namespace zem {
namespace {

// Deliberate: the files say V3 and their magics V2; callers depend on both.
constexpr const wchar_t* kBootCodeFile = L"VSN_V3BC";
constexpr const wchar_t* kFirmwareFile = L"VSN_V3FW";
constexpr std::string_view kBootCodeMagic = "VSN_V2BC";
constexpr std::string_view kFirmwareMagic = "VSN_V2FW";

constexpr std::uint16_t kHeaderMarker = 1;

// Writes an image file into the current folder. A file that cannot be created is skipped; false for
// one that could not be written whole.
bool WriteImage(const wchar_t* path, std::string_view magic, const PackagedSection& section) {
  const FileHandle file = OpenFileHandle(path, L"w+b");
  if (file == nullptr) {
    return true;
  }
  std::array<std::uint8_t, kImageHeaderSize> header = {};
  std::memcpy(header.data(), magic.data(), magic.size());
  StoreLe16(&header[8], kHeaderMarker);
  StoreLe32(&header[10], section.value);
  StoreLe32(&header[14], section.payloadLength);
  const auto write = [&](FileBytes bytes) {
    static_cast<void>(std::fwrite(bytes.data(), 1, bytes.size(), file.get()));
  };
  write(header);
  write(section.bytes);
  // What could not be written is seen here at the latest, and stays the file's error.
  static_cast<void>(std::fflush(file.get()));
  return std::ferror(file.get()) == 0;
}

}  // namespace

HRESULT DispackZemPcCamFw(const wchar_t* path) {
  const FileContents file = ReadWholeFile(path, 0);
  const auto package = file ? ParseSplitPackage(file.bytes()) : std::nullopt;
  if (!package) {
    return kFail;
  }
  const bool bootCodeWritten = WriteImage(kBootCodeFile, kBootCodeMagic, package->bootCode);
  const bool firmwareWritten = WriteImage(kFirmwareFile, kFirmwareMagic, package->firmware);
  return bootCodeWritten && firmwareWritten ? 1 : kFail;
}

}  // namespace zem
