// The blocks of SCSI pass-through: from the Windows SDK headers on Windows; elsewhere declared here
// with the same names and layout.
#pragma once

#include <cstddef>

#include "platform/com.h"

#ifdef _WIN32

// The second header leans on the first.
// clang-format off
#include <winioctl.h>
#include <ntddscsi.h>
// clang-format on

#else

#include <cstdint>

struct SCSI_PASS_THROUGH {
  std::uint16_t Length;
  std::uint8_t ScsiStatus;
  std::uint8_t PathId;
  std::uint8_t TargetId;
  std::uint8_t Lun;
  std::uint8_t CdbLength;
  std::uint8_t SenseInfoLength;
  std::uint8_t DataIn;
  std::uint32_t DataTransferLength;
  std::uint32_t TimeOutValue;
  std::uintptr_t DataBufferOffset;
  std::uint32_t SenseInfoOffset;
  std::uint8_t Cdb[16];
};

struct SCSI_PASS_THROUGH_DIRECT {
  std::uint16_t Length;
  std::uint8_t ScsiStatus;
  std::uint8_t PathId;
  std::uint8_t TargetId;
  std::uint8_t Lun;
  std::uint8_t CdbLength;
  std::uint8_t SenseInfoLength;
  std::uint8_t DataIn;
  std::uint32_t DataTransferLength;
  std::uint32_t TimeOutValue;
  void* DataBuffer;
  std::uint32_t SenseInfoOffset;
  std::uint8_t Cdb[16];
};

inline constexpr std::uint8_t SCSI_IOCTL_DATA_OUT = 0;
inline constexpr std::uint8_t SCSI_IOCTL_DATA_IN = 1;
inline constexpr std::uint32_t IOCTL_SCSI_PASS_THROUGH = 0x0004D004;
inline constexpr std::uint32_t IOCTL_SCSI_PASS_THROUGH_DIRECT = 0x0004D014;

#endif

static_assert(sizeof(SCSI_PASS_THROUGH) == 56 && sizeof(SCSI_PASS_THROUGH_DIRECT) == 56);
static_assert(offsetof(SCSI_PASS_THROUGH, DataTransferLength) == 12 &&
              offsetof(SCSI_PASS_THROUGH, DataBufferOffset) == 24 &&
              offsetof(SCSI_PASS_THROUGH, Cdb) == 36);
static_assert(offsetof(SCSI_PASS_THROUGH_DIRECT, DataBuffer) == 24 &&
              offsetof(SCSI_PASS_THROUGH_DIRECT, Cdb) == 36);
static_assert(IOCTL_SCSI_PASS_THROUGH == 0x0004D004 &&
              IOCTL_SCSI_PASS_THROUGH_DIRECT == 0x0004D014);
