// What burning costs: commands and bytes on the wire for each export that writes a file, and the
// host's time for a 64 MiB image beside a plain read of the file; and the check sum beside a bare
// read of the same memory.
//
// The protocol's minimum is one command of 32,768 bytes after another: 32 commands and 1,048,576
// bytes for each MiB, 2,048 and 67,108,864 for this image. A burner that puts a header block last
// adds its erase and its write, 4,096 bytes each. The program fails when the library sends anything
// else.
//
// The sleep of 10 ms before each command goes on the virtual clock and is not measured.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/paired_runs.h"
#include "include/ZemUVCExtApi.h"
#include "platform/scsi.h"
#include "platform/simulated/simulated_platform.h"
#include "romboot/memory_load.h"

namespace {

using zem::benchmarks::Keep;
using zem::benchmarks::PairedRuns;
using zem::benchmarks::Table;
using zem::benchmarks::Text;

constexpr int kPairs = 31;
constexpr std::size_t kImageSize = std::size_t{64} * 1024 * 1024;
constexpr std::uint64_t kImageCommands = 2048;
constexpr std::uint64_t kImageBytes = 67108864;
constexpr std::uint64_t kHeaderBlock = 4096;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(EXIT_FAILURE);
}

// A boot loader that takes everything and counts it.
struct Wire {
  std::uint64_t commands = 0;
  std::uint64_t bytes = 0;
} wire;

std::optional<std::uint32_t> Count(const zem::platform::simulated::VolumeRequest& request) {
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
  ++wire.commands;
  wire.bytes += header.DataTransferLength;
  return std::nullopt;
}

void PutLe32(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t number) {
  for (std::size_t index = 0; index < 4; ++index) {
    bytes[offset + index] = static_cast<std::uint8_t>(number >> (8 * index));
  }
}

// A file that holds 64 MiB of payload behind `prefix`.
class File {
 public:
  explicit File(const std::vector<std::uint8_t>& prefix)
      : path_(std::filesystem::temp_directory_path() / "zem_romboot_benchmark") {
    std::FILE* const file = std::fopen(path_.c_str(), "wb");
    if (file == nullptr) {
      Fail("the file cannot be made");
    }
    const std::vector<std::uint8_t> payload(kImageSize, 0x5A);
    std::fwrite(prefix.data(), 1, prefix.size(), file);
    std::fwrite(payload.data(), 1, payload.size(), file);
    std::fclose(file);
  }
  ~File() { std::filesystem::remove(path_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  std::wstring path() const { return path_.wstring(); }

  // Reads it whole into memory of its own.
  void ReadWhole() const {
    std::FILE* const file = std::fopen(path_.c_str(), "rb");
    const std::size_t length = std::filesystem::file_size(path_);
    const std::unique_ptr<std::uint8_t[]> memory(new std::uint8_t[length]);
    if (file == nullptr || std::fread(memory.get(), 1, length, file) != length) {
      Fail("the file cannot be read");
    }
    Keep(memory[0]);
    std::fclose(file);
  }

 private:
  std::filesystem::path path_;
};

// An image: 18 bytes with the payload's length at 14, a header block.
std::vector<std::uint8_t> ImagePrefix() {
  std::vector<std::uint8_t> prefix(18 + kHeaderBlock);
  PutLe32(prefix, 14, kImageSize);
  return prefix;
}

// A package whose data begins at 18, with a header block if it has one.
std::vector<std::uint8_t> PackagePrefix(std::uint32_t headerBlock) {
  std::vector<std::uint8_t> prefix(18 + headerBlock);
  PutLe32(prefix, 10, 8);
  PutLe32(prefix, 14, static_cast<std::uint32_t>(kImageSize) + headerBlock);
  return prefix;
}

using Burner = ZemResult (*)(void*, const wchar_t*, unsigned int*);

// Burns the file beside a plain read of it. `headerBlocks` is the number of header blocks beside
// the payload that go over the wire, erased or written.
std::string MeasureBurn(PairedRuns& runs, Burner burner, const std::vector<std::uint8_t>& prefix,
                        std::uint64_t headerBlocks) {
  auto& system = zem::platform::simulated::TheSystem();
  zem::platform::simulated::Reset();
  system.recordDebuggerLines = false;
  system.volumes[L"\\\\.\\C:"] = Count;
  const File file(prefix);
  const std::wstring path = file.path();
  void* device = ZEMROMAPI_OpenDevice(1);
  if (device == nullptr) {
    Fail("there is no session");
  }
  const auto burn = [&] {
    wire = {};
    system.sleeps.clear();
    unsigned int address = 0;
    if (burner(device, path.c_str(), &address) != 1) {
      Fail("the burn failed");
    }
    if (wire.commands != kImageCommands + headerBlocks ||
        wire.bytes != kImageBytes + headerBlocks * kHeaderBlock) {
      std::fprintf(stderr, "%llu commands, %llu bytes\n",
                   static_cast<unsigned long long>(wire.commands),
                   static_cast<unsigned long long>(wire.bytes));
      Fail("more or less than the protocol's minimum");
    }
  };
  runs.Run(kPairs, burn, [&] { file.ReadWhole(); });
  double sleeps = 0;
  for (const std::uint32_t milliseconds : system.sleeps) {
    sleeps += milliseconds;
  }
  ZEMROMAPI_CloseDevice(&device);
  return Text("requests of the protocol: %llu commands, whose pauses alone take %.1f s",
              static_cast<unsigned long long>(wire.commands), sleeps / 1e3);
}

// The check sum beside the C library's search for a byte that is not there: every byte is read,
// nothing is written.
std::string MeasureCheckSum(PairedRuns& runs) {
  const std::vector<std::uint8_t> memory(kImageSize, 0x5A);
  runs.Run(
      kPairs, [&] { Keep(zem::WordSum(memory)); },
      [&] { Keep(std::memchr(memory.data(), 0xA5, memory.size())); });
  const double size = static_cast<double>(kImageSize);
  return Text("memory: %.0f GB/s, the bare read %.0f GB/s", size / runs.First().median,
              size / runs.Second().median);
}

}  // namespace

int main(int argc, char** argv) {
  Table table(argc, argv, "ROM boot: an image of 64 MiB, beside a plain read of it");
  const auto burn = [&](const char* label, Burner burner, const std::vector<std::uint8_t>& prefix,
                        std::uint64_t headerBlocks) {
    table.Row(label, 1e6, " ms",
              [&](PairedRuns& runs) { return MeasureBurn(runs, burner, prefix, headerBlocks); });
  };
  burn("`ZEMROMAPI_BurnFw`", ZEMROMAPI_BurnFw, ImagePrefix(), 2);
  burn("`ZEMROMAPI_BurnPcCamFw`", ZEMROMAPI_BurnPcCamFw, PackagePrefix(0), 0);
  burn("`ZEMROMAPI_BurnPcCamFwPnsV2`", ZEMROMAPI_BurnPcCamFwPnsV2, PackagePrefix(kHeaderBlock), 2);
  burn("`ZEMROMAPI_PartialUpdate`", ZEMROMAPI_PartialUpdate, {}, 0);
  burn("`ZEMROMAPI_LoadFW2Memory`", ZEMROMAPI_LoadFW2Memory, {}, 0);
  table.Row("check sum of the image", 1e6, " ms", MeasureCheckSum);
  return 0;
}
