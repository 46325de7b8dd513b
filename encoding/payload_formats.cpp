#include "encoding/payload_formats.h"

#include <iterator>

namespace zem {
namespace {

// DirectShow's names for the subtypes; the first field is the four-character code.
constexpr GUID kYuy2 = {
    0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr GUID kMjpg = {
    0x47504A4D, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

struct PayloadFormat {
  std::uint16_t width;
  std::uint16_t height;
  GUID subtype;
};

constexpr PayloadFormat kPayloadFormats[] = {
    {640, 480, kYuy2}, {640, 480, kMjpg}, {1280, 720, kMjpg}};

}  // namespace

HRESULT GetPayloadFormat(std::uint16_t index, std::uint16_t* width, std::uint16_t* height,
                         GUID* subtype) {
  const bool known = index < std::size(kPayloadFormats);
  const PayloadFormat format = known ? kPayloadFormats[index] : PayloadFormat{};
  *width = format.width;
  *height = format.height;
  *subtype = format.subtype;
  return known ? S_OK : S_FALSE;
}

}  // namespace zem
