#include "encoding/h264_default_list.h"

#include <iterator>

namespace zem {
namespace {

// What differs between the formats; a format's frame index is its place.
struct DefaultFormat {
  std::uint16_t type;
  std::uint16_t width;
  std::uint16_t height;
  std::uint16_t subWidth;
  std::uint16_t subHeight;
  std::uint32_t maxBitRate;
  std::uint32_t minBitRate;
};

constexpr DefaultFormat kDefaultFormats[] = {
    // type, size, size of the second picture, highest and lowest bit rate
    {2, 160, 90, 160, 90, 2500, 100},     {2, 160, 120, 160, 120, 2500, 100},
    {2, 320, 180, 320, 180, 2500, 100},   {2, 320, 240, 320, 240, 2500, 100},
    {2, 640, 360, 320, 180, 2500, 100},   {2, 640, 480, 320, 240, 2500, 100},
    {2, 1280, 720, 320, 180, 2500, 100},  {2, 1920, 1080, 320, 180, 4000, 100},
    {1, 160, 120, 176, 144, 500, 25},     {1, 160, 90, 384, 216, 2500, 100},
    {1, 320, 180, 384, 216, 2500, 100},   {1, 320, 240, 320, 240, 2500, 100},
    {1, 352, 288, 320, 240, 2500, 100},   {1, 432, 244, 320, 240, 2500, 100},  // 244 is deliberate
    {1, 640, 360, 384, 216, 2500, 100},   {1, 640, 480, 320, 240, 2500, 100},
    {1, 768, 480, 384, 216, 2500, 100},   {1, 800, 448, 320, 240, 2500, 100},
    {1, 800, 600, 320, 240, 2500, 100},   {1, 960, 544, 384, 216, 2500, 100},
    {1, 960, 720, 320, 240, 2500, 100},   {1, 1024, 576, 320, 240, 2500, 100},
    {1, 1280, 720, 384, 216, 2500, 100},  {1, 1600, 1200, 320, 240, 2500, 100},
    {1, 1920, 1080, 384, 216, 2500, 100},
};

constexpr std::uint16_t kMaxFps = 30;
constexpr std::uint16_t kMinFps = 5;

// Deliberate: four bytes more than header and records take. Callers depend on it.
constexpr std::uint16_t kTotalLength =
    sizeof(H264FrameList) + std::size(kDefaultFormats) * sizeof(H264FrameInfo) + 4;
static_assert(std::size(kDefaultFormats) == 25 && kTotalLength == 808);

H264FrameInfo DefaultRecord(std::size_t index) {
  const DefaultFormat& format = kDefaultFormats[index];
  H264FrameInfo record = {};
  record.wLength = sizeof(record);
  record.wType = format.type;
  record.wFrameIndex = static_cast<std::uint16_t>(index);
  // Deliberately the opposite of the mark in a list that comes from the camera.
  record.bListMark = index + 1 == std::size(kDefaultFormats) ? 1 : 0;
  record.wWidth = format.width;
  record.wHeight = format.height;
  record.wSubWidth = format.subWidth;
  record.wSubHeight = format.subHeight;
  record.dwMaxBitRate = format.maxBitRate;
  record.dwMinBitRate = format.minBitRate;
  record.wMaxFps = kMaxFps;
  record.wMinFps = kMinFps;
  return record;
}

}  // namespace

FrameListPtr MakeDefaultFrameList() {
  FrameListPtr list = AllocateFrameList(kTotalLength);
  if (!list) {
    return list;
  }
  list->wTotalLength = kTotalLength;
  for (std::size_t index = 0; index < std::size(kDefaultFormats); ++index) {
    AppendRecord(*list, DefaultRecord(index));
  }
  return list;
}

}  // namespace zem
