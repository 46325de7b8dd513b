// A camera in ROM boot: found among the volumes, and what every rom command does with it. The
// library is called through it, so that the tool sees each command of each call.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/zemctl/frame/results.h"
#include "tools/zemctl/rom_boot/burn_plan.h"
#include "tools/zemctl/rom_boot/rom_watch.h"

namespace zemctl {

struct RomSelection {
  std::optional<RomKind> kind;  // without one, whichever answers
  unsigned waitSeconds = 0;     // how long to look for it
  bool sendDivider = false;     // also tell the device the storage address divider
  std::string drive;            // such as "F:"; without one there must be no other
};

struct StorageChoice {
  std::string name;     // see kStorageNames
  unsigned option = 0;  // one byte, of the NANDs and the eMMC
};
inline constexpr std::array<const char*, 5> kStorageNames = {"sf", "dram", "emmc", "spi-nand",
                                                             "parallel-nand"};

// The enhanced area of an eMMC, in numbers whose meaning is the boot code's.
struct EnhancedArea {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
};

using Cdb = std::array<unsigned char, 16>;

// The one volume of those found that is meant: the drive, if one was named, or else the only one.
// Nothing when there is none. Throws ToolFailure (kNoCamera) that names the drives when more than
// one answers.
std::optional<RomVolume> Choose(const std::vector<RomVolume>& found, const std::string& drive);

// An open session, ended when it goes out of scope.
class RomSession {
 public:
  // Nothing when no such camera answers at once. The others that answer are left alone from then
  // on. Throws as Choose, before anything but identifications was sent.
  static std::optional<RomSession> Find(RomWatch& watch, const RomSelection& selection);

  // Throws CallFailure when no such camera answers in time.
  static RomSession Open(RomWatch& watch, const RomSelection& selection);

  RomSession(RomSession&& other) noexcept;
  RomSession& operator=(RomSession&&) = delete;
  ~RomSession();

  RomWatch& watch() const { return watch_; }
  const RomVolume& volume() const { return volume_; }
  RomKind kind() const { return volume_.kind; }

  // Calls the library. Throws CallFailure when the result is negative, and when a command was lost
  // although the call reports something else.
  using Function = std::function<ZemResult(void* session)>;
  ZemResult Call(const char* function, const Function& call) const;
  // As Call, for those that judge the outcome by themselves.
  ZemResult Observe(const Function& call) const;
  // Throws CallFailure for a call whose result is bad, or that has lost a command.
  void Judge(const char* function, ZemResult result) const;

  // All of these throw CallFailure.
  void Select(const StorageChoice& storage) const;
  void MakeEnhancedArea(const EnhancedArea& area) const;
  // Reads the selected storage into `bytes`. Any address, any length.
  void Read(std::uint32_t address, std::span<unsigned char> bytes) const;
  // The camera may leave before it has acknowledged the command; false then.
  bool Reset() const;

 private:
  RomSession(RomWatch& watch, void* handle, RomVolume volume)
      : watch_(watch), handle_(handle), volume_(std::move(volume)) {}

  RomWatch& watch_;
  void* handle_;
  RomVolume volume_;
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
Cdb DownloadAddressCdb(std::uint32_t address);

}  // namespace zemctl
