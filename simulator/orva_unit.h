// The camera's stream and endpoint unit: several streams, each with a probed and a committed
// format.
#pragma once

#include <array>
#include <map>

#include "simulator/camera.h"

namespace zem::simulator {

class OrvaUnit : public ExtensionUnit {
 public:
  OrvaUnit();

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override;
  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override;

  // As on the wire. A stream that nobody probed or committed has one of its own: 1280x720, 30
  // pictures a second, 2,500,000 bit/s.
  using Format = std::array<std::uint8_t, 13>;
  struct Stream {
    Format probe = kFirstFormat;
    Format commit = kFirstFormat;
  };
  static constexpr Format kFirstFormat = {0x01, 0x00, 0x05, 0xD0, 0x02, 0x15, 0x16,
                                          0x05, 0x00, 0xA0, 0x25, 0x26, 0x00};

  std::uint8_t version = 0x10;
  std::uint16_t buildDay = 0x0C1F;
  std::uint8_t endpointSetting = 1;
  std::uint8_t streamId = 0;
  std::uint8_t layer = 0;
  std::map<std::uint8_t, Stream> streams;
};

}  // namespace zem::simulator
