// What burning costs: commands and bytes on the wire for each export that writes a file, and the
// host's time for a 64 MiB image; and the check sum beside a bare read of the same memory.
//
// The protocol's minimum is one command of 32,768 bytes after another: 32 commands and 1,048,576
// bytes for each MiB, 2,048 and 67,108,864 for this image. A burner that puts a header block last
// adds its erase and its write, 4,096 bytes each. The program fails when the library sends anything
// else.
//
// Measured (GCC 12, -O3, a 2.6 GHz server core shared with others): the check sum reads 27 GB/s
// where a bare read reaches 33; reading a 64 MiB image into memory and sending it takes 38 ms of
// processor time, and 3 ms where the file is read in pieces.
//
// The sleep of 10 ms before each command goes on the virtual clock and is not measured.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "benchmarks/keeping_reporter.h"
#include "include/ZemUVCExtApi.h"
#include "platform/scsi.h"
#include "platform/simulated/simulated_platform.h"
#include "romboot/memory_load.h"

namespace {

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

// Burns the file again and again. `headerBlocks` is the number of header blocks beside the payload
// that go over the wire, erased or written.
void Burn(benchmark::State& state, Burner burner, const std::vector<std::uint8_t>& prefix,
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
  for (auto _ : state) {
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
  }
  ZEMROMAPI_CloseDevice(&device);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(kImageSize));
}

void BurnFw(benchmark::State& state) { Burn(state, ZEMROMAPI_BurnFw, ImagePrefix(), 2); }
BENCHMARK(BurnFw)->Unit(benchmark::kMillisecond);

void BurnPcCamFw(benchmark::State& state) {
  Burn(state, ZEMROMAPI_BurnPcCamFw, PackagePrefix(0), 0);
}
BENCHMARK(BurnPcCamFw)->Unit(benchmark::kMillisecond);

void BurnPcCamFwPnsV2(benchmark::State& state) {
  Burn(state, ZEMROMAPI_BurnPcCamFwPnsV2, PackagePrefix(kHeaderBlock), 2);
}
BENCHMARK(BurnPcCamFwPnsV2)->Unit(benchmark::kMillisecond);

void PartialUpdate(benchmark::State& state) { Burn(state, ZEMROMAPI_PartialUpdate, {}, 0); }
BENCHMARK(PartialUpdate)->Unit(benchmark::kMillisecond);

void LoadFW2Memory(benchmark::State& state) { Burn(state, ZEMROMAPI_LoadFW2Memory, {}, 0); }
BENCHMARK(LoadFW2Memory)->Unit(benchmark::kMillisecond);

const std::vector<std::uint8_t>& Memory() {
  static const std::vector<std::uint8_t> memory(kImageSize, 0x5A);
  return memory;
}

void CheckSum(benchmark::State& state) {
  const auto& memory = Memory();
  for (auto _ : state) {
    benchmark::DoNotOptimize(zem::WordSum(memory));
  }
}
BENCHMARK(CheckSum)->Unit(benchmark::kMillisecond);

// The C library's search for a byte that is not there: every byte is read, nothing is written.
void BareRead(benchmark::State& state) {
  const auto& memory = Memory();
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::memchr(memory.data(), 0xA5, memory.size()));
  }
}
BENCHMARK(BareRead)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  zem::benchmarks::KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const double size = static_cast<double>(kImageSize) / 1e6;
  std::printf("Check sum of 64 MiB: %.1f GB/s; a bare read of it: %.1f GB/s.\n",
              size / reporter.times["CheckSum"], size / reporter.times["BareRead"]);
  return 0;
}
