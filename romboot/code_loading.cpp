#include "romboot/code_loading.h"

#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "platform/file_contents.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/boot_commands.h"
#include "romboot/firmware_package.h"

namespace zem {
namespace {

constexpr std::uint32_t kPauseBeforeJump = 200;
constexpr std::uint32_t kPauseBeforeProbing = 500;
constexpr std::uint32_t kPauseBeforeProbe = 500;
constexpr int kMaxProbes = 600;

// Code to be downloaded: at the start of `contents`, with zeros up to a whole sector.
struct Code {
  FileContents contents;
  std::uint32_t sectorCount = 0;
};

// The longest file whose sectors a 32-bit number counts.
constexpr std::uint64_t kLongestImage =
    std::uint64_t{std::numeric_limits<std::uint32_t>::max()} * kSectorSize;

std::optional<Code> ReadCode(const wchar_t* path) {
  FileContents file = ReadWholeFile(path, kSectorSize, kLongestImage);
  const auto code = file ? ParseCodeImage(file.bytes()) : std::nullopt;
  if (!code) {
    return std::nullopt;
  }
  const std::size_t size = code->size();
  std::memmove(file.data(), code->data(), size);
  std::memset(file.data() + size, 0, file.size() - size);
  return Code{std::move(file), static_cast<std::uint32_t>((size + kSectorSize - 1) / kSectorSize)};
}

// The started code shows up as another volume, after a while.
bool WaitForZemStorage(UsbScsiCmd& scsi) {
  for (int probe = 0; probe < kMaxProbes; ++probe) {
    platform::Sleep(kPauseBeforeProbe);
    if (scsi.OpenStorage() != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace

HRESULT LoadMiniUVC(ZemRomBootConfig& session, const wchar_t* path) {
  const auto code = ReadCode(path);
  if (!code || session.scsi.DownloadSectors(code->sectorCount, code->contents.data()) == 0) {
    return kFail;
  }
  const int jumped = SendLongJump(session.scsi);
  session.scsi.CloseVolume();
  return jumped != 0 ? 1 : kFail;
}

HRESULT LoadUpdater(ZemRomBootConfig& session, const wchar_t* path) {
  const auto code = ReadCode(path);
  if (!code) {
    return kFail;
  }
  platform::DebuggerOutput(L"[MSG] Read updater file success!\r\n");
  platform::DebuggerOutput(L"[MSG] Start, Send updater data!\r\n");
  if (session.scsi.DownloadSectors(code->sectorCount, code->contents.data()) == 0) {
    return kFail;
  }
  platform::DebuggerOutput(L"[MSG] End, Send updater data!\r\n");
  platform::Sleep(kPauseBeforeJump);
  if (SendLongJump(session.scsi) == 0) {
    platform::DebuggerOutput(L"Long jump command failed.\r\n");
  }
  session.scsi.CloseVolume();
  platform::DebuggerOutput(L"[MSG] Try to get Zem-Storage!\r\n");
  platform::Sleep(kPauseBeforeProbing);
  // Deliberate: 1 also when the storage never showed up; callers depend on it.
  platform::DebuggerOutput(WaitForZemStorage(session.scsi) ? L"[MSG] Get Zem-Storage success!\r\n"
                                                           : L"[Err] No Zem-Storage success!\r\n");
  return 1;
}

}  // namespace zem
