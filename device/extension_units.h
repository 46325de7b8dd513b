// The camera's extension units and the selectors of their controls.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// The vendor command set: commands, data transfer, device information.
inline constexpr GUID VendorXu = {
    0x23E49ED0, 0x1178, 0x4F31, {0xAE, 0x52, 0xD2, 0xFB, 0x8A, 0x8D, 0x3B, 0x48}};

// H.264 stream configuration.
inline constexpr GUID H264Xu = {
    0xA29E7641, 0xDE04, 0x47E3, {0x8B, 0x2B, 0xF4, 0x34, 0x1A, 0xFF, 0x00, 0x3B}};

// The published Skype extension unit: version query, stream formats.
inline constexpr GUID SkypeXu = {
    0xB42153BD, 0x35D6, 0x45CA, {0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC}};

// TIRELLA non-volatile memory and LED commands.
inline constexpr GUID TirellaXu = {
    0xF679EF5B, 0x54DF, 0x4BFC, {0xB8, 0xCB, 0xCA, 0x7E, 0x89, 0xA5, 0x23, 0x3F}};

// ORVA stream and endpoint commands. Not a misprint of SkypeXu: the first three fields are in
// reverse byte order, and the camera answers to exactly this.
inline constexpr GUID OrvaXu = {
    0xBD5321B4, 0xD635, 0xCA45, {0xB2, 0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC}};

// UVC 1.5 encoding-unit controls of the WREN family.
inline constexpr GUID EncodingUnitXu = {
    0x38EB8662, 0x6545, 0x4BDF, {0x91, 0xA1, 0x52, 0xC7, 0xF3, 0xBF, 0xBD, 0xC6}};

// WREN probe and commit controls.
inline constexpr GUID StreamProbeXu = {
    0xEA8516CB, 0xDDA5, 0x4C3F, {0x97, 0x78, 0x13, 0x6F, 0x27, 0xF8, 0x0D, 0x93}};

// Control selectors of VendorXu.
namespace vendor_selector {

inline constexpr std::uint16_t kIspCommand = 1;
inline constexpr std::uint16_t kIspReply = 2;
inline constexpr std::uint16_t kVcpCommand = 4;
inline constexpr std::uint16_t kVcpReply = 5;
inline constexpr std::uint16_t kIspExtendedCommand = 6;
inline constexpr std::uint16_t kIspExtendedReply = 7;
inline constexpr std::uint16_t kDeviceInfo = 10;
inline constexpr std::uint16_t kVcpExtendedCommand = 14;
inline constexpr std::uint16_t kVcpExtendedReply = 15;

}  // namespace vendor_selector

}  // namespace zem
