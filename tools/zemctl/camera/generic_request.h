// A request to a volume as the library makes it on Linux: the header of SG_IO.
#pragma once

#include <scsi/sg.h>

#include <cstdint>

#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

class GenericRequest : public VolumeRequest {
 public:
  // The header must live as long.
  explicit GenericRequest(sg_io_hdr& header) : header_(header) {}

  ScsiCommand Describe() const override;
  void Collect(ScsiCommand& command) const override;
  void Answer(const ScsiCommand& command) override;

  // Answers it as the kernel answers a command that has failed so.
  void Fail(std::uint32_t error);

 private:
  sg_io_hdr& header_;
};

}  // namespace zemctl
