// Firmware files of any content through the exports that burn them, on a volume that takes
// everything: nothing is read outside the file's memory, every command is a whole number of
// sectors, and a burn that is refused has sent nothing.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "platform/scsi.h"
#include "platform/simulated/simulated_platform.h"

namespace {

void Require(bool right) {
  if (!right) {
    std::abort();
  }
}

// Answers as a boot loader, and reads all that is sent to it.
class TakingVolume {
 public:
  std::optional<std::uint32_t> operator()(
      const zem::platform::simulated::VolumeRequest& request) const {
    auto* const block = static_cast<std::uint8_t*>(request.block);
    if (request.code == IOCTL_SCSI_PASS_THROUGH) {
      constexpr std::size_t kData = 92;
      block[kData] = 0xAA;
      block[kData + 1] = 0x55;
      block[kData + 3] = 1;
      return std::nullopt;
    }
    SCSI_PASS_THROUGH_DIRECT header;
    std::memcpy(&header, block, sizeof(header));
    Require(header.DataTransferLength % 512 == 0 && header.DataTransferLength <= 32768);
    const auto* const data = static_cast<const std::uint8_t*>(header.DataBuffer);
    volatile std::uint8_t sum = 0;
    for (std::uint32_t index = 0; index < header.DataTransferLength; ++index) {
      sum = static_cast<std::uint8_t>(sum ^ data[index]);
    }
    ++commands_;
    return std::nullopt;
  }

  static std::size_t commands() { return commands_; }

 private:
  static inline std::size_t commands_ = 0;
};

// One file for the life of the process.
const std::string& Path() {
  static const std::string path =
      "/tmp/zem_rom_boot_fuzzer_" + std::to_string(static_cast<long>(getpid()));
  return path;
}

}  // namespace

// The first byte of the input chooses the export, the next three an address and the length of the
// file in 16 bits; zeros follow the rest.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kPrefix = 4;
  if (size < kPrefix) {
    return 0;
  }
  const std::size_t length = static_cast<std::size_t>(data[2] | (data[3] << 8));
  std::FILE* const file = std::fopen(Path().c_str(), "wb");
  Require(file != nullptr);
  const std::size_t given = std::min(size - kPrefix, length);
  std::fwrite(data + kPrefix, 1, given, file);
  static const std::array<std::uint8_t, 65536> zeros = {};
  std::fwrite(zeros.data(), 1, length - given, file);
  std::fclose(file);

  zem::platform::simulated::Reset();
  auto& system = zem::platform::simulated::TheSystem();
  system.recordDebuggerLines = false;
  system.volumes[L"\\\\.\\C:"] = TakingVolume();
  void* device = ZEMROMAPI_OpenDevice(1);
  Require(device != nullptr);
  const std::wstring path(Path().begin(), Path().end());
  unsigned int address = static_cast<unsigned int>(data[1]) << 24;
  const std::size_t before = TakingVolume::commands();
  ZemResult result = 0;
  switch (data[0] % 9) {
    case 0:
      result = ZEMROMAPI_BurnFw(device, path.c_str(), &address);
      break;
    case 1:
      result = ZEMROMAPI_BurnPcCamFw(device, path.c_str(), &address);
      break;
    case 2:
      result = ZEMROMAPI_BurnPcCamFwPnsV2(device, path.c_str(), &address);
      break;
    case 3:
      result = ZEMROMAPI_UpdateLinuxFwPkg(device, path.c_str(), address | 0xFFFF00, 0);
      break;
    case 4:
      result = ZEMROMAPI_UpdateLinuxFwPkg(device, path.c_str(), 0xFFFFFFFF, address);
      break;
    case 5:
      result = ZEMROMAPI_UpdateLinuxFwPkg_(device, path.c_str(), address);
      break;
    case 6:
      result = ZEMROMAPI_LoadMiniUVC(device, path.c_str());
      break;
    case 7:
      result = ZEMROMAPI_PartialUpdateWithHeader(device, path.c_str(), &address);
      break;
    default:
      result = ZEMROMAPI_LoadFW2Memory(device, path.c_str(), &address);
      break;
  }
  Require(result == 1 || (result == ZEM_E_FAIL && TakingVolume::commands() == before));
  ZEMROMAPI_CloseDevice(&device);
  std::remove(Path().c_str());
  return 0;
}
