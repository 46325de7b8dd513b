// What burning a file does to the camera's storage, told from the file alone: which bytes are
// erased and written where, in which order. It is made before anything is sent, so that a malformed
// file is refused in time; afterwards it says what must be read back.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace zemctl {

using Bytes = std::vector<unsigned char>;

// Storage moves in whole sectors, so many bytes at most in one command.
inline constexpr std::uint32_t kSectorSize = 512;
inline constexpr std::uint32_t kMostCommandSectors = 64;
inline constexpr std::uint32_t kPieceSize = kMostCommandSectors * kSectorSize;

// A file that is not what it should be; says why.
class MalformedFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A run of whole sectors that is written, or erased, which is writing 0xFF.
struct PlannedWrite {
  std::string what;            // such as "header block"
  std::uint32_t address = 0;   // of storage
  Bytes bytes;                 // what the file defines; the last sector may go beyond it
  bool erases = false;         // `bytes` are all 0xFF
  std::uint8_t firstFlag = 0;  // flag of its first command; all others have 0

  std::uint32_t sectors() const {
    return static_cast<std::uint32_t>((bytes.size() + kSectorSize - 1) / kSectorSize);
  }
};

using BurnPlan = std::vector<PlannedWrite>;

// One write-storage command of a plan.
struct PlannedCommand {
  std::string what;
  std::uint32_t address;
  std::uint32_t sectors;
  std::uint8_t flag;
};
std::vector<PlannedCommand> CommandsOf(std::span<const PlannedWrite> plan);

// What storage holds after a plan. A byte that a later write covers, or that no file defines, is
// not `defined`.
struct Expectation {
  std::uint32_t address;
  Bytes bytes;
  std::vector<bool> defined;  // one a byte
};
std::vector<Expectation> ExpectationsOf(const BurnPlan& plan);

// ---- The plan of each way of burning. All throw MalformedFile. ----

// An image with an 18-byte header, a 4,096-byte header block and a payload, from `address` on
// (ZEMROMAPI_BurnFw).
BurnPlan PlanImage(const Bytes& file, std::uint32_t address);

// A package that goes to address 0 as it is (ZEMROMAPI_BurnPcCamFw).
BurnPlan PlanPackage(const Bytes& file);

// A package with a header block, which goes to address 0 last (ZEMROMAPI_BurnPcCamFwPnsV2).
BurnPlan PlanPackageV2(const Bytes& file);

// A Linux package: an 8,192-byte header and a body (ZEMROMAPI_UpdateLinuxFwPkg). Without an address
// for the body the header's own holds.
BurnPlan PlanLinux(const Bytes& file, std::uint32_t headerAddress,
                   std::optional<std::uint32_t> bodyAddress);

// Any file, as it is (ZEMROMAPI_PartialUpdate), or with its first 4,096 bytes last
// (ZEMROMAPI_PartialUpdateWithHeader).
BurnPlan PlanPartial(const Bytes& file, std::uint32_t address);
BurnPlan PlanPartialWithHeader(const Bytes& file, std::uint32_t address);

// 0xFF from `address` on (ZEMROMAPI_Erase).
BurnPlan PlanErase(std::uint32_t address, std::uint32_t size);

// ---- Files that are not burned ----

// Bytes of a code image that go to the load buffer, without its header if it has one.
std::uint32_t CodeSize(const Bytes& file);

// The two sections of a firmware package, as ZEMROMAPI_DispackZemPcCamFw splits it.
struct PackageSection {
  std::string file;           // that it is written to
  std::uint32_t offset;       // of its header block in the package
  std::uint32_t payloadSize;  // of what follows the header block
};
std::vector<PackageSection> SectionsOf(const Bytes& package);

}  // namespace zemctl
