// The vendor's firmware files, taken apart. Pure functions over a file's bytes: nothing is opened,
// sent or changed here. A file is not trusted: whatever its fields say is checked against its
// length, and a file that does not hold what it promises gives nothing.
//
// Numbers in the files are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zem {

using FileBytes = std::span<const std::uint8_t>;

// The header before the section of an image, and before the sections of a package.
inline constexpr std::size_t kImageHeaderSize = 18;

// The block that stands before a payload, in a file and in storage.
inline constexpr std::uint32_t kHeaderBlockSize = 4096;

// A header block and its payload.
struct Section {
  FileBytes header;
  FileBytes payload;

  std::size_t size() const { return header.size() + payload.size(); }
};

// The code of a loader image (MiniUVC, updater), without the image header if the file has one.
// Nothing for a file too short for such a header.
std::optional<FileBytes> ParseCodeImage(FileBytes file);

// The section of an image: 18 bytes with the payload's length at offset 14, and the section. The
// magic is not looked at.
std::optional<Section> ParseImage(FileBytes file);

// The data of a package that says where it is: at offset 10 the data's own offset, counted from
// there; at offset 14 its length.
std::optional<FileBytes> ParsePcCamPackage(FileBytes file);

// The same with a section for data.
std::optional<Section> ParsePcCamPnsV2Package(FileBytes file);

// A section of a package of two, with the fields that go into its image's header.
struct PackagedSection {
  FileBytes bytes;  // header block and payload
  std::uint32_t payloadLength = 0;
  std::uint32_t value = 0;  // passed on; the vendor knows what it means
};

struct SplitPackage {
  PackagedSection bootCode;
  PackagedSection firmware;
};

// A package of boot code and firmware: an outer header of 18 bytes and the boot code's section, in
// whose header block a shift (offset 8) and a count (offset 12) say where the firmware's section
// is: at 18 + (count << shift).
std::optional<SplitPackage> ParseSplitPackage(FileBytes file);

// A Linux package: a header of 8,192 bytes and the body. A file of at most 4,096 bytes is all
// header.
struct LinuxPackage {
  // Offset 8 of the header, below 32: the body's storage address is counted in units of 1 << shift.
  std::uint32_t shift = 0;
  // The body's storage address as offset 16 of the header gives it. It may be beyond 32 bits.
  std::uint64_t bodyAddress = 0;
  FileBytes header;
  FileBytes body;  // may be empty
};

inline constexpr std::size_t kLinuxHeaderSize = 8192;
inline constexpr std::size_t kLinuxBodyField = 16;

// Deliberate: a file longer than 4,096 bytes has a body, though the header takes 8,192. What lies
// between has none that could be written, and gives nothing.
std::optional<LinuxPackage> ParseLinuxPackage(FileBytes file);

}  // namespace zem
