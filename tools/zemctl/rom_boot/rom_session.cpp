#include "tools/zemctl/rom_boot/rom_session.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/bytes.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

using zem::StoreBe16;
using zem::StoreBe32;

constexpr unsigned kSendDivider = 0x10;
constexpr unsigned kProbePauseMilliseconds = 500;

constexpr unsigned char kIdentify = 0x01;
constexpr unsigned char kDownload = 0x02;
constexpr unsigned char kSelect = 0x06;
constexpr unsigned char kRead = 0x07;
constexpr unsigned char kWrite = 0x08;
constexpr unsigned char kMakeEnhancedArea = 0x22;

Cdb VendorCdb(unsigned char code) { return {0xFA, 0x55, 0x66, code}; }

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

[[noreturn]] void ThrowRomFailure(const char* function, ZemResult result, const char* name) {
  throw CallFailure(function, result,
                    {name, "the camera in ROM boot did not carry it out",
                     "Look at the volume with \"zemctl rom info\"; the debugger channel tells the "
                     "system's error.",
                     kTransferFailed});
}

}  // namespace

const char* NameOf(RomKind kind) {
  return kind == RomKind::kBootLoader ? "boot loader" : "ZEM storage";
}

void CheckRom(const char* function, ZemResult result) {
  if (result < 0) {
    ThrowRomFailure(function, result, "ZEM_E_FAIL");
  }
}

std::optional<RomSession> RomSession::Find(const RomSelection& selection) {
  for (const RomKind kind : {RomKind::kBootLoader, RomKind::kZemStorage}) {
    if (selection.kind.value_or(kind) != kind) {
      continue;
    }
    const unsigned mode = static_cast<unsigned>(kind) | (selection.sendDivider ? kSendDivider : 0);
    if (void* const handle = ZEMROMAPI_OpenDevice(mode)) {
      return RomSession(handle, kind);
    }
  }
  return std::nullopt;
}

RomSession RomSession::Open(const RomSelection& selection) {
  const ULONGLONG end = GetTickCount64() + 1000ULL * selection.waitSeconds;
  for (;;) {
    if (std::optional<RomSession> found = Find(selection)) {
      return std::move(*found);
    }
    if (GetTickCount64() >= end) {
      const std::string wanted = selection.kind ? NameOf(*selection.kind) : "camera in ROM boot";
      throw CallFailure("ZEMROMAPI_OpenDevice", ZEM_E_FAIL,
                        {"ZEM_E_FAIL", "no " + wanted + " was found among the volumes C: to Z:",
                         "Send a running camera into ROM boot with \"zemctl rom enter\"; wait with "
                         "--wait; raw access to volumes needs administrator rights.",
                         kNoCamera});
    }
    Sleep(kProbePauseMilliseconds);
  }
}

RomSession::RomSession(RomSession&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)), kind_(other.kind_) {}

RomSession::~RomSession() { ZEMROMAPI_CloseDevice(&handle_); }

std::array<unsigned char, 16> RomSession::Identify() const {
  Cdb cdb = VendorCdb(kIdentify);
  std::array<unsigned char, 16> reply = {};
  CheckRom("ZEMROMAPI_ScsiCommand",
           ZEMROMAPI_ScsiCommand(handle_, 1, static_cast<unsigned>(reply.size()), cdb.data(),
                                 reply.data()));
  return reply;
}

void RomSession::Select(const StorageChoice& storage) const {
  const StorageKind& kind = FindStorage(storage);
  CheckRom(kind.function, kind.select(handle_, static_cast<unsigned char>(storage.option)));
}

void RomSession::MakeEnhancedArea(const EnhancedArea& area) const {
  // 1 or 0, unlike any other command.
  const ZemResult accepted = ZEMROMAPI_MkEmmcEhancedArea(handle_, area.first, area.second);
  if (accepted != 1) {
    ThrowRomFailure("ZEMROMAPI_MkEmmcEhancedArea", accepted, "not accepted");
  }
}

void RomSession::Read(std::uint32_t address, std::span<unsigned char> bytes) const {
  std::array<unsigned char, kPieceSize> piece = {};
  while (!bytes.empty()) {
    const auto wanted =
        static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), piece.size()));
    const std::uint32_t sectors = (wanted + kSectorSize - 1) / kSectorSize;
    Cdb cdb = ReadCdb(address, sectors);
    CheckRom("ZEMROMAPI_ScsiCommand",
             ZEMROMAPI_ScsiCommand(handle_, 1, sectors * kSectorSize, cdb.data(), piece.data()));
    std::copy_n(piece.begin(), wanted, bytes.begin());
    address += wanted;
    bytes = bytes.subspan(wanted);
  }
}

std::vector<Cdb> DownloadCdbs(std::uint32_t codeSize) {
  std::vector<Cdb> cdbs;
  for (std::uint32_t sectors = (codeSize + kSectorSize - 1) / kSectorSize; sectors > 0;) {
    const std::uint32_t some = std::min(sectors, kMostCommandSectors);
    cdbs.push_back(VendorCdb(kDownload));
    StoreBe16(&cdbs.back()[4], static_cast<std::uint16_t>(some));
    sectors -= some;
  }
  return cdbs;
}

Cdb SelectCdb(const StorageChoice& storage) {
  Cdb cdb = VendorCdb(kSelect);
  cdb[4] = FindStorage(storage).code;
  cdb[6] = static_cast<unsigned char>(storage.option);
  return cdb;
}

Cdb ReadCdb(std::uint32_t address, std::uint32_t sectors) {
  Cdb cdb = VendorCdb(kRead);
  StoreBe32(&cdb[4], address);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(sectors));
  return cdb;
}

Cdb WriteCdb(const PlannedCommand& command) {
  Cdb cdb = VendorCdb(kWrite);
  StoreBe32(&cdb[4], command.address);
  StoreBe16(&cdb[8], static_cast<std::uint16_t>(command.sectors));
  cdb[10] = command.flag;
  return cdb;
}

Cdb EnhancedAreaCdb(const EnhancedArea& area) {
  Cdb cdb = VendorCdb(kMakeEnhancedArea);
  cdb[4] = 1;
  StoreBe32(&cdb[5], area.first);
  StoreBe32(&cdb[9], area.second);
  return cdb;
}

}  // namespace zemctl
