// How far an image has really come on its way to a camera, told from the transfers themselves.
//
// The update procedures order the burn also when the image could not be sent, and sending data ends
// with success when the camera stopped taking it.
#pragma once

#include <cstdint>

#include "tools/zemctl/camera/transfer_record.h"

namespace zemctl {

class ImageTransfers {
 public:
  // `length` is not 0.
  explicit ImageTransfers(std::uint32_t length) : length_(length) {}

  void OnTransfer(const Transfer& transfer);

  // The camera has taken some of the image, or all of it.
  bool begun() const { return sent_ > 0; }
  bool complete() const { return sent_ >= length_; }
  std::uint32_t sentPercent() const;

  // The camera has taken the order to burn.
  bool ordered() const { return ordered_; }
  // It has been seen to be busy with it.
  bool seenBurning() const { return seenBurning_; }

 private:
  std::uint32_t length_;
  std::uint64_t sent_ = 0;  // bytes, zeros behind the image included
  bool ordered_ = false;
  bool seenBurning_ = false;
};

}  // namespace zemctl
