// Options of the simulator with any content: they are refused with a sentence, or cameras can be
// made of them.
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "simulator/options.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace simulator = zem::simulator;
  simulator::Options options;
  try {
    options = simulator::ParseOptions({reinterpret_cast<const char*>(data), size});
  } catch (const std::invalid_argument& error) {
    if (std::string_view(error.what()).empty()) {
      std::abort();
    }
    return 0;
  }
  for (simulator::CameraOptions& camera : options.cameras) {
    // Nothing is written to the disk.
    camera.stateFile.clear();
    camera.transferFile.clear();
    static_cast<void>(simulator::MakeCamera(camera));
  }
  return 0;
}
