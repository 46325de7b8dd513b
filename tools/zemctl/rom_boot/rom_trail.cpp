#include "tools/zemctl/rom_boot/rom_trail.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zemctl {
namespace {

bool HasAt(const std::vector<std::uint8_t>& bytes, std::size_t offset, std::string_view text) {
  return bytes.size() >= offset + text.size() &&
         std::memcmp(bytes.data() + offset, text.data(), text.size()) == 0;
}

std::string Of(std::uint64_t part, std::uint64_t whole) {
  return std::to_string(part) + " of " + std::to_string(whole);
}

}  // namespace

const char* NameOf(RomKind kind) {
  return kind == RomKind::kBootLoader ? "boot loader" : "ZEM storage";
}

std::string RomVolume::Signature() const {
  std::string text;
  for (std::size_t index = 4; kind == RomKind::kBootLoader && index < identity.size(); ++index) {
    if (identity[index] < 0x20 || identity[index] > 0x7E) {
      break;
    }
    text += static_cast<char>(identity[index]);
  }
  return text;
}

std::string RomVolume::Words() const {
  const std::string signature = Signature();
  return NameOf(kind) + (signature.empty() ? "" : " " + signature);
}

std::optional<RomVolume> AnsweredBy(const ScsiCommand& command) {
  if (command.code() != zem::SubCommand::kIdentify || command.hasFailed()) {
    return std::nullopt;
  }
  if (HasAt(command.data, 0, "\xAA\x55")) {
    return RomVolume{command.drive, RomKind::kBootLoader, command.data};
  }
  if (HasAt(command.data, 9, "ZEM")) {
    return RomVolume{command.drive, RomKind::kZemStorage, command.data};
  }
  return std::nullopt;
}

void RomTrail::PlanWrites(const std::string& storage, const BurnPlan& plan) {
  storage_ = storage;
  for (std::size_t write = 0; write < plan.size(); ++write) {
    writes_.push_back({plan[write].what, plan[write].erases});
    for (const PlannedCommand& command : CommandsOf(std::span(&plan[write], 1))) {
      pieces_.push_back({write, command.address, command.sectors * kSectorSize});
      plannedBytes_ += pieces_.back().bytes;
    }
  }
}

void RomTrail::OnCommand(const ScsiCommand& command) {
  if (command.hasFailed()) {
    isGone_ =
        isGone_ || (volume_ && command.drive == volume_->drive && MeansVolumeGone(command.error));
    return;
  }
  if (std::optional<RomVolume> volume = AnsweredBy(command)) {
    volume_ = std::move(volume);
    hasAnswered_ = true;
    isGone_ = false;
    return;
  }
  switch (command.code()) {
    case zem::SubCommand::kDownload:
      loadedBytes_ += command.length;
      break;
    case zem::SubCommand::kLongJump:
      hasJumped_ = true;
      volume_.reset();
      break;
    case zem::SubCommand::kWriteStorage:
      OnWrite(command);
      break;
    case zem::SubCommand::kResetSystem:
      isReset_ = true;
      codeBytes_ = 0;
      volume_.reset();
      break;
    default:
      break;
  }
}

// Pieces come in the order of the plan, but one that failed may be left out.
void RomTrail::OnWrite(const ScsiCommand& command) {
  for (std::size_t index = nextPiece_; index < pieces_.size(); ++index) {
    Piece& piece = pieces_[index];
    if (piece.address == command.address() && piece.bytes == command.length) {
      piece.isDone = true;
      writtenBytes_ += piece.bytes;
      nextPiece_ = index + 1;
      return;
    }
  }
}

std::string RomTrail::State() const {
  std::string text = PlaceWords();
  const std::string code = CodeWords();
  text += code.empty() ? "" : "; " + code;
  if (!writes_.empty()) {
    text += "; " + StorageWords();
  }
  return text;
}

std::string RomTrail::PlaceWords() const {
  if (isRunning_) {
    return "it runs its firmware";
  }
  if (volume_ && isGone_) {
    return "its volume " + volume_->drive + " is gone";
  }
  if (volume_) {
    return "in ROM boot at " + volume_->drive + " (" + volume_->Words() + ")";
  }
  if (isReset_) {
    return "it was told to restart";
  }
  if (hasJumped_) {
    return "no volume has answered since the loaded code was started";
  }
  return hasEntered_ ? "it was sent into ROM boot, and no volume has answered yet"
                     : "no volume has answered";
}

std::string RomTrail::CodeWords() const {
  if (codeBytes_ == 0 || (loadedBytes_ == 0 && !hasJumped_)) {
    return "";
  }
  // The last sector is filled up.
  const std::string loaded =
      Of(std::min<std::uint64_t>(loadedBytes_, codeBytes_), codeBytes_) + " bytes of it loaded";
  if (hasJumped_) {
    return loadedBytes_ >= codeBytes_ ? "the code was loaded and started"
                                      : "the code was started with " + loaded;
  }
  return "the code was not started, " + loaded;
}

std::string RomTrail::StorageWords() const {
  const auto done = std::count_if(pieces_.begin(), pieces_.end(),
                                  [](const Piece& piece) { return piece.isDone; });
  if (done == 0) {
    return "nothing was erased or written in the storage " + storage_;
  }
  std::string text = "the storage " + storage_ + " holds " +
                     Of(static_cast<std::uint64_t>(done), pieces_.size()) + " pieces (";
  for (std::size_t write = 0; write < writes_.size(); ++write) {
    text += (write == 0 ? "" : ", ") + WriteWords(write);
  }
  return text + ")";
}

std::string RomTrail::WriteWords(std::size_t write) const {
  std::uint64_t bytes = 0;
  std::uint64_t whole = 0;
  for (const Piece& piece : pieces_) {
    if (piece.write == write) {
      whole += piece.bytes;
      bytes += piece.isDone ? piece.bytes : 0;
    }
  }
  if (writes_[write].erases) {
    return bytes == whole ? "erased" : Of(bytes, whole) + " bytes erased";
  }
  if (bytes == 0) {
    return writes_[write].what + " not written";
  }
  return writes_[write].what + (bytes == whole ? " written" : " " + Of(bytes, whole) + " bytes");
}

}  // namespace zemctl
