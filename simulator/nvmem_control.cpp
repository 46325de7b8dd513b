#include "simulator/nvmem_control.h"

#include <algorithm>

#include "platform/bytes.h"

namespace zem::simulator {
namespace {

constexpr std::size_t kDataOffset = 3;
constexpr std::uint8_t kReadRequest = 0x80;

}  // namespace

Outcome NvmemControl::Set(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != block_.size()) {
    return Outcome::kWrongLength;
  }
  failed_ = true;
  const std::size_t address = LoadLe16(bytes.data());
  const std::size_t count = bytes[2] & ~kReadRequest;
  if (count > bytes.size() - kDataOffset || address > memory_.size() ||
      count > memory_.size() - address) {
    return Outcome::kFailed;
  }
  failed_ = false;
  std::copy(bytes.begin(), bytes.end(), block_.begin());
  const auto place = memory_.begin() + static_cast<std::ptrdiff_t>(address);
  if ((bytes[2] & kReadRequest) != 0) {
    std::copy_n(place, count, block_.begin() + kDataOffset);
  } else {
    std::copy_n(bytes.begin() + kDataOffset, count, place);
  }
  return Outcome::kDone;
}

Outcome NvmemControl::Get(std::vector<std::uint8_t>& bytes) const {
  bytes.assign(block_.begin(), block_.end());
  return failed_ ? Outcome::kFailed : Outcome::kDone;
}

}  // namespace zem::simulator
