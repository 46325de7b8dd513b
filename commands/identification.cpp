#include "commands/identification.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "commands/command_block.h"
#include "device/transport.h"
#include "platform/result.h"

namespace zem {
namespace {

constexpr CommandBlock kVersionCommand = {0x0B};
constexpr CommandBlock kBuildDateCommand = {0x0C};
constexpr CommandBlock kCheckSumCommand = {0x06};

// Status by which the firmware says that its check sum is wrong.
constexpr std::uint8_t kCheckSumWrong = 0x80;

constexpr CommandBlock kPrepareSensorSerial = {0x19, 0x81};
constexpr ULONG kSensorSerialSize = 32;

// Every version of the Skype unit below kFirstTrueSkypeVersion is reported as kOldSkypeVersion.
constexpr std::uint8_t kOldSkypeVersion = 0x12;
constexpr std::uint8_t kFirstTrueSkypeVersion = 0x14;

}  // namespace

HRESULT GetFWVersion(IBaseFilter* filter, std::uint8_t* version) {
  CommandBlock reply = {};
  const HRESULT result = StandardCommand(kIspChannel, kVersionCommand, filter, &reply);
  if (result == S_OK) {
    std::copy(reply.begin() + 2, reply.end(), version);
  }
  return result;
}

HRESULT GetFWVersionReply(IBaseFilter* filter, char* version) {
  CommandBlock reply = {};
  const HRESULT result = StandardCommand(kIspChannel, kVersionCommand, filter, &reply);
  if (result == S_OK) {
    std::memcpy(version, reply.data(), reply.size());
  }
  // Deliberate: this form reports a refusal as kRefused, the other as kDeviceRefused.
  return result == kDeviceRefused ? kRefused : result;
}

HRESULT GetFWBuildDate(IBaseFilter* filter, char* date) {
  CommandBlock reply = {};
  const HRESULT result = StandardCommand(kIspChannel, kBuildDateCommand, filter, &reply);
  if (result == S_OK) {
    // The device sends the characters of year, month and day; the century is the host's.
    const auto at = [&reply](std::size_t index) { return static_cast<char>(reply[index]); };
    const std::array<char, 12> text = {'2',   '0',   at(1), at(2), '.',   at(3),
                                       at(4), at(5), '.',   at(6), at(7), '\0'};
    std::copy(text.begin(), text.end(), date);
  }
  return result;
}

HRESULT GetCheckSumResult(IBaseFilter* filter) {
  const Exchange<CommandBlock> exchange = SendCommand(kVcpChannel, kCheckSumCommand, filter);
  const HRESULT result = StandardResult(exchange);
  // Deliberate: any refusal but the wrong check sum is kRefused.
  return result == kDeviceRefused && exchange.status() != kCheckSumWrong ? kRefused : result;
}

HRESULT GetDeviceInfo(IBaseFilter* filter, std::uint8_t* info) {
  CommandBlock block = {};
  if (FAILED(ReadBlock(vendor_selector::kDeviceInfo, block, filter))) {
    return kNoDevice;
  }
  std::copy(block.begin(), block.end(), info);
  return S_OK;
}

HRESULT GetSensorSN(IBaseFilter* filter, std::uint8_t* serial) {
  const HRESULT written = WriteBlock(kVcpChannel.commandSelector, kPrepareSensorSerial, filter);
  // Deliberate: read whatever became of the command, and not looked at.
  static_cast<void>(XuGetControl(VendorXu, vendor_selector::kSensorSerial, serial,
                                 kSensorSerialSize, nullptr, filter));
  return FAILED(written) ? kNoDevice : S_OK;
}

HRESULT GetSkypeXUVersion(IBaseFilter* filter, std::uint8_t* version) {
  std::uint8_t read = 0;
  if (FAILED(
          XuGetControl(SkypeXu, skype_selector::kVersion, &read, sizeof(read), nullptr, filter))) {
    return kRefused;
  }
  // Deliberate: callers depend on this floor.
  *version = read < kFirstTrueSkypeVersion ? kOldSkypeVersion : read;
  return S_OK;
}

}  // namespace zem
