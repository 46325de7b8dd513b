#include "tools/zemctl/camera/scsi_record.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/bytes.h"

namespace zemctl {
namespace {

// For so long a device may fail every command before no more are sent.
constexpr std::uint64_t kLongestVolumeSilenceMilliseconds = 2800;

using zem::SubCommand;

struct CommandName {
  SubCommand code;
  const char* name;
};
constexpr auto kCommandNames = std::to_array<CommandName>({
    {SubCommand::kIdentify, "identify"},
    {SubCommand::kDownload, "download"},
    {SubCommand::kLongJump, "jump"},
    {SubCommand::kReadRegister, "read register"},
    {SubCommand::kWriteRegister, "write register"},
    {SubCommand::kSelectStorage, "select storage"},
    {SubCommand::kReadStorage, "read storage"},
    {SubCommand::kWriteStorage, "write storage"},
    {SubCommand::kSetFwDownloadAddress, "set download address"},
    {SubCommand::kSetAddressDivider, "set address divider"},
    {SubCommand::kResetSystem, "reset"},
    {SubCommand::kMakeEnhancedArea, "make enhanced area"},
});

constexpr SubCommand kNoVendorCommand = {};

SubCommand CodeOf(const std::vector<std::uint8_t>& cdb) {
  const bool isVendor = cdb.size() == 16 && cdb[0] == 0xFA && cdb[1] == 0x55 && cdb[2] == 0x66;
  return isVendor ? static_cast<SubCommand>(cdb[3]) : kNoVendorCommand;
}

bool ReachesStorage(const ScsiCommand& command) {
  return command.code() == SubCommand::kReadStorage || command.code() == SubCommand::kWriteStorage;
}

bool IsShort(const ScsiCommand& command) {
  return command.isIn && command.code() != SubCommand::kSelectStorage &&
         command.data.size() < command.length;
}

// Whether `later` does what `lost` should have done: the same, or a write that covers it.
bool MakesGood(const ScsiCommand& later, const ScsiCommand& lost) {
  if (later.hasFailed() || IsShort(later) || later.drive != lost.drive) {
    return false;
  }
  if (lost.code() == SubCommand::kWriteStorage && later.code() == SubCommand::kWriteStorage) {
    return later.address() <= lost.address() && std::uint64_t{lost.address()} + lost.length <=
                                                    std::uint64_t{later.address()} + later.length;
  }
  return later.cdb == lost.cdb;
}

}  // namespace

SubCommand ScsiCommand::code() const { return CodeOf(cdb); }

std::uint32_t ScsiCommand::address() const { return zem::LoadBe32(&cdb[4]); }

std::string NameOfCdb(const std::vector<std::uint8_t>& cdb) {
  constexpr std::uint8_t kInquiry = 0x12;
  if (CodeOf(cdb) == kNoVendorCommand) {
    return !cdb.empty() && cdb[0] == kInquiry ? "inquiry" : "";
  }
  const auto* const found =
      std::find_if(kCommandNames.begin(), kCommandNames.end(),
                   [&](const CommandName& each) { return each.code == CodeOf(cdb); });
  return found != kCommandNames.end() ? found->name : "";
}

std::string NameOf(const ScsiCommand& command) {
  std::string text = NameOfCdb(command.cdb);
  text = text.empty() ? "command" : text;
  if (ReachesStorage(command)) {
    std::array<char, 16> address = {};
    std::snprintf(address.data(), address.size(), " 0x%08X",
                  static_cast<unsigned>(command.address()));
    text += address.data();
  }
  return command.length == 0 ? text : text + " (" + std::to_string(command.length) + " bytes)";
}

std::string FailureOf(const ScsiCommand& command) {
  if (command.error != 0) {
    return (MeansVolumeGone(command.error) ? "the volume is gone, error " : "error ") +
           std::to_string(command.error);
  }
  if (command.status != 0) {
    return "SCSI status " + std::to_string(command.status);
  }
  return std::to_string(command.data.size()) + " of " + std::to_string(command.length) +
         " bytes came";
}

std::optional<ScsiCommand> FindScsiLoss(const std::vector<ScsiCommand>& commands) {
  for (auto lost = commands.begin(); lost != commands.end(); ++lost) {
    const bool isSearch = lost->code() == SubCommand::kIdentify || lost->cdb.size() < 16;
    if (isSearch || !(lost->hasFailed() || IsShort(*lost))) {
      continue;
    }
    if (std::none_of(lost + 1, commands.end(),
                     [&](const ScsiCommand& later) { return MakesGood(later, *lost); })) {
      return *lost;
    }
  }
  return std::nullopt;
}

bool MeansVolumeGone(std::uint32_t error) {
  // No such volume, no longer there, not connected, removed.
  constexpr std::array<std::uint32_t, 6> kGone = {2, 55, 433, 1006, 1167, 1617};
  return std::find(kGone.begin(), kGone.end(), error) != kGone.end();
}

void ScsiRecord::Add(ScsiCommand command, std::uint64_t began) {
  command.milliseconds = Now();
  if (!command.hasFailed()) {
    failingSince_.reset();
  } else if (!failingSince_) {
    failingSince_ = began;
  }
  for (const Observer& observer : observers_) {
    observer(command);
  }
  if (!command.isIn) {
    command.data = {};
  }
  commands_.push_back(std::move(command));
}

void ScsiRecord::NoteOpening(const std::string& drive, const VolumeOpening& opening) {
  refusals_.erase(drive);
  if (!opening.isOpen() && !MeansVolumeGone(opening.error)) {
    refusals_[drive] = opening;
  }
  for (const OpeningObserver& observer : openingObservers_) {
    observer(drive, opening);
  }
}

bool ScsiRecord::MayOpen(const std::string& drive) const {
  return isOpen() && (only_.empty() || drive == only_) && !excluded_.contains(drive);
}

bool ScsiRecord::MaySend() const {
  return isOpen() &&
         !(failingSince_ && Now() - *failingSince_ >= kLongestVolumeSilenceMilliseconds);
}

}  // namespace zemctl
