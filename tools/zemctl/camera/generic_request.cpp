#include "tools/zemctl/camera/generic_request.h"

#include <algorithm>

#include "platform/linux/generic_errors.h"

namespace zemctl {

ScsiCommand GenericRequest::Describe() const {
  ScsiCommand command;
  command.cdb.assign(header_.cmdp, header_.cmdp + header_.cmd_len);
  command.isIn = header_.dxfer_direction == SG_DXFER_FROM_DEV;
  command.length = header_.dxfer_len;
  if (header_.dxfer_direction == SG_DXFER_TO_DEV) {
    const auto* const data = static_cast<const std::uint8_t*>(header_.dxferp);
    command.data.assign(data, data + header_.dxfer_len);
  }
  return command;
}

void GenericRequest::Collect(ScsiCommand& command) const {
  command.status = header_.status;
  if (command.isIn) {
    const auto* const data = static_cast<const std::uint8_t*>(header_.dxferp);
    const auto missing =
        std::clamp<std::int64_t>(header_.resid, 0, std::int64_t{header_.dxfer_len});
    command.data.assign(data, data + header_.dxfer_len - missing);
  }
}

void GenericRequest::Answer(const ScsiCommand& command) {
  header_.status = command.status;
  header_.host_status = 0;
  header_.driver_status = 0;
  header_.sb_len_wr = 0;
  header_.resid = 0;
  if (command.isIn) {
    const auto moved = std::min<std::size_t>(command.data.size(), header_.dxfer_len);
    std::copy_n(command.data.begin(), moved, static_cast<std::uint8_t*>(header_.dxferp));
    header_.resid = static_cast<int>(header_.dxfer_len - moved);
  }
}

void GenericRequest::Fail(std::uint32_t error) {
  constexpr std::uint8_t kCheckCondition = 2;
  constexpr std::uint16_t kMostHostStatus = 8;
  ScsiCommand failed;
  failed.status = kCheckCondition;
  Answer(failed);
  // An error that no host status stands for becomes one that the library does not try again.
  while (header_.host_status < kMostHostStatus && zem::platform::ErrorOfGeneric(header_) != error) {
    ++header_.host_status;
  }
  if (zem::platform::ErrorOfGeneric(header_) != error) {
    header_.host_status = 0;
  }
}

}  // namespace zemctl
