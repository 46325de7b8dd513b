// The camera's extension units (what each is for stands in include/ZemUVCExtApi.h) and the
// selectors of their controls.
#pragma once

#include <cstdint>

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

inline constexpr GUID VendorXu = ZEM_VENDOR_XU;
inline constexpr GUID H264Xu = ZEM_H264_XU;
inline constexpr GUID SkypeXu = ZEM_SKYPE_XU;
inline constexpr GUID TirellaXu = ZEM_TIRELLA_XU;
inline constexpr GUID OrvaXu = ZEM_ORVA_XU;
inline constexpr GUID EncodingUnitXu = ZEM_ENCODING_UNIT_XU;
inline constexpr GUID StreamProbeXu = ZEM_STREAM_PROBE_XU;

// Control selectors of VendorXu.
namespace vendor_selector {

inline constexpr std::uint16_t kIspCommand = 1;
inline constexpr std::uint16_t kIspReply = 2;
inline constexpr std::uint16_t kBulkData = 3;
inline constexpr std::uint16_t kVcpCommand = 4;
inline constexpr std::uint16_t kVcpReply = 5;
inline constexpr std::uint16_t kIspExtendedCommand = 6;
inline constexpr std::uint16_t kIspExtendedReply = 7;
inline constexpr std::uint16_t kMemoryRead = 8;  // and flash read-back in long chunks
inline constexpr std::uint16_t kMemoryWrite = 9;
inline constexpr std::uint16_t kDeviceInfo = 10;
inline constexpr std::uint16_t kSensorSerial = 11;
inline constexpr std::uint16_t kSlowFlashRead = 11;
inline constexpr std::uint16_t kH264ListRead = 11;
inline constexpr std::uint16_t kFastBulkData = 13;
inline constexpr std::uint16_t kVcpExtendedCommand = 14;
inline constexpr std::uint16_t kVcpExtendedReply = 15;
inline constexpr std::uint16_t kNvmem = 16;

}  // namespace vendor_selector

// Of StreamProbeXu.
namespace stream_probe_selector {

inline constexpr std::uint16_t kProbe = 23;
inline constexpr std::uint16_t kCommit = 24;

}  // namespace stream_probe_selector

// Of H264Xu.
namespace h264_selector {

inline constexpr std::uint16_t kProbe = 1;
inline constexpr std::uint16_t kCommit = 2;

}  // namespace h264_selector

// Of SkypeXu. The version and the resolution code deliberately share a selector.
namespace skype_selector {

inline constexpr std::uint16_t kVersion = 1;     // read
inline constexpr std::uint16_t kResolution = 1;  // written
inline constexpr std::uint16_t kH264Switch = 15;

}  // namespace skype_selector

// Of OrvaXu.
namespace orva_selector {

inline constexpr std::uint16_t kVersion = 1;
inline constexpr std::uint16_t kBuildDay = 3;
inline constexpr std::uint16_t kStreamId = 4;
inline constexpr std::uint16_t kEndpointSetting = 5;
inline constexpr std::uint16_t kProbe = 8;
inline constexpr std::uint16_t kCommit = 9;
inline constexpr std::uint16_t kToggleLayer = 27;

}  // namespace orva_selector

// Of TirellaXu.
namespace tirella_selector {

inline constexpr std::uint16_t kLed = 2;
inline constexpr std::uint16_t kNvmem = 4;

}  // namespace tirella_selector

}  // namespace zem
