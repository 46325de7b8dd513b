// The channel to a camera in ROM boot. Such a camera is no video device: it is a USB mass-storage
// volume, and everything said to it is a vendor SCSI command passed through to that volume.
//
// One object is driven by one thread at a time. Whatever fails is reported as 0 with a line on the
// debugger channel; a volume that cannot be opened, or fails the inquiry, is passed over in
// silence.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/platform.h"
#include "romboot/pass_through_blocks.h"

namespace zem {

inline constexpr std::uint32_t kSectorSize = 512;

// While it is not 0, a search also tells each device that it identifies the address divider. Set by
// ZEMROMAPI_OpenDevice; deliberately never cleared again, for the whole process. The only thing
// that threads share: a search looks at it once, as it begins, and nothing else depends on its
// order.
extern std::atomic<std::uint32_t> sendAddressDivider;

// Which boot code answers on a volume.
inline constexpr std::uint32_t kNoDeviceKind = 0;
inline constexpr std::uint32_t kBootLoaderKind = 1;
inline constexpr std::uint32_t kZemStorageKind = 2;

// `direction` of SendScsiCmd. Anything but kDataIn is data out, or no data with a length of 0.
inline constexpr int kDataOut = 0;
inline constexpr int kDataIn = 1;

class UsbScsiCmd {
 public:
  UsbScsiCmd() = default;
  UsbScsiCmd(const UsbScsiCmd&) = delete;
  UsbScsiCmd& operator=(const UsbScsiCmd&) = delete;
  // Closes the volume.
  virtual ~UsbScsiCmd();

  // Looks for the camera among the volumes C: to Z:. On success (1) `volume` is open and
  // `deviceKind` says what answered; else 0, and `volume` is null.
  //
  // A volume that was open is replaced, not closed, and a volume that was tried in vain stays open:
  // deliberate, callers depend on it.
  int OpenStorage();

  // Sends a command that reads `length` bytes, at most kMaxBufferedData, into `request.data`. Its
  // CDB is in place; the rest of the header is filled in here. 1 or 0.
  int SendScsiCmdIn(BufferedRequest& request, std::uint32_t length);

  // Sends a 16-byte command with `length` bytes of data. A `stamp` other than 0 first puts the
  // vendor's three bytes into the caller's `cdb`. 1 or 0.
  int SendScsiCmd(int stamp, int direction, std::uint32_t length, std::uint8_t* cdb, void* data);

  // Sends `sectorCount` sectors to the boot code's load buffer. 1; or 0, also for no sectors.
  int DownloadSectors(std::uint32_t sectorCount, const std::uint8_t* data);

  // Writes `sectorCount` sectors to the selected storage at a byte address. 1 or 0.
  // REQUIRES: addressDivider is not 0, which is a division fault.
  int WriteStorage(std::uint32_t address, std::uint32_t sectorCount, const std::uint8_t* data,
                   std::uint8_t flag);

  void CloseVolume();

  // The boot code's identification, for information only: "VSN2", "VSN3", or 0x8589010D in
  // little-endian order.
  std::array<std::uint8_t, 4> signature = {};
  // Storage addresses are divided by it before they go into a write command.
  std::uint32_t addressDivider = 1;
  platform::VolumeHandle volume = nullptr;
  std::uint32_t deviceKind = kNoDeviceKind;

 private:
  bool IsCandidate(platform::VolumeHandle candidate);
  bool Identify(bool tellsDivider);
  void AnnounceAddressDivider(bool tellsDivider);
};

}  // namespace zem
