#include "tools/zemctl/camera/volume_watch.h"

#include <algorithm>
#include <cstring>

#include "platform/scsi.h"

namespace zemctl {
namespace {

// What a request gets that is not sent any more (ERROR_OPERATION_ABORTED): the library does not try
// it again.
constexpr std::uint32_t kNotSent = 995;

// What stands for a SCSI status (ERROR_IO_DEVICE): the library looks at the system's error only,
// and would go on.
constexpr std::uint32_t kRefused = 1117;

// How long a wait goes on before it is looked whether it still makes sense.
constexpr std::uint32_t kLongestPauseMilliseconds = 50;

// A request block: both forms have the same header, the data is behind it or at an address.
class PassThroughBlock {
 public:
  explicit PassThroughBlock(void* block) : block_(static_cast<std::uint8_t*>(block)) {
    std::memcpy(&header_, block, sizeof(header_));
    std::memcpy(&direct_, block, sizeof(direct_));
  }

  bool isIn() const { return header_.DataIn == SCSI_IOCTL_DATA_IN; }
  std::uint32_t length() const { return header_.DataTransferLength; }
  std::uint8_t status() const { return header_.ScsiStatus; }
  std::span<const std::uint8_t> cdb() const {
    return std::span(header_.Cdb).first(std::min<std::size_t>(header_.CdbLength, 16));
  }

  // The library reads with the buffered form and sends with the direct one.
  std::uint8_t* data() const {
    return isIn() ? block_ + header_.DataBufferOffset
                  : static_cast<std::uint8_t*>(direct_.DataBuffer);
  }

  void Answer(const ScsiCommand& command) {
    if (isIn()) {
      std::copy_n(command.data.begin(), std::min<std::size_t>(command.data.size(), length()),
                  data());
      header_.DataTransferLength = static_cast<std::uint32_t>(command.data.size());
    }
    header_.ScsiStatus = command.status;
    std::memcpy(block_, &header_, sizeof(header_));
  }

 private:
  std::uint8_t* block_;
  SCSI_PASS_THROUGH header_ = {};
  SCSI_PASS_THROUGH_DIRECT direct_ = {};
};

ScsiCommand Describe(const std::string& drive, const PassThroughBlock& block) {
  ScsiCommand command;
  command.drive = drive;
  command.cdb.assign(block.cdb().begin(), block.cdb().end());
  command.isIn = block.isIn();
  command.length = block.length();
  if (!command.isIn && block.data() != nullptr) {
    command.data.assign(block.data(), block.data() + command.length);
  }
  return command;
}

}  // namespace

std::optional<std::string> VolumeWatch::DriveOf(std::wstring_view path) {
  constexpr std::wstring_view kPrefix = L"\\\\.\\";
  if (path.size() != kPrefix.size() + 2 || !path.starts_with(kPrefix) || path.back() != L':') {
    return std::nullopt;
  }
  const wchar_t letter = path[kPrefix.size()];
  if (letter >= L'a' && letter <= L'z') {
    return std::string(1, static_cast<char>(letter - L'a' + L'A')) + ":";
  }
  if (letter >= L'A' && letter <= L'Z') {
    return std::string(1, static_cast<char>(letter)) + ":";
  }
  return std::nullopt;
}

void VolumeWatch::Opened(const void* handle, const std::string& drive) {
  drives_[handle] = drive;
  record_.ForgetSilence();
}

std::uint32_t VolumeWatch::Control(const void* handle, void* block,
                                   const std::function<std::uint32_t()>& send) {
  if (!record_.MaySend()) {
    return kNotSent;
  }
  ScsiCommand command = Describe(drives_.at(handle), PassThroughBlock(block));
  const std::uint64_t began = record_.Now();
  const std::uint32_t error = send();
  command.error = error;
  std::uint8_t status = 0;
  if (error == 0) {
    const PassThroughBlock answer(block);
    status = answer.status();
    command.status = status;
    if (command.isIn) {
      command.data.assign(answer.data(), answer.data() + std::min(answer.length(), command.length));
    }
  }
  record_.Add(std::move(command), began);
  return status != 0 ? kRefused : error;
}

std::uint32_t VolumeWatch::Control(const void* handle, void* block, VolumeSource& source) {
  return Control(handle, block, [&] {
    PassThroughBlock request(block);
    ScsiCommand command = Describe(drives_.at(handle), request);
    source.Execute(command);
    if (command.error == 0) {
      request.Answer(command);
    }
    return command.error;
  });
}

void VolumeWatch::Sleep(std::uint32_t milliseconds,
                        const std::function<void(std::uint32_t)>& pause) const {
  while (milliseconds > 0 && record_.isOpen()) {
    const std::uint32_t some = std::min(milliseconds, kLongestPauseMilliseconds);
    pause(some);
    milliseconds -= some;
  }
}

}  // namespace zemctl
