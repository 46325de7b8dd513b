#include "romboot/firmware_package.h"

#include "platform/bytes.h"

namespace zem {
namespace {

// Part of a file by fields that may say anything.
std::optional<FileBytes> Part(FileBytes file, std::uint64_t offset, std::uint64_t length) {
  if (offset > file.size() || length > file.size() - offset) {
    return std::nullopt;
  }
  return file.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(length));
}

std::optional<std::uint32_t> Field(FileBytes file, std::size_t offset) {
  const auto bytes = Part(file, offset, sizeof(std::uint32_t));
  return bytes ? std::optional(LoadLe32(bytes->data())) : std::nullopt;
}

// A number that is given as a count of units of 1 << shift.
std::optional<std::uint64_t> Shifted(std::uint32_t count, std::uint32_t shift) {
  constexpr std::uint32_t kFieldBits = 32;
  if (shift >= kFieldBits) {
    return std::nullopt;
  }
  return std::uint64_t{count} << shift;
}

std::optional<Section> SplitSection(std::optional<FileBytes> bytes) {
  if (!bytes || bytes->size() < kHeaderBlockSize) {
    return std::nullopt;
  }
  return Section{bytes->first(kHeaderBlockSize), bytes->subspan(kHeaderBlockSize)};
}

// The section at `offset` of a package, whose own header says how long it is.
std::optional<PackagedSection> ParsePackagedSection(FileBytes file, std::uint64_t offset) {
  const auto header = Part(file, offset, kHeaderBlockSize);
  if (!header) {
    return std::nullopt;
  }
  PackagedSection section;
  section.payloadLength = LoadLe32(&(*header)[20]);
  section.value = LoadLe32(&(*header)[24]);
  const auto bytes = Part(file, offset, kHeaderBlockSize + std::uint64_t{section.payloadLength});
  if (!bytes) {
    return std::nullopt;
  }
  section.bytes = *bytes;
  return section;
}

}  // namespace

std::optional<FileBytes> ParseCodeImage(FileBytes file) {
  if (file.size() < kImageHeaderSize) {
    return std::nullopt;
  }
  const bool hasHeader = file[8] == 1 && file[9] == 0;
  return hasHeader ? file.subspan(kImageHeaderSize) : file;
}

std::optional<Section> ParseImage(FileBytes file) {
  const auto payloadLength = Field(file, 14);
  if (!payloadLength) {
    return std::nullopt;
  }
  return SplitSection(
      Part(file, kImageHeaderSize, kHeaderBlockSize + std::uint64_t{*payloadLength}));
}

std::optional<FileBytes> ParsePcCamPackage(FileBytes file) {
  constexpr std::size_t kOffsetField = 10;
  const auto offset = Field(file, kOffsetField);
  const auto length = Field(file, 14);
  if (!offset || !length) {
    return std::nullopt;
  }
  return Part(file, kOffsetField + std::uint64_t{*offset}, *length);
}

std::optional<Section> ParsePcCamPnsV2Package(FileBytes file) {
  return SplitSection(ParsePcCamPackage(file));
}

std::optional<SplitPackage> ParseSplitPackage(FileBytes file) {
  const auto bootCode = ParsePackagedSection(file, kImageHeaderSize);
  if (!bootCode) {
    return std::nullopt;
  }
  const auto distance = Shifted(LoadLe32(&bootCode->bytes[12]), LoadLe32(&bootCode->bytes[8]));
  const auto firmware =
      distance ? ParsePackagedSection(file, kImageHeaderSize + *distance) : std::nullopt;
  return firmware ? std::optional(SplitPackage{*bootCode, *firmware}) : std::nullopt;
}

std::optional<LinuxPackage> ParseLinuxPackage(FileBytes file) {
  constexpr std::size_t kLongestWithoutBody = 4096;
  const auto shift = Field(file, 8);
  const auto count = Field(file, kLinuxBodyField);
  const auto bodyAddress = shift && count ? Shifted(*count, *shift) : std::nullopt;
  if (!bodyAddress) {
    return std::nullopt;
  }
  if (file.size() <= kLongestWithoutBody) {
    return LinuxPackage{*shift, *bodyAddress, file, file.last(0)};
  }
  if (file.size() < kLinuxHeaderSize) {
    return std::nullopt;
  }
  return LinuxPackage{*shift, *bodyAddress, file.first(kLinuxHeaderSize),
                      file.subspan(kLinuxHeaderSize)};
}

}  // namespace zem
