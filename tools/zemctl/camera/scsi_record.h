// What passed between the library and a camera in ROM boot: each SCSI command as the system carried
// it out. The record also keeps the gate before the volumes, which ends what would go on in vain.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "romboot/vendor_commands.h"

namespace zemctl {

struct ScsiCommand {
  std::uint64_t milliseconds = 0;  // since the record began
  std::string drive;               // such as "F:"
  std::vector<std::uint8_t> cdb;
  bool isIn = false;
  std::uint32_t length = 0;        // bytes sent, or asked for
  std::vector<std::uint8_t> data;  // sent, or read
  std::uint32_t error = 0;         // the system's; 0: the device answered
  std::uint8_t status = 0;         // what it answered: its SCSI status, 0 when it did the command

  bool hasFailed() const { return error != 0 || status != 0; }

  // The code of a vendor command; 0 for any other.
  zem::SubCommand code() const;
  // The storage address of a read or a write, and the bytes that it moves.
  std::uint32_t address() const;
};

// How an attempt to open a volume ended.
struct VolumeOpening {
  std::uint32_t error = 0;  // the system's; 0: it is open
  std::string path = {};    // of its device file, where volumes have one

  bool isOpen() const { return error == 0; }
};

// The error of a volume that is not there.
inline constexpr std::uint32_t kNoSuchVolume = 2;

// "write storage", "inquiry"; empty for a command that has no name.
std::string NameOfCdb(const std::vector<std::uint8_t>& cdb);

// "write storage 0x00001000 (32768 bytes)", "identify (16 bytes)"
std::string NameOf(const ScsiCommand& command);

// "error 1117", "SCSI status 2", "4 of 16 bytes came"
std::string FailureOf(const ScsiCommand& command);

// Whether the system says with this error that there is no such device any more.
bool MeansVolumeGone(std::uint32_t error);

// The first command that was lost: it failed, or brought less than was asked for, and no later one
// did the same after all. The library does not report each of them. Searches for volumes
// (inquiries, identifications of those that are none) and what a selection answers do not count.
std::optional<ScsiCommand> FindScsiLoss(const std::vector<ScsiCommand>& commands);

// The commands of one call of the library after another. Used by one thread.
class ScsiRecord {
 public:
  using Clock = std::function<std::uint64_t()>;  // milliseconds
  using Observer = std::function<void(const ScsiCommand&)>;

  // `stopRequested` tells whether the person at the terminal wants an end.
  ScsiRecord(Clock clock, std::function<bool()> stopRequested)
      : clock_(std::move(clock)), start_(clock_()), stopRequested_(std::move(stopRequested)) {}

  // Forgets the commands of the call before.
  void BeginCall() { commands_.clear(); }

  // `began`: when the command was sent, by Now(). Sets the time.
  void Add(ScsiCommand command, std::uint64_t began);

  // Those of the present or the last call. Bytes that were sent are not kept.
  const std::vector<ScsiCommand>& commands() const { return commands_; }

  // Sees every command as it happens, with all its bytes.
  void AddObserver(Observer observer) { observers_.push_back(std::move(observer)); }

  // The library has tried to open a volume.
  using OpeningObserver =
      std::function<void(const std::string& drive, const VolumeOpening& opening)>;
  void NoteOpening(const std::string& drive, const VolumeOpening& opening);
  void AddOpeningObserver(OpeningObserver observer) {
    openingObservers_.push_back(std::move(observer));
  }

  // The drives that are there but could not be opened when that was tried last.
  const std::map<std::string, VolumeOpening>& refusals() const { return refusals_; }

  std::uint64_t Now() const { return clock_() - start_; }

  // ---- The gate ----

  // Only this drive is opened; "" for any.
  void OpenOnly(std::string drive) { only_ = std::move(drive); }
  // These drives are not opened.
  void Exclude(std::set<std::string> drives) { excluded_ = std::move(drives); }
  // From then on (by Now()) nothing is opened, sent or waited for; nothing for no end.
  void SetEnd(std::optional<std::uint64_t> end) { end_ = end; }

  // Whether the library may still open volumes, send commands and wait.
  bool isOpen() const { return !stopRequested_() && !(end_ && Now() >= *end_); }
  bool wasStopped() const { return stopRequested_(); }
  bool MayOpen(const std::string& drive) const;
  // Also not when the device has failed everything for seconds.
  bool MaySend() const;
  // What has failed before does not count: a volume was opened.
  void ForgetSilence() { failingSince_.reset(); }

 private:
  Clock clock_;
  std::uint64_t start_;
  std::function<bool()> stopRequested_;
  std::vector<ScsiCommand> commands_;
  std::vector<Observer> observers_;
  std::vector<OpeningObserver> openingObservers_;
  std::map<std::string, VolumeOpening> refusals_;
  std::string only_;
  std::set<std::string> excluded_;
  std::optional<std::uint64_t> end_;
  std::optional<std::uint64_t> failingSince_;
};

}  // namespace zemctl
