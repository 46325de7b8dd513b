// Features of the image processing and the encoder that one command sets or reads.
//
// Results are those of the exports in include/ZemUVCExtApi.h. `filter` is the device; outputs must
// not be null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "commands/command_block.h"

namespace zem {

// A feature that one byte sets: the command without its value, where the value goes, and the rule
// by which the command is judged.
struct ByteFeature {
  Channel<CommandBlock> channel;
  CommandBlock command;
  std::size_t valueAt;
  HRESULT (*judge)(const Exchange<CommandBlock>& exchange);
};

inline constexpr ByteFeature kShading = {
    kIspChannel, {0xFF, 0x00}, 2, TransportAndStatusResult<CommandBlock>};
inline constexpr ByteFeature kAutoExposure = {
    kIspChannel, {0xFF, 0x05}, 2, StandardResult<CommandBlock>};
inline constexpr ByteFeature kAutoFocus = {
    kIspChannel, {0xFF, 0x08}, 2, StandardResult<CommandBlock>};
inline constexpr ByteFeature kImageEffect = {
    kIspChannel, {0xFF, 0x0B}, 2, TransportAndStatusResult<CommandBlock>};
// Takes no value: the firmware applies its own.
inline constexpr ByteFeature kMjpgQuality = {
    kIspChannel, {0xFF, 0x13}, 2, TransportAndStatusResult<CommandBlock>};
inline constexpr ByteFeature kMaxQp = {kVcpChannel, {0x07}, 1, StandardResult<CommandBlock>};
inline constexpr ByteFeature kMinQp = {kVcpChannel, {0x08}, 1, StandardResult<CommandBlock>};

HRESULT SetFeature(IBaseFilter* filter, ByteFeature feature, std::uint8_t value);

HRESULT SetVideoRecMode(IBaseFilter* filter, std::uint8_t mode);

// Nine values.
HRESULT GetAFACC(IBaseFilter* filter, unsigned* values);

HRESULT SetAWBGain(IBaseFilter* filter, std::uint16_t gain1, std::uint16_t gain2,
                   std::uint16_t gain3);
HRESULT GetAWBGain(IBaseFilter* filter, std::uint16_t* gain1, std::uint16_t* gain2,
                   std::uint16_t* gain3);

// Six bytes.
HRESULT SetMiscSetting(IBaseFilter* filter, const std::uint8_t* settings);
HRESULT GetMiscSetting(IBaseFilter* filter, std::uint8_t* settings);

}  // namespace zem
