#include "tools/zemctl/rom_boot/rom_session.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/rom_boot/refused_volumes.h"

namespace zemctl {
namespace {

using zem::StoreBe16;
using zem::StoreBe32;

constexpr unsigned kSendDivider = 0x10;
constexpr std::uint32_t kProbePauseMilliseconds = 500;

Cdb VendorCdb(zem::SubCommand code) { return {0xFA, 0x55, 0x66, static_cast<unsigned char>(code)}; }

struct StorageKind {
  const char* name;
  unsigned char code;
  const char* function;
  bool takesOption;
  ZemResult (*select)(void* session, unsigned char option);
};

const std::array<StorageKind, kStorageNames.size()> kStorages = {{
    {"sf", 0x05, "ZEMROMAPI_SwitchModePCAM_SF", false,
     [](void* session, unsigned char) { return ZEMROMAPI_SwitchModePCAM_SF(session); }},
    {"dram", 0x80, "ZEMROMAPI_SwitchModePCAM_DRAM", false,
     [](void* session, unsigned char) { return ZEMROMAPI_SwitchModePCAM_DRAM(session); }},
    {"emmc", 0x02, "ZEMROMAPI_SwitchModePCAM_EMMC", true,
     [](void* session, unsigned char option) {
       return ZEMROMAPI_SwitchModePCAM_EMMC(session, option);
     }},
    {"spi-nand", 0x06, "ZEMROMAPI_SwitchModePCAM_SPI_NAND", true,
     [](void* session, unsigned char option) {
       return ZEMROMAPI_SwitchModePCAM_SPI_NAND(session, option);
     }},
    {"parallel-nand", 0x07, "ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND", true,
     [](void* session, unsigned char option) {
       return ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(session, option);
     }},
}};

const StorageKind& FindStorage(const StorageChoice& choice) {
  const auto found =
      std::find_if(kStorages.begin(), kStorages.end(),
                   [&](const StorageKind& storage) { return choice.name == storage.name; });
  if (found == kStorages.end()) {
    throw UsageError("the storages are sf, dram, emmc, spi-nand and parallel-nand");
  }
  if (choice.option != 0 && !found->takesOption) {
    throw UsageError("the storage " + choice.name + " takes no option");
  }
  return *found;
}

// ": read storage 0x00001000 (512 bytes): error 1117"
std::string Words(const std::optional<ScsiCommand>& loss) {
  return loss ? ": " + NameOf(*loss) + ": " + FailureOf(*loss) : "";
}

const char* NameOf(ZemResult result) { return result < 0 ? "ZEM_E_FAIL" : "reported as done"; }

[[noreturn]] void ThrowRomFailure(const char* function, ZemResult result, const char* name,
                                  const std::optional<ScsiCommand>& loss) {
  throw CallFailure(
      function, result,
      {name, "the camera in ROM boot did not carry it out" + Words(loss), "", kTransferFailed});
}

// "F: (boot loader VSN3), G: (ZEM storage)"
std::string ListOf(const std::vector<RomVolume>& volumes) {
  std::string text;
  for (const RomVolume& volume : volumes) {
    text += (text.empty() ? "" : ", ") + volume.drive + " (" + volume.Words() + ")";
  }
  return text;
}

[[noreturn]] void ThrowNotFound(const RomSelection& selection, const std::vector<RomVolume>& others,
                                const RefusalWords& refused) {
  std::string text = "no ";
  text += selection.kind ? NameOf(*selection.kind) : "camera in ROM boot";
  text += " was found ";
  text += selection.drive.empty() ? "among the volumes C: to Z:" : "at " + selection.drive;
  text += others.empty() ? "" : "; there is " + ListOf(others);
  throw CallFailure(
      "ZEMROMAPI_OpenDevice", ZEM_E_FAIL,
      {"ZEM_E_FAIL", text + refused.why,
       refused.why.empty()
           ? "Send a running camera into ROM boot with \"zemctl rom enter\"; wait with "
             "--boot-wait; raw access to volumes needs administrator rights."
           : refused.next,
       kNoCamera});
}

}  // namespace

std::optional<RomVolume> Choose(const std::vector<RomVolume>& found, const std::string& drive) {
  if (drive.empty() && found.size() > 1) {
    throw ToolFailure(kNoCamera, "more than one camera is in ROM boot: " + ListOf(found),
                      "Choose one with --drive, or unplug the others.",
                      "nothing was sent to any of them");
  }
  for (const RomVolume& volume : found) {
    if (drive.empty() || volume.drive == drive) {
      return volume;
    }
  }
  return std::nullopt;
}

std::optional<RomSession> RomSession::Find(RomWatch& watch, const RomSelection& selection) {
  const std::vector<RomVolume> found = watch.Survey();
  std::optional<RomVolume> chosen = Choose(found, selection.drive);
  if (!chosen || (selection.kind && *selection.kind != chosen->kind)) {
    return std::nullopt;
  }
  for (const RomVolume& volume : found) {
    if (volume.drive != chosen->drive) {
      watch.LeaveAlone(volume.drive);
    }
  }
  const unsigned divider = selection.sendDivider ? kSendDivider : 0;
  watch.record().BeginCall();
  watch.record().OpenOnly(chosen->drive);
  void* const handle = ZEMROMAPI_OpenDevice(static_cast<unsigned>(chosen->kind) | divider);
  watch.record().OpenOnly("");
  if (const auto loss = FindScsiLoss(watch.record().commands())) {
    void* lost = handle;
    ZEMROMAPI_CloseDevice(&lost);
    ThrowRomFailure("ZEMROMAPI_OpenDevice", handle != nullptr ? ZEM_OK : ZEM_E_FAIL,
                    handle != nullptr ? "a session" : "no session", loss);
  }
  if (handle == nullptr) {
    return std::nullopt;
  }
  return RomSession(watch, handle, std::move(*chosen));
}

RomSession RomSession::Open(RomWatch& watch, const RomSelection& selection) {
  const std::uint64_t end = watch.Now() + std::uint64_t{1000} * selection.waitSeconds;
  for (;;) {
    if (std::optional<RomSession> found = Find(watch, selection)) {
      return std::move(*found);
    }
    watch.ThrowIfStopped();
    if (watch.Now() >= end) {
      const std::vector<RomVolume> others = watch.Survey();
      ThrowNotFound(selection, others, Describe(watch.record().refusals()));
    }
    watch.Pause(kProbePauseMilliseconds);
  }
}

RomSession::RomSession(RomSession&& other) noexcept
    : watch_(other.watch_),
      handle_(std::exchange(other.handle_, nullptr)),
      volume_(std::move(other.volume_)) {}

RomSession::~RomSession() { ZEMROMAPI_CloseDevice(&handle_); }

ZemResult RomSession::Observe(const Function& call) const {
  watch_.ThrowIfStopped();
  watch_.record().BeginCall();
  return call(handle_);
}

ZemResult RomSession::Call(const char* function, const Function& call) const {
  const ZemResult result = Observe(call);
  Judge(function, result);
  return result;
}

void RomSession::Judge(const char* function, ZemResult result) const {
  const std::optional<ScsiCommand> loss = FindScsiLoss(watch_.record().commands());
  if (result < 0 || loss) {
    ThrowRomFailure(function, result, NameOf(result), loss);
  }
}

void RomSession::Select(const StorageChoice& storage) const {
  const StorageKind& kind = FindStorage(storage);
  const ZemResult result = Observe([&](void* session) {
    return kind.select(session, static_cast<unsigned char>(storage.option));
  });
  const std::optional<ScsiCommand> loss = FindScsiLoss(watch_.record().commands());
  if (result < 0 || loss) {
    throw CallFailure(
        kind.function, result,
        {NameOf(result), "the storage " + storage.name + " could not be selected" + Words(loss),
         "Check that this camera has it, see --storage and --option.", kTransferFailed});
  }
}

void RomSession::MakeEnhancedArea(const EnhancedArea& area) const {
  // 1 or 0, unlike any other command.
  const char* const function = "ZEMROMAPI_MkEmmcEhancedArea";
  const ZemResult accepted = Observe(
      [&](void* session) { return ZEMROMAPI_MkEmmcEhancedArea(session, area.first, area.second); });
  const std::optional<ScsiCommand> loss = FindScsiLoss(watch_.record().commands());
  if (accepted != 1 || loss) {
    ThrowRomFailure(function, accepted, accepted != 1 ? "not accepted" : "reported as done", loss);
  }
}

void RomSession::Read(std::uint32_t address, std::span<unsigned char> bytes) const {
  std::array<unsigned char, kPieceSize> piece = {};
  while (!bytes.empty()) {
    const auto wanted =
        static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), piece.size()));
    const std::uint32_t sectors = (wanted + kSectorSize - 1) / kSectorSize;
    Cdb cdb = ReadCdb(address, sectors);
    Call("ZEMROMAPI_ScsiCommand", [&](void* session) {
      return ZEMROMAPI_ScsiCommand(session, 1, sectors * kSectorSize, cdb.data(), piece.data());
    });
    std::copy_n(piece.begin(), wanted, bytes.begin());
    address += wanted;
    bytes = bytes.subspan(wanted);
  }
}

