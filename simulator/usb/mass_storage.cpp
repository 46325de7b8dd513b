#include "simulator/usb/mass_storage.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"

namespace zem::simulator::usb {
namespace {

constexpr std::size_t kCommandLength = 31;
constexpr std::uint32_t kCommandSignature = 0x43425355;  // "USBC"
constexpr std::uint32_t kStatusSignature = 0x53425355;   // "USBS"
constexpr std::uint8_t kToHost = 0x80;
constexpr std::uint8_t kMostCdb = 16;

// How a command ended.
constexpr std::uint8_t kPassed = 0;
constexpr std::uint8_t kFailed = 1;
constexpr std::uint8_t kPhaseError = 2;

// Requests of the class.
constexpr std::uint8_t kReset = 0xFF;
constexpr std::uint8_t kMostUnits = 0xFE;

// Commands that a system sends to every disk.
constexpr std::uint8_t kTestUnitReady = 0x00;
constexpr std::uint8_t kRequestSense = 0x03;
constexpr std::uint8_t kInquiry = 0x12;
constexpr std::uint8_t kVendorCommand = 0xFA;

using Sense = std::array<std::uint8_t, 3>;
constexpr Sense kNoMedium = {0x02, 0x3A, 0x00};
constexpr Sense kUnknownCommand = {0x05, 0x20, 0x00};
constexpr Sense kRefused = {0x05, 0x24, 0x00};

DeviceDescriptors DescribeStorage(const CameraOptions& options) {
  DeviceDescriptors device;
  device.device = {18,
                   descriptor_type::kDevice,
                   0x00,
                   0x02,
                   0,
                   0,
                   0,
                   64,
                   ByteOf(options.vendorId, 0),
                   ByteOf(options.vendorId, 1),
                   ByteOf(options.productId, 0),
                   ByteOf(options.productId, 1),
                   0x00,
                   0x01,
                   1,
                   2,
                   3,
                   1};
  device.configuration = {9, descriptor_type::kConfiguration, 32, 0, 1, 1, 0, 0x80, 50,
                          // Mass storage, SCSI commands, bulk-only.
                          9, 0x04, 0, 0, 2, 0x08, 0x06, 0x50, 0, 7, 0x05, kStorageIn, 2, 0x00, 0x02,
                          0, 7, 0x05, kStorageOut, 2, 0x00, 0x02, 0};
  device.qualifier = {10, descriptor_type::kQualifier, 0x00, 0x02, 0, 0, 0, 64, 1, 0};
  device.strings = {"ZEM", options.name, "0000000000000000"};
  return device;
}

}  // namespace

UsbBootLoader::UsbBootLoader(const CameraOptions& options, std::shared_ptr<BootLoader> bootLoader)
    : bootLoader_(std::move(bootLoader)), standard_(DescribeStorage(options)) {}

Answer UsbBootLoader::Control(const SetupPacket& setup, std::span<const std::uint8_t> /*data*/) {
  if (isGone()) {
    return Answer::Gone();
  }
  Answer answer = Answer::Stalled(StallReason::kInvalidRequest);
  if (IsStandard(setup)) {
    answer = standard_.Request(setup);
    if (IsConfiguring(setup)) {
      Reset();
    }
  } else if (IsOfClass(setup) && setup[1] == kMostUnits) {
    answer = Answer::Done({0});
  } else if (IsOfClass(setup) && setup[1] == kReset) {
    Reset();
    answer = Answer::Done();
  }
  return CutToRequest(setup, std::move(answer));
}

void UsbBootLoader::Reset() {
  phase_ = Phase::kCommand;
  data_.clear();
}

Answer UsbBootLoader::Send(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) {
  if (isGone()) {
    return Answer::Gone();
  }
  if (endpoint != kStorageOut) {
    return Answer::Stalled(StallReason::kNone);
  }
  if (phase_ == Phase::kCommand) {
    return Begin(bytes);
  }
  if (phase_ != Phase::kDataOut || bytes.size() > command_.length - data_.size()) {
    phase_ = Phase::kHalted;
    return Answer::Stalled(StallReason::kNone);
  }
  data_.insert(data_.end(), bytes.begin(), bytes.end());
  return data_.size() == command_.length ? CarryOut() : Answer::Done();
}

// A command block that is none halts the device until it is reset.
Answer UsbBootLoader::Begin(std::span<const std::uint8_t> bytes) {
  const bool isCommand = bytes.size() == kCommandLength &&
                         LoadLe32(bytes.data()) == kCommandSignature && bytes[13] == 0 &&
                         bytes[14] > 0 && bytes[14] <= kMostCdb &&
                         LoadLe32(&bytes[8]) <= kMostStorageData;
  if (!isCommand) {
    phase_ = Phase::kHalted;
    return Answer::Stalled(StallReason::kNone);
  }
  const auto cdb = bytes.subspan(15, bytes[14]);
  command_ = {LoadLe32(&bytes[4]), LoadLe32(&bytes[8]), (bytes[12] & kToHost) != 0,
              Bytes(cdb.begin(), cdb.end())};
  data_.clear();
  if (command_.length > 0 && !command_.isIn) {
    phase_ = Phase::kDataOut;
    return Answer::Done();
  }
  return CarryOut();
}

Answer UsbBootLoader::CarryOut() {
  if (command_.isIn) {
    data_.assign(command_.length, 0);
  }
  const ScsiResult result = Execute();
  moved_ = std::min(result.moved, data_.size());
  switch (result.outcome) {
    case ScsiOutcome::kDone:
      status_ = kPassed;
      break;
    case ScsiOutcome::kRefused:
      status_ = kFailed;
      break;
    case ScsiOutcome::kFailed:
      status_ = kPhaseError;
      break;
    case ScsiOutcome::kSilent:
      phase_ = Phase::kSilent;
      return Answer::Done();
    case ScsiOutcome::kGone:
      isGone_ = true;
      return Answer::Gone();
  }
  phase_ = command_.isIn && command_.length > 0 ? Phase::kDataIn : Phase::kStatus;
  data_.resize(moved_);
  return Answer::Done();
}

ScsiResult UsbBootLoader::Execute() {
  if (auto own = ExecuteOwn()) {
    return *own;
  }
  const ScsiResult result = bootLoader_->Execute(command_.cdb, command_.isIn, data_);
  sense_ = result.outcome == ScsiOutcome::kRefused ? kRefused : Sense{};
  return result;
}

std::optional<ScsiResult> UsbBootLoader::ExecuteOwn() {
  const std::uint8_t code = command_.cdb[0];
  if (code == kInquiry || code == kVendorCommand) {
    return std::nullopt;
  }
  if (code == kRequestSense) {
    // Key, length of what follows, code and qualifier.
    Bytes sense(18);
    sense[0] = 0x70;
    sense[2] = sense_[0];
    sense[7] = 10;
    sense[12] = sense_[1];
    sense[13] = sense_[2];
    const std::size_t count = std::min(sense.size(), data_.size());
    std::copy_n(sense.begin(), count, data_.begin());
    sense_ = {};
    return ScsiResult{ScsiOutcome::kDone, count};
  }
  // A disk without a medium is left alone.
  sense_ = code == kTestUnitReady ? kNoMedium : kUnknownCommand;
  return ScsiResult{ScsiOutcome::kRefused, 0};
}

std::optional<Answer> UsbBootLoader::Receive(std::uint8_t endpoint, std::size_t length,
                                             Time /*now*/) {
  if (isGone()) {
    return Answer::Gone();
  }
  if (endpoint != kStorageIn) {
    return Answer::Stalled(StallReason::kNone);
  }
  switch (phase_) {
    case Phase::kDataIn: {
      const std::size_t count = std::min(length, data_.size());
      Bytes piece(data_.begin(), data_.begin() + static_cast<std::ptrdiff_t>(count));
      data_.erase(data_.begin(), data_.begin() + static_cast<std::ptrdiff_t>(count));
      // A piece that is shorter than asked for ends the data.
      if (data_.empty() && (count < length || moved_ == command_.length)) {
        phase_ = Phase::kStatus;
      }
      return Answer::Done(std::move(piece));
    }
    case Phase::kStatus:
      phase_ = Phase::kCommand;
      return Answer::Done(Status());
    case Phase::kHalted:
      return Answer::Stalled(StallReason::kNone);
    case Phase::kCommand:
    case Phase::kDataOut:
    case Phase::kSilent:
      break;
  }
  return std::nullopt;
}

Bytes UsbBootLoader::Status() const {
  Bytes status(13);
  StoreLe32(status.data(), kStatusSignature);
  StoreLe32(&status[4], command_.tag);
  StoreLe32(&status[8], static_cast<std::uint32_t>(command_.length - moved_));
  status[12] = status_;
  return status;
}

}  // namespace zem::simulator::usb
