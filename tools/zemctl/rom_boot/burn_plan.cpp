#include "tools/zemctl/rom_boot/burn_plan.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <string_view>

#include "platform/bytes.h"

namespace zemctl {
namespace {

using zem::LoadLe16;
using zem::LoadLe32;
using zem::StoreLe32;

constexpr std::uint32_t kBlockSize = 4096;  // of a header block
constexpr std::uint32_t kImageHeaderSize = 18;
constexpr std::uint32_t kLinuxHeaderSize = 8192;
constexpr std::uint64_t kAddressEnd = 1ULL << 32;
constexpr unsigned char kErased = 0xFF;

std::string Number(std::uint64_t number) { return std::to_string(number); }

void Need(const Bytes& file, std::uint64_t size, const char* forWhat) {
  if (file.size() < size) {
    throw MalformedFile("has " + Number(file.size()) + " bytes, too few for " + forWhat + " (" +
                        Number(size) + ")");
  }
}

void NeedNotEmpty(const Bytes& file) {
  if (file.empty()) {
    throw MalformedFile("is empty");
  }
}

// Part of the file, which must lie inside it.
Bytes Part(const Bytes& file, std::uint64_t offset, std::uint64_t size, const char* what) {
  if (offset > file.size() || size > file.size() - offset) {
    throw MalformedFile("says that its " + std::string(what) + " of " + Number(size) +
                        " bytes begins at " + Number(offset) + ", but it ends at " +
                        Number(file.size()));
  }
  const auto begin = file.begin() + static_cast<std::ptrdiff_t>(offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

PlannedWrite Write(std::string what, std::uint64_t address, Bytes bytes) {
  PlannedWrite write = {std::move(what), static_cast<std::uint32_t>(address), std::move(bytes)};
  if (address + std::uint64_t{write.sectors()} * kSectorSize > kAddressEnd) {
    throw MalformedFile("does not fit behind address " + Number(address));
  }
  return write;
}

PlannedWrite Erase(std::uint64_t address, std::uint32_t size) {
  PlannedWrite write = Write("erase", address, Bytes(size, kErased));
  write.erases = true;
  return write;
}

struct PackageData {
  std::uint64_t offset;
  std::uint32_t size;
};

// Where the data of a package lies, as its bytes 10 to 17 say.
PackageData FindPackageData(const Bytes& file) {
  Need(file, kImageHeaderSize, "the header of a package");
  const PackageData data = {10 + std::uint64_t{LoadLe32(&file[10])}, LoadLe32(&file[14])};
  if (data.size == 0) {
    throw MalformedFile("says that it holds no data");
  }
  static_cast<void>(Part(file, data.offset, data.size, "data"));
  return data;
}

}  // namespace

std::vector<PlannedCommand> CommandsOf(std::span<const PlannedWrite> plan) {
  std::vector<PlannedCommand> commands;
  for (const PlannedWrite& write : plan) {
    std::uint32_t address = write.address;
    std::uint8_t flag = write.firstFlag;
    for (std::uint32_t left = write.sectors(); left > 0;) {
      const std::uint32_t sectors = std::min(left, kMostCommandSectors);
      commands.push_back({write.what, address, sectors, flag});
      address += sectors * kSectorSize;
      flag = 0;
      left -= sectors;
    }
  }
  return commands;
}

std::vector<Expectation> ExpectationsOf(const BurnPlan& plan) {
  std::vector<Expectation> expectations;
  for (const PlannedWrite& write : plan) {
    const std::uint64_t begin = write.address;
    const std::uint64_t end = begin + std::uint64_t{write.sectors()} * kSectorSize;
    for (Expectation& earlier : expectations) {
      const std::uint64_t from = std::max<std::uint64_t>(begin, earlier.address);
      const std::uint64_t to = std::min(end, earlier.address + earlier.bytes.size());
      for (std::uint64_t at = from; at < to; ++at) {
        earlier.defined[at - earlier.address] = false;
      }
    }
    expectations.push_back(
        {write.address, write.bytes, std::vector<bool>(write.bytes.size(), true)});
  }
  std::erase_if(expectations, [](const Expectation& expectation) {
    return std::find(expectation.defined.begin(), expectation.defined.end(), true) ==
           expectation.defined.end();
  });
  return expectations;
}

BurnPlan PlanImage(const Bytes& file, std::uint32_t address) {
  Need(file, kImageHeaderSize + kBlockSize, "the header of an image and its header block");
  const std::string_view magic(reinterpret_cast<const char*>(file.data()), 8);
  if (magic != "VSN_V2BC" && magic != "VSN_V2FW") {
    throw MalformedFile("begins neither with VSN_V2BC nor with VSN_V2FW");
  }
  if (LoadLe16(&file[8]) != 1) {
    throw MalformedFile("lacks the marker 1 of an image header");
  }
  return {Erase(address, kBlockSize),
          Write("payload", std::uint64_t{address} + kBlockSize,
                Part(file, kImageHeaderSize + kBlockSize, LoadLe32(&file[14]), "payload")),
          Write("header block", address, Part(file, kImageHeaderSize, kBlockSize, "header block"))};
}

BurnPlan PlanPackage(const Bytes& file) {
  const PackageData data = FindPackageData(file);
  PlannedWrite write = Write("data", 0, Part(file, data.offset, data.size, "data"));
  write.firstFlag = 1;
  return {write};
}

BurnPlan PlanPackageV2(const Bytes& file) {
  const PackageData data = FindPackageData(file);
  if (data.size < kBlockSize) {
    throw MalformedFile("says that its data has " + Number(data.size) +
                        " bytes, too few for a header block (4096)");
  }
  return {Erase(0, kBlockSize),
          Write("payload", kBlockSize,
                Part(file, data.offset + kBlockSize, data.size - kBlockSize, "payload")),
          Write("header block", 0, Part(file, data.offset, kBlockSize, "header block"))};
}

BurnPlan PlanLinux(const Bytes& file, std::uint32_t headerAddress,
                   std::optional<std::uint32_t> bodyAddress) {
  Need(file, kSectorSize, "the beginning of a Linux package");
  const std::uint32_t shift = LoadLe32(&file[8]);
  if (shift >= 32) {
    throw MalformedFile("gives addresses in units of 2 to the power of " + Number(shift));
  }
  const std::uint64_t unit = 1ULL << shift;
  const std::uint64_t body =
      bodyAddress ? *bodyAddress : std::uint64_t{LoadLe32(&file[16])} << shift;
  if (body % unit != 0) {
    throw MalformedFile("can only say of a body that it begins at a multiple of " + Number(unit));
  }
  // The header comes to say where the body is.
  Bytes patched = file;
  StoreLe32(&patched[16], static_cast<std::uint32_t>(body >> shift));
  BurnPlan plan = {Erase(headerAddress, kLinuxHeaderSize)};
  if (file.size() <= kBlockSize) {
    plan.push_back(Write("package", headerAddress, std::move(patched)));
    return plan;
  }
  Need(file, kLinuxHeaderSize, "the header of a Linux package");
  const std::uint64_t bodySize = file.size() - kLinuxHeaderSize;
  // Where a body would begin is nothing to look at when there is none.
  if (bodySize > 0) {
    if (body < std::uint64_t{headerAddress} + kLinuxHeaderSize && headerAddress < body + bodySize) {
      throw MalformedFile("would have its body overwritten by its header");
    }
    plan.push_back(Write("body", body, Part(file, kLinuxHeaderSize, bodySize, "body")));
  }
  plan.push_back(Write("header", headerAddress, Part(patched, 0, kLinuxHeaderSize, "header")));
  return plan;
}

BurnPlan PlanPartial(const Bytes& file, std::uint32_t address) {
  NeedNotEmpty(file);
  return {Write("file", address, file)};
}

BurnPlan PlanPartialWithHeader(const Bytes& file, std::uint32_t address) {
  NeedNotEmpty(file);
  BurnPlan plan = {Erase(address, kBlockSize)};
  if (file.size() <= kBlockSize) {
    plan.push_back(Write("file", address, file));
    return plan;
  }
  plan.push_back(Write("body", std::uint64_t{address} + kBlockSize,
                       Part(file, kBlockSize, file.size() - kBlockSize, "body")));
  plan.push_back(Write("header block", address, Part(file, 0, kBlockSize, "header block")));
  return plan;
}

BurnPlan PlanErase(std::uint32_t address, std::uint32_t size) { return {Erase(address, size)}; }

std::uint32_t CodeSize(const Bytes& file) {
  Need(file, kImageHeaderSize, "the header of a code image");
  const bool hasHeader = LoadLe16(&file[8]) == 1;
  const std::uint64_t size = file.size() - (hasHeader ? kImageHeaderSize : 0);
  if (size == 0) {
    throw MalformedFile("holds a header and no code");
  }
  if (size > std::numeric_limits<std::int32_t>::max()) {
    throw MalformedFile("is too large for code");
  }
  return static_cast<std::uint32_t>(size);
}

std::vector<PackageSection> SectionsOf(const Bytes& package) {
  Need(package, kImageHeaderSize + kBlockSize, "the header of a package and its boot code");
  const std::uint32_t shift = LoadLe32(&package[kImageHeaderSize + 8]);
  const std::uint64_t count = LoadLe32(&package[kImageHeaderSize + 12]);
  if (shift >= 32) {
    throw MalformedFile("gives the place of its firmware in units of 2 to the power of " +
                        Number(shift));
  }
  std::vector<PackageSection> sections;
  const std::array<std::pair<const char*, std::uint64_t>, 2> places = {
      {{"VSN_V3BC", kImageHeaderSize}, {"VSN_V3FW", kImageHeaderSize + (count << shift)}}};
  for (const auto& [name, offset] : places) {
    static_cast<void>(Part(package, offset, kBlockSize, "section"));
    const std::uint32_t payload = LoadLe32(&package[static_cast<std::size_t>(offset) + 20]);
    static_cast<void>(Part(package, offset + kBlockSize, payload, "section"));
    sections.push_back({name, static_cast<std::uint32_t>(offset), payload});
  }
  return sections;
}

}  // namespace zemctl
