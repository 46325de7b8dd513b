// A camera that runs its boot loader, or the updater that a host has loaded into it, as a SCSI
// target without transport: stages, registers, load buffer, storages, faults. The adapters beside
// it let hosts meet the model as a volume.
//
// One thread at a time.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/faults.h"
#include "simulator/storage.h"

namespace zem::simulator {

// What runs in the camera.
enum class BootStage {
  kCamera,      // its firmware: a video device, no volume
  kBootLoader,  // the boot loader in its ROM
  kZemStorage,  // the updater: "ZEM" storage
  kGone,        // nothing any more; it stays away
};

enum class StorageType : std::uint8_t {
  kEmmc = 0x02,
  kSerialFlash = 0x05,
  kSpiNand = 0x06,
  kParallelNand = 0x07,
  kDram = 0x80,
};

struct StorageOptions {
  StorageType type = StorageType::kSerialFlash;
  std::size_t size = 4U << 20;
  std::string file;  // where its content is kept; empty: in memory only
};

struct BootLoaderOptions {
  wchar_t letter = L'F';  // drive letter of the volume
  BootStage start = BootStage::kBootLoader;
  BootStage afterJump = BootStage::kZemStorage;  // what the loaded code turns out to be
  std::string signature = "VSN3";                // the boot loader's, at most 12 characters
  std::uint8_t responseFormat = 1;               // byte 3 of the inquiry data
  std::uint32_t absentOpens = 1;                 // opens that fail after each change of stage
  std::vector<StorageOptions> storages = {{}, {StorageType::kDram, 4U << 20, ""}};
  std::vector<Fault> faults;
};

enum class ScsiOutcome {
  kDone,
  kRefused,  // no such command, or not with these parameters
  kFailed,   // the transfer failed
  kSilent,   // the device never answered
  kGone,     // the device left
};

struct ScsiResult {
  ScsiOutcome outcome = ScsiOutcome::kDone;
  std::size_t moved = 0;    // bytes of the data phase
  std::uint32_t error = 0;  // the system error that a failure shows; 0 leaves it to the adapter
  std::uint8_t status = 0;  // the SCSI status of a refusal that is no system error; 0 for none
};

// One command as the target saw it, once its result is known.
struct ScsiExchange {
  std::vector<std::uint8_t> cdb;
  bool dataIn = false;
  std::vector<std::uint8_t> data;  // sent, or moved to the host
  ScsiOutcome outcome = ScsiOutcome::kDone;
};

class BootLoader {
 public:
  // Throws std::runtime_error when the file of a storage cannot be used.
  explicit BootLoader(const BootLoaderOptions& options);

  wchar_t letter() const { return letter_; }
  BootStage stage() const { return stage_; }

  // The firmware that runs in the camera was told to go to the boot loader.
  void EnterRomBoot() { ChangeStage(BootStage::kBootLoader); }

  // A host opens the volume: the number of the connection, or nothing while there is no volume.
  // Every change of stage ends all connections.
  std::optional<std::uint32_t> Connect();
  bool IsConnected(std::uint32_t connection) const { return connection == connection_; }

  // Executes one command; `data` is what the host sends, or takes what the target answers.
  ScsiResult Execute(std::span<const std::uint8_t> cdb, bool dataIn, std::span<std::uint8_t> data);

  // The storage of a type; null when the camera has none.
  Storage* FindStorage(StorageType type);

  void AddFault(const Fault& fault) { faults_.push_back(fault); }

  void SetObserver(std::function<void(const ScsiExchange&)> observer) {
    observer_ = std::move(observer);
  }
  void SetStageObserver(std::function<void(BootStage)> observer) {
    stageObserver_ = std::move(observer);
  }

  // ---- What the commands read and change ----

  std::map<std::uint32_t, std::uint8_t> registers;  // one that was never written reads 0
  std::vector<std::uint8_t> loadBuffer;
  std::uint32_t downloadAddress = 0;
  std::uint32_t addressDivider = 1;
  std::optional<StorageType> selected;
  std::uint8_t selectOption = 0;
  std::array<std::uint32_t, 2> enhancedArea = {};

 private:
  struct Command;
  using Cdb = std::span<const std::uint8_t>;
  using Data = std::span<std::uint8_t>;

  // Each carries out one command: the bytes moved, or nothing when it is refused.
  using Moved = std::optional<std::size_t>;
  Moved Inquire(Data data) const;
  Moved Identify(Cdb cdb, Data data);
  Moved Download(Cdb cdb, Data data);
  Moved Jump(Cdb cdb, Data data);
  Moved ReadRegister(Cdb cdb, Data data);
  Moved WriteRegister(Cdb cdb, Data data);
  Moved SelectStorage(Cdb cdb, Data data);
  Moved ReadStorage(Cdb cdb, Data data);
  Moved WriteStorage(Cdb cdb, Data data);
  Moved SetDownloadAddress(Cdb cdb, Data data);
  Moved SetAddressDivider(Cdb cdb, Data data);
  Moved Reset(Cdb cdb, Data data);
  Moved MakeEnhancedArea(Cdb cdb, Data data);

  ScsiResult Answer(Cdb cdb, bool dataIn, Data data);
  Moved Dispatch(Cdb cdb, bool dataIn, Data data);
  bool HoldsFirmware() const;
  void ChangeStage(BootStage stage);

  wchar_t letter_;
  BootStage stage_;
  BootStage afterJump_;
  std::string signature_;
  std::uint8_t responseFormat_;
  std::uint32_t absentOpens_;
  std::uint32_t absentLeft_ = 0;
  std::uint32_t connection_ = 1;
  std::uint64_t commands_ = 0;
  std::map<StorageType, Storage> storages_;
  std::vector<Fault> faults_;
  std::function<void(const ScsiExchange&)> observer_;
  std::function<void(BootStage)> stageObserver_;
};

}  // namespace zem::simulator
