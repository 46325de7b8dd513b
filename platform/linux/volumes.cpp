// The volumes of the platform wall: the drive letters C to Z are the machine's SCSI generic devices
// in the order of their numbers, and pass-through requests become SG_IO.
#include <fcntl.h>
#include <scsi/sg.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/linux/device_file.h"
#include "platform/linux/errors.h"
#include "platform/linux/generic_errors.h"
#include "platform/linux/sysfs.h"
#include "platform/platform.h"
#include "platform/scsi.h"
#include "platform/text.h"

namespace zem::platform {
namespace {

thread_local std::uint32_t lastError = 0;

constexpr wchar_t kFirstLetter = L'c';
constexpr std::size_t kMaxVolumes = 24;

// A pass-through request in either form, within a block of `size` bytes.
template <class Header>
class PassThrough {
 public:
  PassThrough(void* block, std::size_t inputSize, std::size_t outputSize)
      : block_(static_cast<std::uint8_t*>(block)), size_(std::max(inputSize, outputSize)) {
    if (inputSize >= sizeof(header_) && block != nullptr) {
      std::memcpy(&header_, block, sizeof(header_));
    }
  }

  const Header& header() const { return header_; }

  // Whether the system would take it.
  bool IsValid() const {
    return header_.Length == sizeof(header_) && header_.CdbLength > 0 &&
           header_.CdbLength <= sizeof(header_.Cdb) && header_.DataIn <= SCSI_IOCTL_DATA_IN &&
           (header_.SenseInfoLength == 0 ||
            (header_.SenseInfoOffset >= sizeof(header_) && SenseEnd() <= size_));
  }

  std::uint64_t SenseEnd() const {
    return header_.SenseInfoLength == 0
               ? 0
               : std::uint64_t{header_.SenseInfoOffset} + header_.SenseInfoLength;
  }

  // Sends it with the data at `data`.
  std::uint32_t Send(int descriptor, void* data) {
    sg_io_hdr request = {};
    request.interface_id = 'S';
    request.cmdp = header_.Cdb;
    request.cmd_len = header_.CdbLength;
    request.dxfer_direction = Direction();
    request.dxfer_len = header_.DataTransferLength;
    request.dxferp = header_.DataTransferLength > 0 ? data : nullptr;
    request.mx_sb_len = header_.SenseInfoLength;
    request.sbp = header_.SenseInfoLength > 0 ? block_ + header_.SenseInfoOffset : nullptr;
    constexpr std::uint32_t kMilliseconds = 1000;
    request.timeout = header_.TimeOutValue * kMilliseconds;
    const int sent = kernel::ControlWithSignalsHeld(descriptor, SG_IO, &request);
    if (sent < 0) {
      return ErrorOfErrno(sent);
    }
    header_.ScsiStatus = request.status;
    const std::uint32_t error = ErrorOfGeneric(request);
    if (error == 0) {
      header_.SenseInfoLength = request.sb_len_wr;
      header_.DataTransferLength -= static_cast<std::uint32_t>(
          std::clamp<std::int64_t>(request.resid, 0, std::int64_t{header_.DataTransferLength}));
    }
    // What failed keeps its lengths: the caller may send the same block again.
    std::memcpy(block_, &header_, sizeof(header_));
    return error;
  }

 private:
  int Direction() const {
    if (header_.DataTransferLength == 0) {
      return SG_DXFER_NONE;
    }
    return header_.DataIn == SCSI_IOCTL_DATA_IN ? SG_DXFER_FROM_DEV : SG_DXFER_TO_DEV;
  }

