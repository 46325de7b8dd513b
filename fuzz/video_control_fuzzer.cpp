// A camera's descriptors with any content, whatever configuration and interface are asked for.
#include <cstdint>

#include "platform/linux/video_control.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) {
    return 0;
  }
  zem::platform::VideoTopology topology;
  zem::platform::ReadVideoTopology({data + 2, size - 2}, data[0], data[1], topology);
  return topology.count <= topology.entities.size() ? 0 : 1;
}
