// A request to a volume as the library makes it on Windows: a block of SCSI pass-through.
#pragma once

#include "platform/scsi.h"
#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

// Both forms have the same header; the data is behind it or at an address.
class PassThroughRequest : public VolumeRequest {
 public:
  // The block must live as long.
  explicit PassThroughRequest(void* block) : block_(static_cast<std::uint8_t*>(block)) {}

  ScsiCommand Describe() const override;
  void Collect(ScsiCommand& command) const override;
  void Answer(const ScsiCommand& command) override;

 private:
  SCSI_PASS_THROUGH Header() const;
  std::uint8_t* DataOf(const SCSI_PASS_THROUGH& header) const;

  std::uint8_t* block_;
};

}  // namespace zemctl
