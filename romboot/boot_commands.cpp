#include "romboot/boot_commands.h"

#include <array>

#include "platform/bytes.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "romboot/vendor_commands.h"

namespace zem {
namespace {

HRESULT ResultOf(int sent) { return sent != 0 ? S_OK : kFail; }

// Sends a command that has no data; the channel's own 1 or 0.
int SendWithoutData(UsbScsiCmd& scsi, VendorCdb cdb) {
  return scsi.SendScsiCmd(1, kDataOut, 0, cdb.data(), nullptr);
}

VendorCdb MakeAddressCdb(SubCommand command, unsigned address) {
  VendorCdb cdb = MakeCdb(command);
  StoreBe32(&cdb[4], address);
  return cdb;
}

}  // namespace

HRESULT SelectStorage(ZemRomBootConfig& session, const StorageType& storage, unsigned char option) {
  VendorCdb cdb = MakeCdb(SubCommand::kSelectStorage);
  cdb[4] = storage.code;
  cdb[6] = option;
  std::array<std::uint8_t, 4> reply = {};
  const int sent = session.scsi.SendScsiCmd(1, kDataIn, reply.size(), cdb.data(), reply.data());
  if (const wchar_t* const line = sent != 0 ? storage.selected : storage.failed; line != nullptr) {
    platform::DebuggerOutput(line);
  }
  return ResultOf(sent);
}

int SendLongJump(UsbScsiCmd& scsi) { return SendWithoutData(scsi, MakeCdb(SubCommand::kLongJump)); }

HRESULT LongJump(ZemRomBootConfig& session) { return ResultOf(SendLongJump(session.scsi)); }

HRESULT ResetSystem(ZemRomBootConfig& session) {
  // Deliberate: 1 also when the device does not answer; callers depend on it.
  static_cast<void>(SendWithoutData(session.scsi, MakeCdb(SubCommand::kResetSystem)));
  return 1;
}

HRESULT SetFwDownloadAddr(ZemRomBootConfig& session, unsigned address) {
  return ResultOf(
      SendWithoutData(session.scsi, MakeAddressCdb(SubCommand::kSetFwDownloadAddress, address)));
}

HRESULT WriteBootRegister(ZemRomBootConfig& session, unsigned address, unsigned char value) {
  VendorCdb cdb = MakeAddressCdb(SubCommand::kWriteRegister, address);
  cdb[8] = value;
  return ResultOf(SendWithoutData(session.scsi, cdb));
}

HRESULT ReadBootRegister(ZemRomBootConfig& session, unsigned address, unsigned char* value) {
  VendorCdb cdb = MakeAddressCdb(SubCommand::kReadRegister, address);
  return ResultOf(session.scsi.SendScsiCmd(1, kDataIn, 1, cdb.data(), value));
}

HRESULT ScsiCommand(ZemRomBootConfig& session, int dataIn, unsigned length, unsigned char* cdb,
                    void* data) {
  if (data == nullptr && length > 0) {
    return kRefused;
  }
  return ResultOf(session.scsi.SendScsiCmd(0, dataIn != 0 ? kDataIn : kDataOut, length, cdb, data));
}

HRESULT MakeEmmcEnhancedArea(ZemRomBootConfig& session, unsigned first, unsigned second) {
  VendorCdb cdb = MakeCdb(SubCommand::kMakeEnhancedArea);
  cdb[4] = 1;
  StoreBe32(&cdb[5], first);
  StoreBe32(&cdb[9], second);
  // Deliberate: the channel's own 1 or 0, unlike every other command.
  return SendWithoutData(session.scsi, cdb);
}

}  // namespace zem
