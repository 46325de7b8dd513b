#include "romboot/usb_scsi_cmd.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/bytes.h"
#include "platform/debugger_line.h"
#include "romboot/vendor_commands.h"

namespace zem {

std::atomic<std::uint32_t> sendAddressDivider = 0;

namespace {

// The first bytes of every vendor command.
constexpr std::array<std::uint8_t, 3> kVendorBytes = {0xFA, 0x55, 0x66};

// A standard inquiry for 36 bytes. Only volumes that answer in this response data format are
// spoken to.
constexpr std::array<std::uint8_t, 6> kInquiry = {0x12, 0x00, 0x00, 0x00, 0x24, 0x00};
constexpr std::uint32_t kInquiryLength = 36;
constexpr std::uint8_t kResponseDataFormat = 1;

constexpr std::uint32_t kIdentifyLength = 16;
// Stands in for byte 0 of the reply to identify, so that a reply that never arrives is none.
constexpr std::uint8_t kSentinel = 0x33;

constexpr std::uint32_t kDataInTimeoutSeconds = 2;
constexpr std::uint32_t kDataOutTimeoutSeconds = 10;
constexpr std::uint32_t kPauseBeforeDataOut = 10;

// The error (ERROR_GEN_FAILURE) after which a command is tried again.
constexpr std::uint32_t kGeneralFailure = 31;
constexpr int kMaxRetries = 5;
constexpr std::uint32_t kRetryPause = 500;

constexpr std::uint32_t kMaxDownloadSectors = 64;

// Capacity of an error's text and of the line that reports it.
constexpr std::size_t kReportCapacity = 1024;

constexpr const wchar_t* kDataInFailed = L"SendScsiCmdIIn Failed, Erroe=0x%X %s\r\n";
constexpr const wchar_t* kDataOutFailed = L"SendScsiCmdIOut Failed, Erroe=0x%X %s\r\n";

// How the reply to identify names a boot loader, and the signature that stands for the name.
struct BootCode {
  std::string_view name;
  std::array<std::uint8_t, 4> signature;
};

constexpr std::array<BootCode, 3> kBootCodes = {{
    {"VSN2", {'V', 'S', 'N', '2'}},
    {"VSN3", {'V', 'S', 'N', '3'}},
    {"MCY1UPD", {0x0D, 0x01, 0x89, 0x85}},
}};

void ReportFailure(const wchar_t* format) {
  std::array<wchar_t, kReportCapacity> text = {};
  const std::uint32_t error = platform::LastError();
  if (error != 0) {
    platform::ErrorText(error, text);
  }
  platform::DebuggerLine<kReportCapacity>(format, error, text.data());
}

// Issues a pass-through request, and again while it fails with kGeneralFailure.
int Issue(platform::VolumeHandle volume, std::uint32_t code, void* block, std::uint32_t inputLength,
          std::uint32_t outputLength, const wchar_t* failureFormat) {
  int retries = 0;
  while (!platform::ControlVolume(volume, code, block, inputLength, outputLength)) {
    if (platform::LastError() != kGeneralFailure || retries == kMaxRetries) {
      ReportFailure(failureFormat);
      return 0;
    }
    ++retries;
    platform::Sleep(kRetryPause);
  }
  return 1;
}

void PrepareBuffered(BufferedRequest& request, std::uint8_t cdbLength, std::uint32_t length) {
  FillHeader(request.header, cdbLength, SCSI_IOCTL_DATA_IN, length, kDataInTimeoutSeconds);
  request.header.DataBufferOffset = kDataOffset;
}

bool HasTextAt(const BufferedRequest& reply, std::size_t offset, std::string_view text) {
  return std::memcmp(reply.data + offset, text.data(), text.size()) == 0;
}

}  // namespace

UsbScsiCmd::~UsbScsiCmd() { CloseVolume(); }

void UsbScsiCmd::CloseVolume() {
  if (volume != nullptr) {
    platform::CloseVolume(volume);
    volume = nullptr;
  }
}

int UsbScsiCmd::OpenStorage() {
  deviceKind = kNoDeviceKind;
  const bool tellsDivider = sendAddressDivider.load(std::memory_order_relaxed) != 0;
  for (wchar_t letter = L'C'; letter <= L'Z'; ++letter) {
    std::array<wchar_t, 7> path = {L'\\', L'\\', L'.', L'\\', letter, L':', L'\0'};
    const platform::VolumeHandle candidate = platform::OpenVolume(path.data());
    if (candidate == nullptr || !IsCandidate(candidate)) {
      continue;
    }
    volume = candidate;
    if (Identify(tellsDivider)) {
      return 1;
    }
  }
  volume = nullptr;
  return 0;
}

// One inquiry, without retry or report.
bool UsbScsiCmd::IsCandidate(platform::VolumeHandle candidate) {
  BufferedRequest request = {};
  PrepareBuffered(request, kInquiry.size(), kInquiryLength);
  std::copy(kInquiry.begin(), kInquiry.end(), request.header.Cdb);
  return platform::ControlVolume(candidate, IOCTL_SCSI_PASS_THROUGH, &request,
                                 sizeof(request.header), kDataOffset + kInquiryLength) &&
         request.data[3] == kResponseDataFormat;
}

// Asks the volume what it is; true when it is a camera.
bool UsbScsiCmd::Identify(bool tellsDivider) {
  BufferedRequest request = {};
  request.data[0] = kSentinel;
  std::copy(kVendorBytes.begin(), kVendorBytes.end(), request.header.Cdb);
  request.header.Cdb[3] = static_cast<std::uint8_t>(SubCommand::kIdentify);
  const bool identified = SendScsiCmdIn(request, kIdentifyLength) != 0;
  AnnounceAddressDivider(tellsDivider);
  if (!identified) {
    return false;
  }
  if (request.data[0] == 0xAA && request.data[1] == 0x55) {
    deviceKind = kBootLoaderKind;
    for (const BootCode& bootCode : kBootCodes) {
      if (HasTextAt(request, 4, bootCode.name)) {
        signature = bootCode.signature;
      }
    }
    return true;
  }
  if (HasTextAt(request, 9, "ZEM")) {
    deviceKind = kZemStorageKind;
    return true;
  }
  return false;
}

void UsbScsiCmd::AnnounceAddressDivider(bool tellsDivider) {
  addressDivider = 1;
  platform::DebuggerOutput(L"Set addr div = 1\r\n");
  if (tellsDivider) {
    platform::DebuggerOutput(L"Send addr div = 1\r\n");
    VendorCdb cdb = MakeCdb(SubCommand::kSetAddressDivider);
    std::array<std::uint8_t, 4> divider = {};
    cdb[7] = static_cast<std::uint8_t>(divider.size());
    StoreLe32(divider.data(), addressDivider);
    // Deliberate: its outcome is ignored; callers depend on it.
    static_cast<void>(SendScsiCmd(1, kDataOut, divider.size(), cdb.data(), divider.data()));
  }
  platform::DebuggerLine<64>(L"Storage Address Divider=0x%X \r\n", addressDivider);
}

int UsbScsiCmd::SendScsiCmdIn(BufferedRequest& request, std::uint32_t length) {
  if (length > kMaxBufferedData) {
    return 0;
  }
  PrepareBuffered(request, sizeof(request.header.Cdb), length);
  return Issue(volume, IOCTL_SCSI_PASS_THROUGH, &request, sizeof(request.header),
               kDataOffset + length, kDataInFailed);
}

int UsbScsiCmd::SendScsiCmd(int stamp, int direction, std::uint32_t length, std::uint8_t* cdb,
                            void* data) {
  if (stamp != 0) {
    std::copy(kVendorBytes.begin(), kVendorBytes.end(), cdb);
  }
  if (direction == kDataIn) {
    BufferedRequest request = {};
    std::copy_n(cdb, sizeof(request.header.Cdb), request.header.Cdb);
    const int sent = SendScsiCmdIn(request, length);
    if (sent != 0 && length > 0) {
      std::memcpy(data, request.data, length);
    }
    return sent;
  }
  DirectRequest request = {};
  FillHeader(request.header, sizeof(request.header.Cdb), SCSI_IOCTL_DATA_OUT, length,
             kDataOutTimeoutSeconds);
  request.header.DataBuffer = data;
  std::copy_n(cdb, sizeof(request.header.Cdb), request.header.Cdb);
  platform::Sleep(kPauseBeforeDataOut);
  return Issue(volume, IOCTL_SCSI_PASS_THROUGH_DIRECT, &request, sizeof(request), sizeof(request),
               kDataOutFailed);
}

int UsbScsiCmd::DownloadSectors(std::uint32_t sectorCount, const std::uint8_t* data) {
  if (sectorCount == 0) {
    return 0;
  }
  for (std::uint32_t remaining = sectorCount; remaining > 0;) {
    const std::uint32_t count = std::min(remaining, kMaxDownloadSectors);
    VendorCdb cdb = MakeCdb(SubCommand::kDownload);
    StoreBe16(&cdb[4], static_cast<std::uint16_t>(count));
    if (SendScsiCmd(1, kDataOut, count * kSectorSize, cdb.data(),
                    const_cast<std::uint8_t*>(data)) == 0) {
      return 0;
    }
    data += static_cast<std::size_t>(count) * kSectorSize;
    remaining -= count;
  }
  return 1;
}

int UsbScsiCmd::WriteStorage(std::uint32_t address, std::uint32_t sectorCount,
                             const std::uint8_t* data, std::uint8_t flag) {
  const std::uint32_t unit = address / addressDivider;
  VendorCdb cdb = MakeCdb(SubCommand::kWriteStorage);
  StoreBe32(&cdb[4], unit);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(sectorCount));
  cdb[10] = flag;
  platform::DebuggerLine<128>(L"Adr=0x%X, Len=0x%X Flag=0x%X\r\n", unit, sectorCount * kSectorSize,
                              flag);
  return SendScsiCmd(1, kDataOut, sectorCount * kSectorSize, cdb.data(),
                     const_cast<std::uint8_t*>(data));
}

}  // namespace zem
