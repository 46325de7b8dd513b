#include "encoding/h264_start.h"

#include <algorithm>
#include <array>

#include "commands/command_block.h"
#include "device/transport.h"
#include "encoding/h264_frame_list.h"
#include "encoding/resolution_codes.h"
#include "platform/bytes.h"
#include "platform/result.h"

namespace zem {
namespace {

// ---- The Skype unit and the vendor unit: a resolution code and a switch ----

enum class Dialect { kSkype, kVendor };

// The switch has the same values in both dialects.
enum class Switch : std::uint8_t { kOff = 1, kOn = 2 };

// The newest version of the Skype unit that takes codes.
constexpr std::uint8_t kLastCodeVersion = 19;

HRESULT WriteSkypeByte(std::uint16_t selector, std::uint8_t byte, IBaseFilter* filter) {
  return XuSetControl(SkypeXu, selector, &byte, sizeof(byte), nullptr, filter);
}

Dialect DialectOf(IBaseFilter* filter) {
  std::uint8_t version = 0;
  const HRESULT read =
      XuGetControl(SkypeXu, skype_selector::kVersion, &version, sizeof(version), nullptr, filter);
  return SUCCEEDED(read) && version <= kLastCodeVersion ? Dialect::kSkype : Dialect::kVendor;
}

HRESULT SendCode(Dialect dialect, std::uint8_t code, IBaseFilter* filter) {
  return dialect == Dialect::kSkype
             ? WriteSkypeByte(skype_selector::kResolution, code, filter)
             : WriteBlock(vendor_selector::kVcpCommand, CommandBlock{0x0B, code}, filter);
}

HRESULT Turn(Dialect dialect, Switch position, IBaseFilter* filter) {
  const auto value = static_cast<std::uint8_t>(position);
  return dialect == Dialect::kSkype
             ? WriteSkypeByte(skype_selector::kH264Switch, value, filter)
             : WriteBlock(vendor_selector::kVcpCommand, CommandBlock{0x0C, value}, filter);
}

// Code first; whether H.264 could be switched on is deliberately not looked at.
HRESULT StartType0(const H264FrameInfo& format, IBaseFilter* filter) {
  const Dialect dialect = DialectOf(filter);
  const std::uint8_t code = ResolutionCode(StartKind::kIndexType0, format.wWidth, format.wHeight);
  if (FAILED(SendCode(dialect, code, filter))) {
    return kFail;
  }
  static_cast<void>(Turn(dialect, Switch::kOn, filter));
  return S_OK;
}

// Deliberately the other way round, and a switch that cannot be turned on is no failure.
HRESULT StartType1(const H264FrameInfo& format, IBaseFilter* filter) {
  const Dialect dialect = DialectOf(filter);
  const std::uint8_t code = ResolutionCode(StartKind::kIndexType1, format.wWidth, format.wHeight);
  if (FAILED(Turn(dialect, Switch::kOn, filter))) {
    return S_OK;
  }
  return FAILED(SendCode(dialect, code, filter)) ? kFail : S_OK;
}

// ---- The H.264 unit: probe and commit of a configuration block ----

using Configuration = std::array<std::uint8_t, 48>;

// Where the fields lie that are sent; all else is 0.
namespace configuration {

constexpr std::size_t kFrameInterval = 0;  // u32, 100 ns units
constexpr std::size_t kBitRate = 4;        // u32, bit/s
constexpr std::size_t kHints = 8;          // u16
constexpr std::size_t kIndex = 10;         // u16
constexpr std::size_t kWidth = 12;         // u16
constexpr std::size_t kHeight = 14;        // u16
constexpr std::size_t kProfile = 20;       // u16
constexpr std::size_t kMultiplexing = 33;  // u8

}  // namespace configuration

Configuration MainConfiguration(const H264FrameInfo& format) {
  Configuration block = {};
  StoreLe32(&block[configuration::kFrameInterval], 333333);
  StoreLe32(&block[configuration::kBitRate], 2500000);
  StoreLe16(&block[configuration::kHints], 0x2803);
  StoreLe16(&block[configuration::kIndex], 1);
  StoreLe16(&block[configuration::kWidth], format.wWidth);
  StoreLe16(&block[configuration::kHeight], format.wHeight);
  block[configuration::kMultiplexing] = 0x43;
  return block;
}

// The second stream's, which differs from the first only in what is set here.
Configuration SubConfiguration(const Configuration& main, const H264FrameInfo& format) {
  Configuration block = main;
  const std::uint32_t pixels = static_cast<std::uint32_t>(format.wSubWidth) * format.wSubHeight;
  StoreLe32(&block[configuration::kBitRate], pixels * 60);
  StoreLe16(&block[configuration::kWidth], format.wSubWidth);
  StoreLe16(&block[configuration::kHeight], format.wSubHeight);
  StoreLe16(&block[configuration::kProfile], 0x4200);
  block[configuration::kMultiplexing] = 5;
  return block;
}

// Commits what the camera makes of `wanted`. Deliberately commits also when the probe failed, zeros
// then, and looks at no result.
void ProbeAndCommit(Configuration wanted, IBaseFilter* filter) {
  Configuration offered = {};
  if (SUCCEEDED(XuSetControl(H264Xu, h264_selector::kProbe, wanted.data(), wanted.size(), nullptr,
                             filter))) {
    static_cast<void>(XuGetControl(H264Xu, h264_selector::kProbe, offered.data(), offered.size(),
                                   nullptr, filter));
  }
  static_cast<void>(XuSetControl(H264Xu, h264_selector::kCommit, offered.data(), offered.size(),
                                 nullptr, filter));
}

HRESULT StartType2(const H264FrameInfo& format, IBaseFilter* filter) {
  const Configuration main = MainConfiguration(format);
  ProbeAndCommit(main, filter);
  ProbeAndCommit(SubConfiguration(main, format), filter);
  return S_OK;
}

HRESULT Start(const H264FrameInfo& format, IBaseFilter* filter) {
  switch (format.wType) {
    case 0:
      return StartType0(format, filter);
    case 1:
      return StartType1(format, filter);
    case 2:
      return StartType2(format, filter);
    default:
      // Deliberate: a format of a type that nobody knows starts nothing and is no failure.
      return S_OK;
  }
}

}  // namespace

HRESULT SetH264FrameIndex(DeviceHandle& device, std::uint16_t frameIndex) {
  if (const HRESULT result = EnsureFrameList(device); FAILED(result)) {
    return result;
  }
  const auto formats = RecordsOf(*device.frameList);
  const auto chosen = std::find_if(
      formats.begin(), formats.end(),
      [frameIndex](const H264FrameInfo& format) { return format.wFrameIndex == frameIndex; });
  return chosen != formats.end() ? Start(*chosen, device.filter) : kFail;
}

HRESULT SetH264Mode(IBaseFilter* filter, std::uint32_t width, std::uint32_t height) {
  const Dialect dialect = DialectOf(filter);
  if (width == 0 || height == 0) {
    return SUCCEEDED(Turn(dialect, Switch::kOff, filter)) ? 1 : 0;
  }
  if (FAILED(SendCode(dialect, ResolutionCode(StartKind::kMode, width, height), filter))) {
    // Deliberate: the two dialects report a code that was not taken differently.
    return dialect == Dialect::kSkype ? 0 : kFail;
  }
  return SUCCEEDED(Turn(dialect, Switch::kOn, filter)) ? 1 : 0;
}

}  // namespace zem
