#include "simulator/linux/generic_answer.h"

#include <algorithm>

#include "platform/linux/generic_errors.h"

namespace zem::simulator {

void AnswerGeneric(sg_io_hdr& request, std::uint8_t status, std::span<const std::uint8_t> data) {
  request.status = status;
  request.host_status = 0;
  request.driver_status = 0;
  request.sb_len_wr = 0;
  request.resid = 0;
  if (request.dxfer_direction == SG_DXFER_FROM_DEV) {
    const auto moved = std::min<std::size_t>(data.size(), request.dxfer_len);
    std::copy_n(data.begin(), moved, static_cast<std::uint8_t*>(request.dxferp));
    request.resid = static_cast<int>(request.dxfer_len - moved);
  }
}

void FailGeneric(sg_io_hdr& request, std::uint32_t error) {
  constexpr std::uint8_t kCheckCondition = 2;
  constexpr std::uint16_t kMostHostStatus = 8;
  AnswerGeneric(request, kCheckCondition, {});
  request.resid = 0;
  // An error that no host status stands for becomes one that the library does not try again.
  while (request.host_status < kMostHostStatus && platform::ErrorOfGeneric(request) != error) {
    ++request.host_status;
  }
  if (platform::ErrorOfGeneric(request) != error) {
    request.host_status = 0;
  }
}

}  // namespace zem::simulator