  std::uint8_t* block_;
  std::size_t size_;
  Header header_ = {};
};

// The buffered form: the data lies in the block itself, behind the sense bytes.
std::uint32_t SendBuffered(int descriptor, void* block, std::size_t inputSize,
                           std::size_t outputSize) {
  PassThrough<SCSI_PASS_THROUGH> request(block, inputSize, outputSize);
  const auto& header = request.header();
  const std::uint64_t offset = header.DataBufferOffset;
  const std::size_t dataEnd = header.DataIn == SCSI_IOCTL_DATA_IN ? outputSize : inputSize;
  const bool hasRoom = header.DataTransferLength == 0 ||
                       (offset >= std::max<std::uint64_t>(sizeof(header), request.SenseEnd()) &&
                        offset <= dataEnd && header.DataTransferLength <= dataEnd - offset);
  if (!request.IsValid() || !hasRoom) {
    return kInvalidParameter;
  }
  return request.Send(descriptor, static_cast<std::uint8_t*>(block) + offset);
}

// The direct form: the block holds the address of the caller's data.
std::uint32_t SendDirect(int descriptor, void* block, std::size_t inputSize,
                         std::size_t outputSize) {
  PassThrough<SCSI_PASS_THROUGH_DIRECT> request(block, inputSize, outputSize);
  const auto& header = request.header();
  if (!request.IsValid() || (header.DataTransferLength > 0 && header.DataBuffer == nullptr)) {
    return kInvalidParameter;
  }
  return request.Send(descriptor, header.DataBuffer);
}

// The place of a path such as \\.\C: among the volumes.
std::optional<std::size_t> VolumeIndex(std::wstring_view path) {
  constexpr std::wstring_view kPrefix = LR"(\\.\)";
  if (!path.starts_with(kPrefix) || path.size() != kPrefix.size() + 2 || path.back() != L':') {
    return std::nullopt;
  }
  const auto index = static_cast<std::size_t>(FoldCase(path[kPrefix.size()]) - kFirstLetter);
  return index < kMaxVolumes ? std::optional(index) : std::nullopt;
}

// A file descriptor, or an errno value.
int OpenGeneric(std::size_t index) {
  std::array<unsigned, 256> numbers = {};
  const std::size_t count =
      ListNumbered({kernel::SysFolder(), "/class/scsi_generic"}, "sg", numbers);
  if (index >= count) {
    return -ENOENT;
  }
  PathText path({kernel::DeviceFolder(), "/sg"});
  path.AppendNumber(numbers[index]);
  return kernel::Open(path.c_str(), O_RDWR | O_NONBLOCK);
}

// A handle is the address just behind its descriptor's number, so that none is null.
VolumeHandle HandleOf(int descriptor) {
  return reinterpret_cast<VolumeHandle>(static_cast<std::intptr_t>(descriptor) + 1);
}
int DescriptorOf(VolumeHandle volume) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(volume) - 1);
}

}  // namespace

VolumeHandle OpenVolume(const wchar_t* path) {
  const auto index = VolumeIndex(path);
  const int descriptor = index ? OpenGeneric(*index) : -ENOENT;
  if (descriptor < 0) {
    lastError = descriptor == -ENOENT ? kFileNotFound : ErrorOfErrno(descriptor);
    return nullptr;
  }
  return HandleOf(descriptor);
}

void CloseVolume(VolumeHandle volume) { kernel::Close(DescriptorOf(volume)); }

bool ControlVolume(VolumeHandle volume, std::uint32_t code, void* block, std::uint32_t inputLength,
                   std::uint32_t outputLength) {
  std::uint32_t error = kInvalidFunction;
  if (code == IOCTL_SCSI_PASS_THROUGH) {
    error = SendBuffered(DescriptorOf(volume), block, inputLength, outputLength);
  } else if (code == IOCTL_SCSI_PASS_THROUGH_DIRECT) {
    error = SendDirect(DescriptorOf(volume), block, inputLength, outputLength);
  }
  if (error != 0) {
    lastError = error;
  }
  return error == 0;
}

std::uint32_t LastError() { return lastError; }

void ErrorText(std::uint32_t code, std::span<wchar_t> text) {
  const wchar_t* const known = TextOfError(code);
  const std::wstring_view whole = known != nullptr ? known : L"";
  if (known != nullptr && whole.size() < text.size()) {
    text[whole.copy(text.data(), whole.size())] = L'\0';
  }
}

}  // namespace zem::platform
