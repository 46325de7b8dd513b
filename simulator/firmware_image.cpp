#include "simulator/firmware_image.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "platform/bytes.h"

namespace zem::simulator {
namespace {

constexpr std::string_view kMark = "ZEMFWIMG";
constexpr std::size_t kVersionAt = 8;
constexpr std::size_t kSumAt = 14;
constexpr std::size_t kLengthAt = 16;
constexpr std::size_t kHeaderLength = 20;

std::uint16_t SumOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint16_t>(std::accumulate(bytes.begin(), bytes.end(), std::uint32_t{0}));
}

}  // namespace

std::optional<FirmwareImage> ReadFirmwareImage(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderLength || !std::equal(kMark.begin(), kMark.end(), bytes.begin())) {
    return std::nullopt;
  }
  const std::uint32_t length = LoadLe32(&bytes[kLengthAt]);
  if (length < kHeaderLength || length > bytes.size()) {
    return std::nullopt;
  }
  FirmwareImage image;
  std::copy_n(&bytes[kVersionAt], image.version.size(), image.version.begin());
  const std::uint16_t sum = SumOf(bytes.subspan(kHeaderLength, length - kHeaderLength));
  image.checkSumRight = sum == LoadLe16(&bytes[kSumAt]);
  return image;
}

std::vector<std::uint8_t> MakeFirmwareImage(const FirmwareVersion& version,
                                            std::span<const std::uint8_t> payload) {
  std::vector<std::uint8_t> image(kHeaderLength + payload.size());
  std::copy(kMark.begin(), kMark.end(), image.begin());
  std::copy(version.begin(), version.end(), image.begin() + kVersionAt);
  StoreLe16(&image[kSumAt], SumOf(payload));
  StoreLe32(&image[kLengthAt], static_cast<std::uint32_t>(image.size()));
  std::copy(payload.begin(), payload.end(), image.begin() + kHeaderLength);
  return image;
}

}  // namespace zem::simulator
