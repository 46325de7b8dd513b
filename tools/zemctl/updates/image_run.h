// One run of a procedure that sends and burns an image, with its progress on the terminal.
#pragma once

#include <span>
#include <vector>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/updates/image_procedure.h"
#include "tools/zemctl/updates/image_transfers.h"

namespace zemctl {

class ImageRun {
 public:
  ImageRun(const ImageProcedure& procedure, std::span<const unsigned char> image,
           const ImageParameters& parameters, Progress& progress);
  ImageRun(const ImageRun&) = delete;
  ImageRun& operator=(const ImageRun&) = delete;

  // Phases "send" and "burn".
  CallOutcome Run(const Session& session);

  const ImageTransfers& image() const { return image_; }

 private:
  void OnValue(std::uint32_t value);

  const ImageProcedure& procedure_;
  std::uint32_t length_;
  // The image, and zeros behind it: some transfers read whole chunks of the caller's memory.
  std::vector<unsigned char> padded_;
  ImageParameters parameters_;
  Progress& progress_;
  ImageTransfers image_;
  bool burning_ = false;
};

}  // namespace zemctl
