// The camera's H.264 unit: probe and commit of a configuration block.
#pragma once

#include <array>
#include <memory>

#include "simulator/camera.h"
#include "simulator/h264_encoder.h"

namespace zem::simulator {

// Offers each configuration as it was probed. A commit starts the encoder.
class H264Unit : public ExtensionUnit {
 public:
  explicit H264Unit(std::shared_ptr<H264Encoder> encoder);

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

  using Configuration = std::array<std::uint8_t, 48>;
  Configuration probe = {};
  std::vector<Configuration> commits;

 private:
  std::shared_ptr<H264Encoder> encoder_;
};

}  // namespace zem::simulator
