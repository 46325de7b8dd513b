#include "simulator/data_channel.h"

#include <algorithm>
#include <utility>

#include "device/extension_units.h"
#include "platform/bytes.h"

namespace zem::simulator {
namespace {

constexpr std::uint8_t kIdle = 0x00;
constexpr std::uint8_t kBusy = 0x81;
constexpr std::uint8_t kBurnFailed = 0x82;

constexpr std::size_t kFastLength = 512;
constexpr std::size_t kSlowFlashLength = 32;

// What the camera has room for before a burn.
constexpr std::size_t kBufferSize = 0x1000000;

// Lengths are announced exactly or rounded up to this, and data is padded to chunks up to it.
constexpr std::int64_t kLengthSlack = 512;

}  // namespace

void DataChannel::Control(const Block& control) {
  if (mode_ == Mode::kBurning) {
    return;  // its status goes on to be the burn's
  }
  switch (control[1]) {
    case 0x00:
      return BeginWrite(control);
    case 0x01:
      return BeginBurn(control);
    case 0x02:
      return BeginRead();
    case 0x10:
      return BeginFlashRead(control);
    default:
      status_ = {kRefusedStatus};
  }
}

Block DataChannel::Status() {
  if (mode_ != Mode::kBurning) {
    return status_;
  }
  if (pollsLeft_ > 0) {
    --pollsLeft_;
    return {kBusy};
  }
  EndBurn();
  return status_;
}

void DataChannel::BeginWrite(const Block& control) {
  if (settings_.busy || FindFlashArea(control[2], control[3]) == nullptr) {
    mode_ = Mode::kIdle;
    status_ = {settings_.busy ? kBusy : kRefusedStatus};
    return;
  }
  mode_ = Mode::kReceiving;
  status_ = {kIdle};
  announced_ = LoadLe32(&control[4]);
  received_.clear();
}

std::int64_t DataChannel::Surplus() const {
  const std::int64_t surplus =
      static_cast<std::int64_t>(received_.size()) - static_cast<std::int64_t>(announced_);
  // A length of 16 bits may be the low part of a longer one.
  return announced_ > 0xFFFF ? surplus : static_cast<std::int16_t>(surplus & 0xFFFF);
}

bool DataChannel::LengthFits() const {
  const std::int64_t missing = announced_ % kLengthSlack == 0 ? kLengthSlack - 1 : 0;
  return announced_ == 0 || (Surplus() >= -missing && Surplus() < kLengthSlack);
}

void DataChannel::BeginBurn(const Block& control) {
  const FlashArea* const area = FindFlashArea(control[2], control[3]);
  if (mode_ != Mode::kReceiving || area == nullptr || !LengthFits() ||
      received_.size() > area->size || flash_.IsProtected(*area)) {
    mode_ = Mode::kIdle;
    status_ = {kBurnFailed};
    return;
  }
  mode_ = Mode::kBurning;
  burning_ = area;
  pollsLeft_ = settings_.burnPolls;
  flash_.Erase(*area);
  if (flashObserver_) {
    flashObserver_(*area);
  }
}

void DataChannel::EndBurn() {
  mode_ = Mode::kIdle;
  status_ = {settings_.burnError ? kBurnFailed : kIdle};
  if (!settings_.burnError) {
    flash_.Program(*burning_, received_);
  }
  if (flashObserver_) {
    flashObserver_(*burning_);
  }
}

void DataChannel::Settle() {
  if (mode_ == Mode::kBurning) {
    EndBurn();
  }
}

std::vector<std::uint8_t> DataChannel::ReadyData() const {
  std::vector<std::uint8_t> data = received_;
  if (const std::int64_t surplus = Surplus();
      announced_ != 0 && surplus > 0 && surplus < kLengthSlack) {
    data.resize(data.size() - static_cast<std::size_t>(surplus));
  }
  return data;
}

void DataChannel::SetReadyData(std::vector<std::uint8_t> data) {
  received_ = std::move(data);
  announced_ = static_cast<std::uint32_t>(received_.size());
}

void DataChannel::BeginRead() {
  mode_ = Mode::kSending;
  sending_ = ReadyData();
  position_ = 0;
  status_ = {kIdle};
  StoreLe32(&status_[2], static_cast<std::uint32_t>(sending_.size()));
}

void DataChannel::BeginFlashRead(const Block& control) {
  mode_ = Mode::kReadingFlash;
  status_ = {kIdle};
  position_ = LoadLe32(&control[2]);
  flashEnd_ = position_ + LoadLe16(&control[6]);
}

Outcome DataChannel::Write(std::uint16_t selector, std::span<const std::uint8_t> bytes) {
  const bool fast = selector == vendor_selector::kFastBulkData;
  if (fast && !settings_.highSpeed) {
    return Outcome::kNoSuchControl;
  }
  if (bytes.size() != (fast ? kFastLength : settings_.dataLength)) {
    return Outcome::kWrongLength;
  }
  if (mode_ != Mode::kReceiving || received_.size() + bytes.size() > kBufferSize) {
    return Outcome::kFailed;
  }
  received_.insert(received_.end(), bytes.begin(), bytes.end());
  return Outcome::kDone;
}

Outcome DataChannel::Read(std::uint16_t selector, std::vector<std::uint8_t>& bytes) {
  switch (selector) {
    case vendor_selector::kMemoryRead:
      return settings_.highSpeed ? NextFlashChunk(kFastLength, bytes) : Outcome::kNoSuchControl;
    case vendor_selector::kSlowFlashRead:
      return NextFlashChunk(kSlowFlashLength, bytes);
    default:
      break;
  }
  const bool fast = selector == vendor_selector::kFastBulkData;
  if (fast && !settings_.highSpeed) {
    return Outcome::kNoSuchControl;
  }
  // Read without having announced it, as the host does to learn the control's length.
  bytes.assign(fast ? kFastLength : settings_.dataLength, 0);
  if (mode_ == Mode::kSending) {
    const std::size_t count = std::min(bytes.size(), sending_.size() - position_);
    std::copy_n(sending_.begin() + static_cast<std::ptrdiff_t>(position_), count, bytes.begin());
    position_ += count;
  }
  return Outcome::kDone;
}

Outcome DataChannel::NextFlashChunk(std::size_t length, std::vector<std::uint8_t>& bytes) {
  if (mode_ != Mode::kReadingFlash) {
    return Outcome::kFailed;
  }
  bytes.assign(length, FlashMemory::kErased);
  // Only whole chunks are cut off at the announced size.
  if (position_ < flashEnd_ && position_ < flash_.bytes().size()) {
    const auto present = flash_.bytes().subspan(position_);
    std::copy_n(present.begin(), std::min(length, present.size()), bytes.begin());
  }
  position_ += length;
  return Outcome::kDone;
}

}  // namespace zem::simulator
