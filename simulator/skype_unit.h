// The camera's Skype unit: its version, the resolution code, the H.264 switch.
#pragma once

#include <memory>

#include "simulator/camera.h"
#include "simulator/h264_encoder.h"

namespace zem::simulator {

class SkypeUnit : public ExtensionUnit {
 public:
  SkypeUnit(std::uint8_t version, std::shared_ptr<H264Encoder> encoder);

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

 private:
  std::uint8_t version_;
  std::shared_ptr<H264Encoder> encoder_;
};

}  // namespace zem::simulator
