#include "camera_check.h"

#include <ZemUVC.hpp>
#include <cstdint>
#include <cstdio>

namespace {

constexpr std::uint32_t kScratchRegister = 0x123456;

std::string HexText(const zemuvc::Block<6>& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[4] = "";
    std::snprintf(digits, sizeof(digits), "%02x", byte);
    text += (text.empty() ? "" : " ") + std::string(digits);
  }
  return text;
}

}  // namespace

Report CheckCamera() {
  Report report;
  try {
    zemuvc::Camera camera = zemuvc::Camera::Open();
    report.version = HexText(camera.GetFirmwareVersion());
    for (const std::uint16_t value : {std::uint16_t{0x5A5A}, std::uint16_t{0xA5A5}}) {
      camera.SetRegister(kScratchRegister, value);
      if (camera.GetRegister(kScratchRegister) != value) {
        report.reason = "a register does not keep what is written to it";
        return report;
      }
    }
    report.isPassed = true;
  } catch (const zemuvc::Error& error) {
    report.reason = error.what();
  }
  return report;
}
