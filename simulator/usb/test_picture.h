// The picture that a simulated camera streams: colour bars, a mark that moves, and the number of
// the frame, so that a living camera can be told from a still picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zem::simulator::usb {

// A frame in YUY2, two bytes a pixel. `width` is even. The eight bars take the whole height; the
// mark is a white square of an eighth of the height that goes from the left to the right by 4
// pixels a frame; the number stands in the first row: 32 fields of 4 pixels, one for each bit from
// the highest, white for 1 and black for 0.
std::vector<std::uint8_t> DrawTestPicture(std::size_t width, std::size_t height,
                                          std::uint32_t frame);

}  // namespace zem::simulator::usb
