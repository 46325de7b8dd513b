#include "tools/zemctl/camera/generic_request.h"

#include <algorithm>

#include "simulator/linux/generic_answer.h"

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
  zem::simulator::AnswerGeneric(header_, command.status, command.data);
}

void GenericRequest::Fail(std::uint32_t error) { zem::simulator::FailGeneric(header_, error); }

}  // namespace zemctl
