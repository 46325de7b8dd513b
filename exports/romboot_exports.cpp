// ROM boot: the way into it, the session, the boot loader's commands, burning and packages.
#include "exports/export_support.h"
#include "romboot/boot_commands.h"
#include "romboot/burning.h"
#include "romboot/code_loading.h"
#include "romboot/dump_file.h"
#include "romboot/linux_package.h"
#include "romboot/memory_load.h"
#include "romboot/package_split.h"
#include "romboot/partial_access.h"
#include "romboot/rom_boot_config.h"
#include "romboot/rom_boot_entry.h"
#include "romboot/storage_transfer.h"

using zem::MaybeNull;
using zem::OnDevice;
using zem::Required;
using zem::ZemRomBootConfig;

namespace {

// Of storage types that have none.
constexpr unsigned char kNoOption = 0;

ZemRomBootConfig& Session(void* device) { return *static_cast<ZemRomBootConfig*>(device); }

// Runs `operation(session, arguments...)`. A null session gives kFail, and then a required pointer
// that is null kRefused; either way nothing is sent.
template <class Operation, class... Arguments>
ZemResult OnSession(void* device, Operation operation, Arguments... arguments) {
  return device != nullptr ? zem::RunOn(Session(device), operation, arguments...) : zem::kFail;
}

}  // namespace

ZemResult ZEMAPI_ResetToRomboot(void* handle) { return OnDevice(handle, zem::ResetToRomboot); }

ZemResult ZEMAPI_ResetToRomboot_VCP8(void* handle) {
  return OnDevice(handle, zem::ResetToRombootVcp8);
}

ZemResult ZEMAPI_ResetToRomboot_VCP16(void* handle) {
  return OnDevice(handle, zem::ResetToRombootVcp16);
}

void* ZEMROMAPI_OpenDevice(unsigned int mode) { return zem::OpenRomBoot(mode); }

void ZEMROMAPI_CloseDevice(void** device) {
  if (device != nullptr) {
    zem::CloseRomBoot(static_cast<ZemRomBootConfig*>(*device));
  }
}

ZemResult ZEMROMAPI_CreateDumpFile(void* device, const wchar_t* path, int size) {
  return OnSession(device, zem::CreateDumpFile, MaybeNull(path), size);
}

ZemResult ZEMROMAPI_LoadMiniUVC(void* device, const wchar_t* path) {
  return OnSession(device, zem::LoadMiniUVC, MaybeNull(path));
}

ZemResult ZEMROMAPI_LoadUpdater(void* device, const wchar_t* path) {
  return OnSession(device, zem::LoadUpdater, MaybeNull(path));
}

ZemResult ZEMROMAPI_ResetSystem(void* device) { return OnSession(device, zem::ResetSystem); }

ZemResult ZEMROMAPI_SwitchModePCAM_SF(void* device) {
  return OnSession(device, zem::SelectStorage, zem::kStoragePcamSf, kNoOption);
}

ZemResult ZEMROMAPI_SwitchModePCAM_DRAM(void* device) {
  return OnSession(device, zem::SelectStorage, zem::kStoragePcamDram, kNoOption);
}

ZemResult ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(void* device, unsigned char option) {
  return OnSession(device, zem::SelectStorage, zem::kStorageParallelNand, option);
}

ZemResult ZEMROMAPI_SwitchModePCAM_SPI_NAND(void* device, unsigned char option) {
  return OnSession(device, zem::SelectStorage, zem::kStorageSpiNand, option);
}

ZemResult ZEMROMAPI_SwitchModePCAM_EMMC(void* device, unsigned char option) {
  return OnSession(device, zem::SelectStorage, zem::kStorageEmmc, option);
}

ZemResult ZEMROMAPI_LongJump(void* device) { return OnSession(device, zem::LongJump); }

ZemResult ZEMROMAPI_SetFwDownloadAddr(void* device, unsigned int address) {
  return OnSession(device, zem::SetFwDownloadAddr, address);
}

ZemResult ZEMROMAPI_WriteRegister(void* device, unsigned int address, unsigned char value) {
  return OnSession(device, zem::WriteBootRegister, address, value);
}

ZemResult ZEMROMAPI_ReadRegister(void* device, unsigned int address, unsigned char* value) {
  return OnSession(device, zem::ReadBootRegister, address, Required(value));
}

ZemResult ZEMROMAPI_ScsiCommand(void* device, int dataIn, unsigned int length, unsigned char* cdb,
                                void* data) {
  return OnSession(device, zem::ScsiCommand, dataIn, length, Required(cdb), MaybeNull(data));
}

ZemResult ZEMROMAPI_MkEmmcEhancedArea(void* device, unsigned int first, unsigned int second) {
  // Deliberate: the session is not tested for null.
  return zem::MakeEmmcEnhancedArea(Session(device), first, second);
}

ZemResult ZEMROMAPI_Erase(void* device, unsigned int address, unsigned int size) {
  // Deliberate: the session is not tested for null.
  return zem::Erase(Session(device), address, size);
}

ZemResult ZEMROMAPI_BurnFw(void* device, const wchar_t* path, unsigned int* address) {
  return OnSession(device, zem::BurnFw, MaybeNull(path), Required(address));
}

ZemResult ZEMROMAPI_BurnPcCamFw(void* device, const wchar_t* path, unsigned int* address) {
  return OnSession(device, zem::BurnPcCamFw, MaybeNull(path), Required(address));
}

ZemResult ZEMROMAPI_BurnPcCamFwPnsV2(void* device, const wchar_t* path, unsigned int* address) {
  return OnSession(device, zem::BurnPcCamFwPnsV2, MaybeNull(path), Required(address));
}

ZemResult ZEMROMAPI_DispackZemPcCamFw(void* /*device*/, const wchar_t* path) {
  return zem::DispackZemPcCamFw(path);
}

ZemResult ZEMROMAPI_UpdateLinuxFwPkg(void* device, const wchar_t* path, unsigned int bodyAddress,
                                     unsigned int headerAddress) {
  return OnSession(device, zem::UpdateLinuxFwPkg, MaybeNull(path), bodyAddress, headerAddress);
}

ZemResult ZEMROMAPI_UpdateLinuxFwPkg_(void* device, const wchar_t* path,
                                      unsigned int headerAddress) {
  return OnSession(device, zem::UpdateLinuxFwPkgAtOwnAddress, MaybeNull(path), headerAddress);
}

ZemResult ZEMROMAPI_PartialUpdateWithHeader(void* device, const wchar_t* path,
                                            unsigned int* address) {
  return OnSession(device, zem::PartialUpdateWithHeader, MaybeNull(path), Required(address));
}

ZemResult ZEMROMAPI_PartialUpdate(void* device, const wchar_t* path, unsigned int* address) {
  return OnSession(device, zem::PartialUpdate, MaybeNull(path), Required(address));
}

ZemResult ZEMROMAPI_PartialRead(void* device, const wchar_t* path, unsigned int* address,
                                unsigned int length) {
  return OnSession(device, zem::PartialRead, MaybeNull(path), Required(address), length);
}

ZemResult ZEMROMAPI_LoadFW2Memory(void* device, const wchar_t* path, unsigned int* address) {
  return OnSession(device, zem::LoadFW2Memory, MaybeNull(path), Required(address));
}
