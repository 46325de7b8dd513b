// How far a command has come with a camera in ROM boot, told from what went to it: whatever ends
// the command, the state of the camera can be said.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/scsi_record.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zemctl {

enum class RomKind : unsigned {
  kBootLoader = 1,
  kZemStorage = 2,
};
const char* NameOf(RomKind kind);

// A camera in ROM boot as it identifies itself.
struct RomVolume {
  std::string drive;
  RomKind kind = RomKind::kBootLoader;
  std::vector<std::uint8_t> identity;  // 16 bytes

  // "VSN3": what a boot loader calls itself; empty for others.
  std::string Signature() const;
  // "boot loader VSN3", "ZEM storage"
  std::string Words() const;
};

// The volume that this command has found, if it is an identification that a camera has answered.
std::optional<RomVolume> AnsweredBy(const ScsiCommand& command);

class RomTrail {
 public:
  // What is going to be sent.
  void PlanCode(std::uint32_t bytes) { codeBytes_ = bytes; }
  void PlanWrites(const std::string& storage, const BurnPlan& plan);

  // The camera runs and is going to be sent into ROM boot.
  void OnRunning() { isRunning_ = true; }
  // It was told to go there.
  void OnEntered() {
    isRunning_ = false;
    hasEntered_ = true;
  }
  void OnCommand(const ScsiCommand& command);

  bool hasEntered() const { return hasEntered_; }
  bool hasJumped() const { return hasJumped_; }
  // Whether a camera has been reached at all.
  bool hasBegun() const { return isRunning_ || hasEntered_ || hasAnswered_; }

  // Bytes of the present kind of work, whole sectors.
  std::uint64_t loadedBytes() const { return loadedBytes_; }
  std::uint64_t writtenBytes() const { return writtenBytes_; }
  std::uint64_t plannedBytes() const { return plannedBytes_; }

  // The camera's state: one clause or several, without a full stop.
  std::string State() const;

 private:
  // One run of the plan, and one command of it.
  struct Write {
    std::string what;
    bool erases;
  };
  struct Piece {
    std::size_t write;  // of the plan
    std::uint32_t address;
    std::uint32_t bytes;
    bool isDone = false;
  };

  void OnWrite(const ScsiCommand& command);
  std::string PlaceWords() const;
  std::string CodeWords() const;
  std::string StorageWords() const;
  std::string WriteWords(std::size_t write) const;

  std::optional<RomVolume> volume_;  // the last that answered
  bool hasAnswered_ = false;
  bool isGone_ = false;
  bool isRunning_ = false;
  bool hasEntered_ = false;
  bool hasJumped_ = false;
  bool isReset_ = false;
  std::uint32_t codeBytes_ = 0;
  std::uint64_t loadedBytes_ = 0;
  std::string storage_;
  std::vector<Write> writes_;
  std::vector<Piece> pieces_;
  std::size_t nextPiece_ = 0;
  std::uint64_t writtenBytes_ = 0;
  std::uint64_t plannedBytes_ = 0;
};

}  // namespace zemctl
