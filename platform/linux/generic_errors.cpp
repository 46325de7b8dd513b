#include "platform/linux/generic_errors.h"

#include <algorithm>
#include <iterator>

#include "platform/linux/errors.h"

namespace zem::platform {
namespace {

// Status of a SCSI device.
constexpr std::uint8_t kGood = 0x00;
constexpr std::uint8_t kBusyStatus = 0x08;
constexpr std::uint8_t kReservationConflict = 0x18;
constexpr std::uint8_t kTaskSetFull = 0x28;

// What became of a request before it had a status, by the host adapter's word.
struct HostRow {
  std::uint16_t host;
  std::uint32_t windows;
};
constexpr HostRow kHostRows[] = {
    {0x01, kNotConnected},      // no such device
    {0x02, kBusy},              // the bus stayed busy
    {0x03, kSemaphoreTimeout},  // timed out
    {0x04, kNotConnected},      // no such target
    {0x05, kRequestAborted},
    {0x07, kGeneralFailure},  // a phase error, or unplugged on the way
    {0x08, kGeneralFailure},  // the bus was reset
};

}  // namespace

std::uint32_t ErrorOfGeneric(const sg_io_hdr& request) {
  if (request.host_status != 0) {
    const auto* const row = std::find_if(
        std::begin(kHostRows), std::end(kHostRows),
        [&](const HostRow& candidate) { return candidate.host == request.host_status; });
    return row != std::end(kHostRows) ? row->windows : kGeneralFailure;
  }
  switch (request.status) {
    case kGood:
      break;
    case kBusyStatus:
    case kReservationConflict:
    case kTaskSetFull:
      return kBusy;
    default:
      return kDeviceError;
  }
  // Its lower half is the driver's own error; the flag of sense data that came is none.
  constexpr std::uint16_t kDriverErrorMask = 0x07;
  return (request.driver_status & kDriverErrorMask) != 0 ? kGeneralFailure : 0;
}

}  // namespace zem::platform
