// A camera in ROM boot: found among the volumes, and what every rom command does with it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zemctl {

enum class RomKind : unsigned {
  kBootLoader = 1,
  kZemStorage = 2,
};
const char* NameOf(RomKind kind);

struct RomSelection {
  std::optional<RomKind> kind;  // without one, whichever answers
  unsigned waitSeconds = 0;     // how long to look for it
  bool sendDivider = false;     // also tell the device the storage address divider
};

struct StorageChoice {
  std::string name = "sf";  // see kStorageNames
  unsigned option = 0;      // one byte, of the NANDs and the eMMC
};
inline constexpr std::array<const char*, 5> kStorageNames = {"sf", "dram", "emmc", "spi-nand",
                                                             "parallel-nand"};

// The enhanced area of an eMMC, in numbers whose meaning is the boot code's.
struct EnhancedArea {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
};

using Cdb = std::array<unsigned char, 16>;

// Throws CallFailure, worded for a camera in ROM boot, when `result` is negative.
void CheckRom(const char* function, ZemResult result);

// An open session, ended when it goes out of scope.
class RomSession {
 public:
  // Nothing when no such camera answers at once.
  static std::optional<RomSession> Find(const RomSelection& selection);

  // Throws CallFailure when no such camera answers in time.
  static RomSession Open(const RomSelection& selection);

  RomSession(RomSession&& other) noexcept;
  RomSession& operator=(RomSession&&) = delete;
  ~RomSession();

  void* handle() const { return handle_; }
  RomKind kind() const { return kind_; }

  // All of these throw CallFailure.
  std::array<unsigned char, 16> Identify() const;
  void Select(const StorageChoice& storage) const;
  void MakeEnhancedArea(const EnhancedArea& area) const;
  // Reads the selected storage into `bytes`. Any address, any length.
  void Read(std::uint32_t address, std::span<unsigned char> bytes) const;

 private:
  RomSession(void* handle, RomKind kind) : handle_(handle), kind_(kind) {}

  void* handle_;
  RomKind kind_;
};

// The commands by which these and the burns reach the device, for those who want to see them first.
// SelectCdb throws UsageError for a storage that is none.
inline constexpr Cdb kJumpCdb = {0xFA, 0x55, 0x66, 0x03};
inline constexpr Cdb kResetCdb = {0xFA, 0x55, 0x66, 0x21};
std::vector<Cdb> DownloadCdbs(std::uint32_t codeSize);
Cdb SelectCdb(const StorageChoice& storage);
Cdb ReadCdb(std::uint32_t address, std::uint32_t sectors);
Cdb WriteCdb(const PlannedCommand& command);
Cdb EnhancedAreaCdb(const EnhancedArea& area);

}  // namespace zemctl
