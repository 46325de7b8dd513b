// How far a transfer has really come, told from nothing but the values that the library's progress
// callback gets.
//
// The update procedures order the burn also when the image could not be sent, and sending data ends
// with success when the camera stopped taking it. The values give this away.
#pragma once

#include <cstdint>

namespace zemctl {

// Watches ZEMAPI_WriteFWData and the update procedures: the percentage still to send after each
// chunk of 512 or 32 bytes, then, from ZEMAPI_UpdateFW_517x only, 10 down to 1 during its wait.
class ImageWatch {
 public:
  explicit ImageWatch(std::uint32_t length) : length_(length) {}

  void OnValue(std::uint32_t value);

  bool begun() const { return chunks_ > 0; }
  // All of the image has been sent.
  bool complete() const;
  // The wait after the burn order has begun.
  bool waiting() const { return waiting_; }

  std::uint32_t sentPercent() const { return sentPercent_; }
  std::uint32_t waitedPercent() const { return waitedPercent_; }

 private:
  bool IsChunk(std::uint32_t value);

  std::uint32_t length_;
  std::uint64_t chunks_ = 0;
  bool mayBeFast_ = true;
  bool mayBeSlow_ = true;
  bool waiting_ = false;
  std::uint32_t sentPercent_ = 0;
  std::uint32_t waitedPercent_ = 0;
};

// Watches ZEMAPI_SendData: (bytes left) * 100 / (length of the chunk).
class DataWatch {
 public:
  explicit DataWatch(std::uint32_t length) : length_(length) {}

  void OnValue(std::uint32_t value);

  bool complete() const { return length_ == 0 || (begun_ && left_ == 0); }
  std::uint32_t sentPercent() const;

 private:
  std::uint32_t length_;
  bool begun_ = false;
  std::uint64_t left_ = 0;
};

}  // namespace zemctl
