// What a client of USB/IP sends, in pieces of any size: requests first, then commands. What is
// whole is cut off, and what is no message ends the connection.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "simulator/usb/usbip_protocol.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace usb = zem::simulator::usb;
  if (size == 0) {
    return 0;
  }
  const bool imported = (data[0] & 1) != 0;
  const std::size_t piece = data[0] / 2 + 1;
  usb::Reader reader;
  try {
    for (std::size_t position = 1; position < size; position += piece) {
      reader.Feed({data + position, std::min(piece, size - position)});
      if (!imported) {
        while (reader.NextRequest()) {
        }
        continue;
      }
      while (const auto command = reader.NextCommand()) {
        const auto* const submit = std::get_if<usb::SubmitCommand>(&*command);
        if (submit != nullptr && (submit->data.size() != (submit->isIn ? 0 : submit->length) ||
                                  submit->packets.size() > usb::kMostPackets)) {
          std::abort();
        }
      }
    }
  } catch (const usb::ProtocolError&) {
    return 0;
  }
  return 0;
}
