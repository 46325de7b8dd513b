#include "tools/zemctl/updates/transfer_watch.h"

#include <algorithm>

namespace zemctl {
namespace {

constexpr std::uint64_t kFastChunk = 512;
constexpr std::uint64_t kSlowChunk = 32;

// Number of times that the wait reports.
constexpr std::uint32_t kCountdown = 10;

// What is reported after `chunks` chunks.
std::uint64_t Remaining(std::uint64_t length, std::uint64_t chunks, std::uint64_t chunk) {
  return (length - std::min(length, chunks * chunk)) * 100 / length;
}

}  // namespace

bool ImageWatch::IsChunk(std::uint32_t value) {
  // A chunk after the last one is none.
  const bool fast = mayBeFast_ && chunks_ * kFastChunk < length_ &&
                    value == Remaining(length_, chunks_ + 1, kFastChunk);
  const bool slow = mayBeSlow_ && chunks_ * kSlowChunk < length_ &&
                    value == Remaining(length_, chunks_ + 1, kSlowChunk);
  if (!fast && !slow) {
    return false;
  }
  mayBeFast_ = fast;
  mayBeSlow_ = slow;
  ++chunks_;
  return true;
}

void ImageWatch::OnValue(std::uint32_t value) {
  if (!waiting_ && IsChunk(value)) {
    sentPercent_ = 100 - value;
    return;
  }
  waiting_ = true;
  waitedPercent_ = (kCountdown - std::min(value, kCountdown)) * 100 / kCountdown;
}

bool ImageWatch::complete() const {
  return (mayBeFast_ && chunks_ * kFastChunk >= length_) ||
         (mayBeSlow_ && chunks_ * kSlowChunk >= length_);
}

void DataWatch::OnValue(std::uint32_t value) {
  begun_ = true;
  left_ = (std::uint64_t{value} * kSlowChunk + 99) / 100;
}

std::uint32_t DataWatch::sentPercent() const {
  if (!begun_ || length_ == 0) {
    return 0;
  }
  return 100 - static_cast<std::uint32_t>(std::min<std::uint64_t>(100, left_ * 100 / length_));
}

}  // namespace zemctl
