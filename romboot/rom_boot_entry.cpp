#include "romboot/rom_boot_entry.h"

#include "commands/command_block.h"
#include "platform/platform.h"

namespace zem {
namespace {

constexpr CommandBlock kResetCommand = {0x16};
constexpr ExtendedBlock kExtendedResetCommand = {0xFF, 0x03};
constexpr std::uint32_t kPauseBetweenCommands = 500;

}  // namespace

HRESULT ResetToRombootVcp8(IBaseFilter* filter) {
  return WriteBlock(kVcpChannel.commandSelector, kResetCommand, filter);
}

HRESULT ResetToRombootVcp16(IBaseFilter* filter) {
  return WriteBlock(kVcpExtendedChannel.commandSelector, kExtendedResetCommand, filter);
}

HRESULT ResetToRomboot(IBaseFilter* filter) {
  // Deliberate: neither outcome is looked at; callers depend on it.
  static_cast<void>(ResetToRombootVcp8(filter));
  platform::Sleep(kPauseBetweenCommands);
  static_cast<void>(ResetToRombootVcp16(filter));
  return S_OK;
}

}  // namespace zem
