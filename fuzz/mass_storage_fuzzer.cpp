// What a host sends a boot loader on its bulk endpoints: pieces of any bytes, and reads between
// them.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "simulator/usb/mass_storage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace simulator = zem::simulator;
  simulator::BootLoaderOptions options;
  options.storages = {{simulator::StorageType::kSerialFlash, 4096, ""}};
  simulator::usb::UsbBootLoader device({}, std::make_shared<simulator::BootLoader>(options));
  // Each piece begins with its length; one of none reads instead.
  for (std::size_t position = 0; position < size;) {
    const std::size_t length = std::min<std::size_t>(data[position], size - position - 1);
    ++position;
    if (length > 0) {
      static_cast<void>(device.Send(simulator::usb::kStorageOut, {data + position, length}));
      position += length;
      continue;
    }
    constexpr std::size_t kPiece = 512;
    const auto answer = device.Receive(simulator::usb::kStorageIn, kPiece, {});
    if (answer && answer->data.size() > kPiece) {
      std::abort();
    }
  }
  return 0;
}