bool RomSession::Reset() const {
  Observe([](void* session) { return ZEMROMAPI_ResetSystem(session); });
  const std::optional<ScsiCommand> loss = FindScsiLoss(watch_.record().commands());
  if (loss && !MeansVolumeGone(loss->error)) {
    ThrowRomFailure("ZEMROMAPI_ResetSystem", 1, NameOf(1), loss);
  }
  return !loss;
}

std::vector<Cdb> DownloadCdbs(std::uint32_t codeSize) {
  std::vector<Cdb> cdbs;
  for (std::uint32_t sectors = (codeSize + kSectorSize - 1) / kSectorSize; sectors > 0;) {
    const std::uint32_t some = std::min(sectors, kMostCommandSectors);
    cdbs.push_back(VendorCdb(zem::SubCommand::kDownload));
    StoreBe16(&cdbs.back()[4], static_cast<std::uint16_t>(some));
    sectors -= some;
  }
  return cdbs;
}

Cdb SelectCdb(const StorageChoice& storage) {
  Cdb cdb = VendorCdb(zem::SubCommand::kSelectStorage);
  cdb[4] = FindStorage(storage).code;
  cdb[6] = static_cast<unsigned char>(storage.option);
  return cdb;
}

Cdb ReadCdb(std::uint32_t address, std::uint32_t sectors) {
  Cdb cdb = VendorCdb(zem::SubCommand::kReadStorage);
  StoreBe32(&cdb[4], address);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(sectors));
  return cdb;
}

Cdb WriteCdb(const PlannedCommand& command) {
  Cdb cdb = VendorCdb(zem::SubCommand::kWriteStorage);
  StoreBe32(&cdb[4], command.address);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(command.sectors));
  cdb[10] = command.flag;
  return cdb;
}

Cdb DownloadAddressCdb(std::uint32_t address) {
  Cdb cdb = VendorCdb(zem::SubCommand::kSetFwDownloadAddress);
  StoreBe32(&cdb[4], address);
  return cdb;
}

Cdb EnhancedAreaCdb(const EnhancedArea& area) {
  Cdb cdb = VendorCdb(zem::SubCommand::kMakeEnhancedArea);
  cdb[4] = 1;
  StoreBe32(&cdb[5], area.first);
  StoreBe32(&cdb[9], area.second);
  return cdb;
}

}  // namespace zemctl
