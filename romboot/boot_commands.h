// The boot loader's single commands: storage selection, registers, the jump into loaded code, raw
// commands. Unless said otherwise each returns what its export documents.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

// One kind of storage that the boot loader can be told to use.
struct StorageType {
  std::uint8_t code;
  const wchar_t* selected;  // debugger line; null for none
  const wchar_t* failed;    // debugger line
};

// Deliberate: the parallel NAND is reported in the words of the SPI NAND.
inline constexpr const wchar_t* kNandSelected = L"Select storage type 'ZEM_STORAGE_SPI_NAND'\r\n";
inline constexpr const wchar_t* kNandFailed =
    L"Failed to select storage type -> ZEM_STORAGE_SPI_NAND.\r\n";

inline constexpr StorageType kStorageEmmc = {
    0x02, nullptr, L"Failed to select storage type -> ZEM_STORAGE_EMMC.\r\n"};
inline constexpr StorageType kStoragePcamSf = {
    0x05, nullptr, L"Failed to select storage type -> ZEM_STORAGE_PCAM_SF.\r\n"};
inline constexpr StorageType kStorageSpiNand = {0x06, kNandSelected, kNandFailed};
inline constexpr StorageType kStorageParallelNand = {0x07, kNandSelected, kNandFailed};
inline constexpr StorageType kStoragePcamDram = {
    0x80, nullptr, L"Failed to select storage type -> ZEM_STORAGE_PCAM_DRAM.\r\n"};

HRESULT SelectStorage(ZemRomBootConfig& session, const StorageType& storage, unsigned char option);

// Jumps into the loaded code; the channel's own 1 or 0.
int SendLongJump(UsbScsiCmd& scsi);

HRESULT LongJump(ZemRomBootConfig& session);
HRESULT ResetSystem(ZemRomBootConfig& session);
HRESULT SetFwDownloadAddr(ZemRomBootConfig& session, unsigned address);
HRESULT WriteBootRegister(ZemRomBootConfig& session, unsigned address, unsigned char value);
HRESULT ReadBootRegister(ZemRomBootConfig& session, unsigned address, unsigned char* value);
HRESULT ScsiCommand(ZemRomBootConfig& session, int dataIn, unsigned length, unsigned char* cdb,
                    void* data);
HRESULT MakeEmmcEnhancedArea(ZemRomBootConfig& session, unsigned first, unsigned second);

}  // namespace zem
