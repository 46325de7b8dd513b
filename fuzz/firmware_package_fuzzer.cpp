// Firmware files of any content: what the parsers hand out lies inside the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "romboot/firmware_package.h"

namespace {

using zem::FileBytes;

void Require(bool right) {
  if (!right) {
    std::abort();
  }
}

void RequireInside(FileBytes part, FileBytes file) {
  Require(part.empty() ||
          (part.data() >= file.data() && part.data() + part.size() <= file.data() + file.size()));
}

void RequireSection(const zem::Section& section, FileBytes file) {
  Require(section.header.size() == zem::kHeaderBlockSize);
  Require(section.size() <= file.size());
  RequireInside(section.header, file);
  RequireInside(section.payload, file);
}

void RequirePackaged(const zem::PackagedSection& section, FileBytes file) {
  Require(section.bytes.size() == zem::kHeaderBlockSize + section.payloadLength);
  RequireInside(section.bytes, file);
}

}  // namespace

// The fields that decide stand in a file's first bytes. So the first two bytes of the input say how
// long the file is, and zeros follow the others.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) {
    return 0;
  }
  const std::size_t length = static_cast<std::size_t>(data[0] | (data[1] << 8));
  // Of its exact length, for the sanitizer.
  auto* const memory = static_cast<std::uint8_t*>(std::calloc(std::max<std::size_t>(length, 1), 1));
  Require(memory != nullptr);
  std::copy_n(data + 2, std::min(size - 2, length), memory);
  const FileBytes file(memory, length);

  if (const auto code = zem::ParseCodeImage(file)) {
    RequireInside(*code, file);
  }
  if (const auto image = zem::ParseImage(file)) {
    RequireSection(*image, file);
  }
  if (const auto package = zem::ParsePcCamPackage(file)) {
    RequireInside(*package, file);
  }
  if (const auto package = zem::ParsePcCamPnsV2Package(file)) {
    RequireSection(*package, file);
  }
  if (const auto package = zem::ParseSplitPackage(file)) {
    RequirePackaged(package->bootCode, file);
    RequirePackaged(package->firmware, file);
  }
  if (const auto package = zem::ParseLinuxPackage(file)) {
    RequireInside(package->header, file);
    RequireInside(package->body, file);
    Require(package->shift < 32);
    Require(package->header.size() + package->body.size() == file.size());
  }
  std::free(memory);
  return 0;
}
