// The boot loader's vendor SCSI commands: byte 3 of the CDB says which. Numbers in a CDB are
// big-endian, bytes without a meaning are zero.
#pragma once

#include <cstdint>

#include "romboot/pass_through_blocks.h"

namespace zem {

enum class SubCommand : std::uint8_t {
  kIdentify = 0x01,              // in, 16 bytes
  kDownload = 0x02,              // bytes 4-5 sector count, at most 64; out
  kLongJump = 0x03,              // runs the loaded code
  kReadRegister = 0x04,          // bytes 4-7 address; in, 1 byte
  kWriteRegister = 0x05,         // bytes 4-7 address, byte 8 value
  kSelectStorage = 0x06,         // byte 4 storage type, byte 6 option; in, 4 bytes
  kReadStorage = 0x07,           // bytes 4-7 address, not divided; bytes 8-9 sector count; in
  kWriteStorage = 0x08,          // bytes 4-7 address / divider, bytes 8-9 sector count, byte 10
                                 // flag; out
  kSetFwDownloadAddress = 0x0D,  // bytes 4-7 address
  kSetAddressDivider = 0x0F,     // byte 7 is 4; out, the divider in 4 little-endian bytes
  kResetSystem = 0x21,
  kMakeEnhancedArea = 0x22,  // byte 4 is 1, bytes 5-8 and 9-12 the two values
};

// A command without its vendor bytes, which SendScsiCmd stamps on it.
inline VendorCdb MakeCdb(SubCommand command) {
  VendorCdb cdb = {};
  cdb[3] = static_cast<std::uint8_t>(command);
  return cdb;
}

}  // namespace zem
