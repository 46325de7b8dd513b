#include "tools/zemctl/camera/pass_through_request.h"

#include <algorithm>
#include <cstring>

namespace zemctl {

SCSI_PASS_THROUGH PassThroughRequest::Header() const {
  SCSI_PASS_THROUGH header = {};
  std::memcpy(&header, block_, sizeof(header));
  return header;
}

// The library reads with the buffered form and sends with the direct one.
std::uint8_t* PassThroughRequest::DataOf(const SCSI_PASS_THROUGH& header) const {
  if (header.DataIn == SCSI_IOCTL_DATA_IN) {
    return block_ + header.DataBufferOffset;
  }
  SCSI_PASS_THROUGH_DIRECT direct = {};
  std::memcpy(&direct, block_, sizeof(direct));
  return static_cast<std::uint8_t*>(direct.DataBuffer);
}

ScsiCommand PassThroughRequest::Describe() const {
  const SCSI_PASS_THROUGH header = Header();
  ScsiCommand command;
  command.cdb.assign(header.Cdb,
                     header.Cdb + std::min<std::size_t>(header.CdbLength, sizeof(header.Cdb)));
  command.isIn = header.DataIn == SCSI_IOCTL_DATA_IN;
  command.length = header.DataTransferLength;
  if (const std::uint8_t* const data = DataOf(header); !command.isIn && data != nullptr) {
    command.data.assign(data, data + command.length);
  }
  return command;
}

void PassThroughRequest::Collect(ScsiCommand& command) const {
  const SCSI_PASS_THROUGH header = Header();
  command.status = header.ScsiStatus;
  if (command.isIn) {
    const std::uint8_t* const data = DataOf(header);
    command.data.assign(data,
                        data + std::min<std::uint32_t>(header.DataTransferLength, command.length));
  }
}

void PassThroughRequest::Answer(const ScsiCommand& command) {
  SCSI_PASS_THROUGH header = Header();
  if (command.isIn) {
    std::copy_n(command.data.begin(),
                std::min<std::size_t>(command.data.size(), header.DataTransferLength),
                DataOf(header));
    header.DataTransferLength = static_cast<std::uint32_t>(command.data.size());
  }
  header.ScsiStatus = command.status;
  std::memcpy(block_, &header, sizeof(header));
}

}  // namespace zemctl
