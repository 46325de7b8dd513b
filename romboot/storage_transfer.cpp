#include "romboot/storage_transfer.h"

#include <array>

#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/dump_file.h"

namespace zem {

HRESULT WriteResult(bool written) {
  if (written) {
    return 1;
  }
  platform::DebuggerOutput(L"Failed to transfer data to device.\r\n");
  return kFail;
}

HRESULT WriteSectors(ZemRomBootConfig& session, std::uint32_t& address, const std::uint8_t* data,
                     std::uint64_t size, std::uint8_t firstFlag) {
  return WriteResult(
      ForEachTransfer(address, size, [&](std::uint64_t offset, std::uint32_t length) {
        return session.scsi.WriteStorage(address, length / kSectorSize, data + offset,
                                         offset == 0 ? firstFlag : std::uint8_t{0}) != 0;
      }));
}

HRESULT WriteMirrored(ZemRomBootConfig& session, std::uint32_t& address,
                      std::span<const std::uint8_t> data) {
  MirrorBytes(session, address, data);
  return WriteSectors(session, address, data.data(), data.size());
}

HRESULT Erase(ZemRomBootConfig& session, std::uint32_t address, std::uint32_t size) {
  if (!FitsInStorage(address, size)) {
    return kFail;
  }
  MirrorErased(session, address, size);
  std::array<std::uint8_t, kMaxTransfer> erased;  // NOLINT(*-init-*): filled on the next line
  erased.fill(0xFF);
  const HRESULT result = WriteResult(
      ForEachTransfer(address, size, [&](std::uint64_t /*offset*/, std::uint32_t length) {
        return session.scsi.WriteStorage(address, length / kSectorSize, erased.data(), 0) != 0;
      }));
  return FAILED(result) ? result : S_OK;
}

}  // namespace zem
