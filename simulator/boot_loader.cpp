#include "simulator/boot_loader.h"

#include <algorithm>
#include <string_view>

#include "platform/bytes.h"
#include "simulator/noise.h"

namespace zem::simulator {
namespace {

constexpr std::size_t kSectorSize = 512;
constexpr std::size_t kVendorCdbSize = 16;
constexpr std::size_t kMostDownloadSectors = 64;
constexpr std::array<std::uint8_t, 3> kVendorStamp = {0xFA, 0x55, 0x66};
constexpr std::uint8_t kInquiry = 0x12;

// Copies as much of `answer` as the host offers room for.
std::size_t Fill(std::span<std::uint8_t> data, std::span<const std::uint8_t> answer) {
  const std::size_t moved = std::min(data.size(), answer.size());
  std::copy_n(answer.begin(), moved, data.begin());
  return moved;
}

}  // namespace

struct BootLoader::Command {
  enum class Phase { kNone, kIn, kOut };

  std::uint8_t code;
  Phase phase;
  Moved (BootLoader::*run)(Cdb cdb, Data data);

  bool Suits(bool dataIn, Data data) const {
    return data.empty() ? phase == Phase::kNone : phase == (dataIn ? Phase::kIn : Phase::kOut);
  }
};

BootLoader::BootLoader(const BootLoaderOptions& options)
    : letter_(options.letter),
      stage_(options.start),
      afterJump_(options.afterJump),
      signature_(options.signature),
      responseFormat_(options.responseFormat),
      absentOpens_(options.absentOpens),
      faults_(options.faults) {
  for (const StorageOptions& storage : options.storages) {
    Storage& added = storages_.try_emplace(storage.type, storage.size).first->second;
    if (!storage.file.empty()) {
      KeepInFile(added, storage.file);
    }
  }
}

std::optional<std::uint32_t> BootLoader::Connect() {
  if (stage_ != BootStage::kBootLoader && stage_ != BootStage::kZemStorage) {
    return std::nullopt;
  }
  if (absentLeft_ > 0) {
    --absentLeft_;
    return std::nullopt;
  }
  return connection_;
}

Storage* BootLoader::FindStorage(StorageType type) {
  const auto found = storages_.find(type);
  return found == storages_.end() ? nullptr : &found->second;
}

// Whatever runs next starts from nothing; registers and storages keep what they hold.
void BootLoader::ChangeStage(BootStage stage) {
  stage_ = stage;
  ++connection_;
  absentLeft_ = absentOpens_;
  loadBuffer.clear();
  downloadAddress = 0;
  addressDivider = 1;
  selected.reset();
  if (stageObserver_) {
    stageObserver_(stage);
  }
}

ScsiResult BootLoader::Execute(std::span<const std::uint8_t> cdb, bool dataIn,
                               std::span<std::uint8_t> data) {
  const ScsiResult result = Answer(cdb, dataIn, data);
  if (observer_) {
    const std::size_t shown = dataIn ? result.moved : data.size();
    observer_({{cdb.begin(), cdb.end()},
               dataIn,
               {data.begin(), data.begin() + static_cast<std::ptrdiff_t>(shown)},
               result.outcome});
  }
  return result;
}

ScsiResult BootLoader::Answer(Cdb cdb, bool dataIn, Data data) {
  ++commands_;
  const Fault* garbage = nullptr;
  const Fault* shorten = nullptr;
  for (const Fault& fault : faults_) {
    if (!fault.Hits(commands_)) {
      continue;
    }
    switch (fault.kind) {
      case Fault::Kind::kFail:
        return {ScsiOutcome::kFailed, 0, fault.value};
      case Fault::Kind::kRefuse:
        // The value that stands for none is no SCSI status.
        return {ScsiOutcome::kRefused, 0, 0,
                static_cast<std::uint8_t>(fault.value > 1 ? fault.value : 0)};
      case Fault::Kind::kSilent:
        return {ScsiOutcome::kSilent, 0, 0};
      case Fault::Kind::kUnplug:
        ChangeStage(BootStage::kGone);
        return {ScsiOutcome::kGone, 0, 0};
      case Fault::Kind::kGarbage:
        garbage = &fault;
        break;
      case Fault::Kind::kShort:
        shorten = &fault;
        break;
      case Fault::Kind::kDrop:
      case Fault::Kind::kLeave:
      case Fault::Kind::kReplug:
      case Fault::Kind::kLength:  // a volume has no such things
        break;
    }
  }
  std::vector<std::uint8_t> received(data.begin(), data.end());
  if (garbage != nullptr && !dataIn) {
    FillWithNoise(received, commands_);
  }
  const Moved moved = Dispatch(cdb, dataIn, received);
  if (!moved) {
    return {ScsiOutcome::kRefused, 0, 0};
  }
  if (!dataIn) {
    return {ScsiOutcome::kDone, *moved, 0};
  }
  received.resize(*moved);
  if (garbage != nullptr) {
    FillWithNoise(received, commands_);
  }
  if (shorten != nullptr) {
    received.resize(std::min<std::size_t>(received.size(), shorten->value));
  }
  return {ScsiOutcome::kDone, Fill(data, received), 0};
}

BootLoader::Moved BootLoader::Dispatch(Cdb cdb, bool dataIn, Data data) {
  using Phase = Command::Phase;
  static constexpr std::array<Command, 12> kCommands = {{
      {0x01, Phase::kIn, &BootLoader::Identify},
      {0x02, Phase::kOut, &BootLoader::Download},
      {0x03, Phase::kNone, &BootLoader::Jump},
      {0x04, Phase::kIn, &BootLoader::ReadRegister},
      {0x05, Phase::kNone, &BootLoader::WriteRegister},
      {0x06, Phase::kIn, &BootLoader::SelectStorage},
      {0x07, Phase::kIn, &BootLoader::ReadStorage},
      {0x08, Phase::kOut, &BootLoader::WriteStorage},
      {0x0D, Phase::kNone, &BootLoader::SetDownloadAddress},
      {0x0F, Phase::kOut, &BootLoader::SetAddressDivider},
      {0x21, Phase::kNone, &BootLoader::Reset},
      {0x22, Phase::kNone, &BootLoader::MakeEnhancedArea},
  }};
  if (cdb.size() >= 6 && cdb[0] == kInquiry) {
    return dataIn ? Inquire(data) : std::nullopt;
  }
  if (cdb.size() != kVendorCdbSize ||
      !std::equal(kVendorStamp.begin(), kVendorStamp.end(), cdb.begin())) {
    return std::nullopt;
  }
  const auto command =
      std::find_if(kCommands.begin(), kCommands.end(),
                   [&](const Command& candidate) { return candidate.code == cdb[3]; });
  if (command == kCommands.end() || !command->Suits(dataIn, data)) {
    return std::nullopt;
  }
  return (this->*command->run)(cdb, data);
}

BootLoader::Moved BootLoader::Inquire(Data data) const {
  // A removable disk, 31 bytes behind byte 4, vendor, product and revision.
  std::array<std::uint8_t, 36> answer = {0x00, 0x80, 0x02, responseFormat_, 31};
  constexpr std::string_view kNames = "ZEM     Boot Volume     1.00";
  std::copy(kNames.begin(), kNames.end(), answer.begin() + 8);
  return Fill(data, answer);
}

BootLoader::Moved BootLoader::Identify(Cdb /*cdb*/, Data data) {
  std::array<std::uint8_t, 16> answer = {};
  if (stage_ == BootStage::kBootLoader) {
    answer[0] = 0xAA;
    answer[1] = 0x55;
    std::copy_n(signature_.begin(), std::min(signature_.size(), answer.size() - 4),
                answer.begin() + 4);
  } else {
    constexpr std::string_view kName = "ZEM";
    std::copy(kName.begin(), kName.end(), answer.begin() + 9);
  }
  return Fill(data, answer);
}

BootLoader::Moved BootLoader::Download(Cdb cdb, Data data) {
  const std::size_t sectors = LoadBe16(&cdb[4]);
  if (sectors > kMostDownloadSectors || data.size() != sectors * kSectorSize) {
    return std::nullopt;
  }
  loadBuffer.insert(loadBuffer.end(), data.begin(), data.end());
  return data.size();
}

BootLoader::Moved BootLoader::Jump(Cdb /*cdb*/, Data /*data*/) {
  if (loadBuffer.empty()) {
    return std::nullopt;
  }
  ChangeStage(afterJump_);
  return 0;
}

BootLoader::Moved BootLoader::ReadRegister(Cdb cdb, Data data) {
  const auto found = registers.find(LoadBe32(&cdb[4]));
  data[0] = found == registers.end() ? std::uint8_t{0} : found->second;
  return 1;
}

BootLoader::Moved BootLoader::WriteRegister(Cdb cdb, Data /*data*/) {
  registers[LoadBe32(&cdb[4])] = cdb[8];
  return 0;
}

BootLoader::Moved BootLoader::SelectStorage(Cdb cdb, Data data) {
  const auto type = static_cast<StorageType>(cdb[4]);
  if (FindStorage(type) == nullptr) {
    return std::nullopt;
  }
  selected = type;
  selectOption = cdb[6];
  const std::array<std::uint8_t, 4> answer = {};
  return Fill(data, answer);
}

BootLoader::Moved BootLoader::ReadStorage(Cdb cdb, Data data) {
  const std::size_t size = LoadBe16(&cdb[8]) * kSectorSize;
  if (!selected || data.size() < size ||
      !FindStorage(*selected)->Read(LoadBe32(&cdb[4]), data.first(size))) {
    return std::nullopt;
  }
  return size;
}

BootLoader::Moved BootLoader::WriteStorage(Cdb cdb, Data data) {
  const std::uint64_t address = std::uint64_t{LoadBe32(&cdb[4])} * addressDivider;
  if (!selected || data.size() != LoadBe16(&cdb[8]) * kSectorSize ||
      !FindStorage(*selected)->Write(address, data)) {
    return std::nullopt;
  }
  return data.size();
}

BootLoader::Moved BootLoader::SetDownloadAddress(Cdb cdb, Data /*data*/) {
  downloadAddress = LoadBe32(&cdb[4]);
  return 0;
}

BootLoader::Moved BootLoader::SetAddressDivider(Cdb cdb, Data data) {
  if (cdb[7] != 4 || data.size() != 4) {
    return std::nullopt;
  }
  addressDivider = LoadLe32(data.data());
  return 4;
}

// The camera starts from its storage; without firmware there it falls back to its boot loader.
BootLoader::Moved BootLoader::Reset(Cdb /*cdb*/, Data /*data*/) {
  if (Storage* const memory = FindStorage(StorageType::kDram)) {
    memory->Erase();
  }
  ChangeStage(HoldsFirmware() ? BootStage::kCamera : BootStage::kBootLoader);
  return 0;
}

// The first sector is the last one that a burn writes: erased, there is nothing to start.
bool BootLoader::HoldsFirmware() const {
  return std::any_of(storages_.begin(), storages_.end(), [](const auto& entry) {
    const auto bytes = entry.second.bytes();
    const auto first = bytes.first(std::min(bytes.size(), kSectorSize));
    return entry.first != StorageType::kDram &&
           std::any_of(first.begin(), first.end(),
                       [](std::uint8_t value) { return value != Storage::kErased; });
  });
}

BootLoader::Moved BootLoader::MakeEnhancedArea(Cdb cdb, Data /*data*/) {
  if (cdb[4] != 1 || FindStorage(StorageType::kEmmc) == nullptr) {
    return std::nullopt;
  }
  enhancedArea = {LoadBe32(&cdb[5]), LoadBe32(&cdb[9])};
  return 0;
}

}  // namespace zem::simulator
