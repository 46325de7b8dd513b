// The two blocks in which a SCSI command is handed to a volume, as the system's pass-through wants
// them: buffered, with the data behind the header, and direct, with the caller's data in place.
#pragma once

#include <array>
#include <cstdint>

#include "platform/scsi.h"

namespace zem {

inline constexpr std::uint32_t kMaxBufferedData = 65536;

// Length of the sense buffer, and how much of it is asked for.
inline constexpr std::size_t kSenseCapacity = 32;
inline constexpr std::uint8_t kSenseLength = 24;

// A vendor command: 16 bytes.
using VendorCdb = std::array<std::uint8_t, 16>;

struct BufferedRequest {
  SCSI_PASS_THROUGH header;
  std::uint32_t filler;
  std::uint8_t sense[kSenseCapacity];
  std::uint8_t data[kMaxBufferedData];
};

struct DirectRequest {
  SCSI_PASS_THROUGH_DIRECT header;
  std::uint32_t filler;
  std::uint8_t sense[kSenseCapacity];
};

inline constexpr std::uint32_t kSenseOffset = 60;
inline constexpr std::uint32_t kDataOffset = 92;

static_assert(offsetof(BufferedRequest, sense) == kSenseOffset &&
              offsetof(BufferedRequest, data) == kDataOffset);
static_assert(offsetof(DirectRequest, sense) == kSenseOffset && sizeof(DirectRequest) == 96);

// Sets what both headers have in common. Deliberate: target 1, whatever the volume's own address
// is; callers depend on it.
template <class Header>
void FillHeader(Header& header, std::uint8_t cdbLength, std::uint8_t direction,
                std::uint32_t length, std::uint32_t timeoutSeconds) {
  header.Length = sizeof(Header);
  header.PathId = 0;
  header.TargetId = 1;
  header.Lun = 0;
  header.CdbLength = cdbLength;
  header.SenseInfoLength = kSenseLength;
  header.DataIn = direction;
  header.DataTransferLength = length;
  header.TimeOutValue = timeoutSeconds;
  header.SenseInfoOffset = kSenseOffset;
}

}  // namespace zem
