#include "romboot/rom_boot_config.h"

#include <memory>
#include <new>

namespace zem {
namespace {

// Bit of `mode` that has every search of the process tell the device the address divider.
constexpr unsigned kSendDividerBit = 0x10;

}  // namespace

ZemRomBootConfig* OpenRomBoot(unsigned mode) {
  std::unique_ptr<ZemRomBootConfig> session(new (std::nothrow) ZemRomBootConfig());
  if (session == nullptr) {
    return nullptr;
  }
  if ((mode & kSendDividerBit) != 0) {
    sendAddressDivider.store(1, std::memory_order_relaxed);
    mode &= ~kSendDividerBit;
  }
  if (session->scsi.OpenStorage() == 0 || session->scsi.deviceKind != mode) {
    return nullptr;
  }
  return session.release();
}

void CloseRomBoot(ZemRomBootConfig* session) { delete session; }

}  // namespace zem
