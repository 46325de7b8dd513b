// zem_long_run ROUNDS: rounds of what a host does with a camera in its life, on a simulated
// one, in one process and in virtual time: opened, read and written, updated, sent into ROM boot,
// recovered, closed. What the process holds is measured on the way; ends with 0 if nothing grows, 1
// if something does, 2 if a call fails.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "simulator/ZemSimulator.h"
#include "tests/long_run/process_state.h"
#include "tests/zemctl/virtual_time/virtual_time.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// ---- A round ----

void Require(bool holds, const char* what) {
  if (!holds) {
    std::printf("not as expected: %s\n", what);
    std::exit(2);
  }
}

// 0 or more is no failure, and each of these functions has its own.
void Succeed(ZemResult result, const char* call) {
  if (result < 0) {
    std::printf("%s: 0x%08X\n", call, static_cast<unsigned>(result));
    std::exit(2);
  }
}

// The beginning of a file, as long as it is.
Bytes ReadFile(const char* path, std::size_t length) {
  Bytes bytes(length);
  std::FILE* const file = std::fopen(path, "rb");
  Require(file != nullptr, path);
  bytes.resize(std::fread(bytes.data(), 1, length, file));
  std::fclose(file);
  return bytes;
}

void WriteFile(const char* path, const Bytes& bytes) {
  std::FILE* const file = std::fopen(path, "wb");
  Require(file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size(),
          path);
  std::fclose(file);
}

constexpr std::size_t kImage = 2048;
constexpr std::size_t kHeader = 4096;
constexpr std::size_t kPayload = 8192;

// A firmware file for the ROM boot: 18 bytes with the payload's length, header, payload.
Bytes FirmwareFile() {
  Bytes file(18 + kHeader, 0x11);
  file[14] = static_cast<std::uint8_t>(kPayload & 0xFF);
  file[15] = static_cast<std::uint8_t>(kPayload >> 8);
  file[16] = file[17] = 0;
  file.resize(file.size() + kPayload, 0x22);
  return file;
}

void CountProgress(std::uint32_t /*progress*/, std::uint64_t user) {
  ++*reinterpret_cast<unsigned*>(user);
}

std::uint64_t Counting(unsigned& calls) { return reinterpret_cast<std::uint64_t>(&calls); }

void ReadAndWrite(void* camera, std::uint16_t number) {
  std::uint16_t value = 0;
  Succeed(ZEMAPI_SetRegister(camera, 0x123456, number), "ZEMAPI_SetRegister");
  Succeed(ZEMAPI_GetRegister(camera, 0x123456, &value), "ZEMAPI_GetRegister");
  Require(value == number, "the register keeps what is written");
  ZemLong brightness = 0;
  ZemLong flags = 0;
  Succeed(ZEMAPI_GetVideoProcAmp(camera, 0, &brightness, &flags), "ZEMAPI_GetVideoProcAmp");
  std::array<std::uint8_t, 64> table = {};
  std::uint32_t length = 0;
  Succeed(ZEMAPI_ReadTable(camera, 1, table.data(), table.size(), &length), "ZEMAPI_ReadTable");
  Require(length == 8, "table 1 has 8 bytes");
  std::uint8_t* whole = nullptr;
  Succeed(ZEMAPI_OpenTableHandle(camera, &whole), "ZEMAPI_OpenTableHandle");
  ZEMAPI_CloseTableHandle(camera, &whole);
}

void Update(void* camera, std::uint8_t first) {
  Bytes image(kImage, 0x5A);
  image[0] = first;
  unsigned calls = 0;
  Succeed(ZEMAPI_UpdateFW_517x(camera, image.data(), kImage, CountProgress, Counting(calls)),
          "ZEMAPI_UpdateFW_517x");
  Require(calls > 0, "the update tells its progress");
  Bytes back(kImage);
  std::uint32_t length = 0;
  Succeed(ZEMAPI_ReadFWData(camera, back.data(), kImage, &length, CountProgress, Counting(calls)),
          "ZEMAPI_ReadFWData");
  Require(length >= kImage && back == image, "what was sent is read back");
}

void UseWithoutHandle(std::uint8_t number) {
  std::array<std::uint8_t, 6> version = {};
  Succeed(ZEMUVCEXT_GetFWVersion(version.data()), "ZEMUVCEXT_GetFWVersion");
  std::uint8_t value = 0;
  Succeed(ZEMUVCEXT_SetRegister(0x1234, number), "ZEMUVCEXT_SetRegister");
  Succeed(ZEMUVCEXT_GetRegister(0x1234, &value), "ZEMUVCEXT_GetRegister");
  Require(value == number, "the register keeps what is written without a handle");
}

// From the boot loader to the running firmware.
void Recover(std::uint8_t number) {
  // As a real one, the volume is not there at once.
  void* session = ZEMROMAPI_OpenDevice(1);
  if (session == nullptr) {
    session = ZEMROMAPI_OpenDevice(1);
  }
  Require(session != nullptr, "ZEMROMAPI_OpenDevice");
  unsigned char value = 0;
  Succeed(ZEMROMAPI_WriteRegister(session, 0x1234, number), "ZEMROMAPI_WriteRegister");
  Succeed(ZEMROMAPI_ReadRegister(session, 0x1234, &value), "ZEMROMAPI_ReadRegister");
  Require(value == number, "the boot loader's register keeps what is written");
  Succeed(ZEMROMAPI_LoadUpdater(session, L"code"), "ZEMROMAPI_LoadUpdater");
  Succeed(ZEMROMAPI_SwitchModePCAM_SF(session), "ZEMROMAPI_SwitchModePCAM_SF");
  Succeed(ZEMROMAPI_CreateDumpFile(session, L"dump", 4096), "ZEMROMAPI_CreateDumpFile");
  Succeed(ZEMROMAPI_Erase(session, 0, 4096), "ZEMROMAPI_Erase");
  unsigned int address = 0;
  Succeed(ZEMROMAPI_BurnFw(session, L"firmware", &address), "ZEMROMAPI_BurnFw");
  address = 0;
  Succeed(ZEMROMAPI_PartialRead(session, L"copy", &address, kHeader + kPayload),
          "ZEMROMAPI_PartialRead");
  Bytes burned(kHeader, 0x11);
  burned.resize(kHeader + kPayload, 0x22);
  Require(ReadFile("copy", 2 * burned.size()) == burned, "what was burned is read back");
  Succeed(ZEMROMAPI_ResetSystem(session), "ZEMROMAPI_ResetSystem");
  ZEMROMAPI_CloseDevice(&session);
}

void Round(unsigned number) {
  const auto byte = static_cast<std::uint8_t>(number);
  void* camera = nullptr;
  Succeed(ZEMAPI_OpenDevice(0, &camera), "ZEMAPI_OpenDevice");
  Require(ZemSimulatorObjects() == 1, "an open camera is one object");
  ReadAndWrite(camera, static_cast<std::uint16_t>(number));
  Update(camera, byte);
  UseWithoutHandle(byte);
  Succeed(ZEMAPI_ResetToRomboot(camera), "ZEMAPI_ResetToRomboot");
  ZEMAPI_CloseDevice(&camera);
  Recover(byte);
}

// ---- What is measured ----

struct Sample {
  unsigned rounds = 0;
  ProcessState process;
  std::int32_t objects = 0;
  double milliseconds = 0;  // of the processor, for each round since the sample before
};

struct Quantity {
  const char* name;
  const char* unit;
  double (*of)(const Sample& sample);
  double bound;     // what it may gain or lose in 1,000 rounds
  bool ofMean;      // as percent of its mean
  bool needsLong;   // a short run cannot tell it from chance
  const char* why;  // the bound
};

// Fewer rounds are a short run.
constexpr unsigned kLongRun = 5000;

constexpr std::array<Quantity, 5> kQuantities = {{
    {"handles", "", [](const Sample& s) { return static_cast<double>(s.process.handles); }, 0,
     false, false, "none stays open"},
    {"objects", "", [](const Sample& s) { return static_cast<double>(s.objects); }, 0, false, false,
     "each reference is given back"},
    {"allocated", "bytes", [](const Sample& s) { return static_cast<double>(s.process.heapBytes); },
     500, false, false, "half a byte a round: less than any block"},
    {"private", "bytes",
     [](const Sample& s) { return static_cast<double>(s.process.privateBytes); }, 65536, false,
     true, "16 pages: the end of the heap comes and goes"},
    {"time", "percent", [](const Sample& s) { return s.milliseconds; }, 10, true, true,
     "what others on the machine may cost"},
}};

double MeanOf(const std::vector<Sample>& samples, const Quantity& quantity) {
  double sum = 0;
  for (const Sample& sample : samples) {
    sum += quantity.of(sample);
  }
  return sum / static_cast<double>(samples.size());
}

// What it gains in 1,000 rounds, by least squares.
double SlopeOf(const std::vector<Sample>& samples, const Quantity& quantity) {
  double rounds = 0;
  for (const Sample& sample : samples) {
    rounds += sample.rounds;
  }
  rounds /= static_cast<double>(samples.size());
  const double mean = MeanOf(samples, quantity);
  double together = 0;
  double squares = 0;
  for (const Sample& sample : samples) {
    const double thousands = (sample.rounds - rounds) / 1000;
    together += thousands * (quantity.of(sample) - mean);
    squares += thousands * thousands;
  }
  return quantity.ofMean ? together / squares / mean * 100 : together / squares;
}

bool Judge(const std::vector<Sample>& samples, unsigned rounds) {
  std::printf("\n%-10s %16s %16s %12s %12s  %s\n", "", "first", "last", "slope", "bound",
              "a 1,000 rounds");
  bool isFlat = true;
  for (const Quantity& quantity : kQuantities) {
    const double slope = SlopeOf(samples, quantity);
    const bool isJudged = rounds >= kLongRun || !quantity.needsLong;
    // A slope of nothing at all may come out a little beside 0.
    constexpr double kNothing = 1e-6;
    const bool isWithin = !isJudged || std::abs(slope) <= quantity.bound + kNothing;
    isFlat = isFlat && isWithin;
    std::printf("%-10s %16.3f %16.3f %12.3f %12.0f  %s: %s\n", quantity.name,
                quantity.of(samples.front()), quantity.of(samples.back()), slope, quantity.bound,
                quantity.unit,
                !isJudged  ? "not judged, the run is too short"
                : isWithin ? quantity.why
                           : "GROWS");
  }
  return isFlat;
}

}  // namespace

int main(int count, char** arguments) try {
  const unsigned rounds = count == 2 ? static_cast<unsigned>(std::atoi(arguments[1])) : 0;
  constexpr unsigned kSamples = 20;
  if (rounds < 5 * kSamples) {
    std::printf("zem_long_run ROUNDS, at least %u\n", 5 * kSamples);
    return 2;
  }
  WriteFile("code", Bytes(1000, 0x5A));
  WriteFile("firmware", FirmwareFile());
  if (ZemSimulatorStartPrivate(R"({"bootLoader": {"start": "camera", "storages":
                                   [{"type": "sf", "size": 65536}, {"type": "dram"}]}})") < 0) {
    std::printf("%s\n", ZemSimulatorLastError());
    return 2;
  }
  const VirtualTime time;
  // What is made once is there before the first sample.
  const unsigned warmUp = rounds / 10;
  std::vector<Sample> samples;
  samples.reserve(kSamples + 1);
  const Sample start = {0, MeasureProcess()};
  unsigned next = warmUp;
  std::printf("%8s %8s %8s %12s %12s %10s\n", "rounds", "handles", "objects", "allocated",
              "private", "ms/round");
  for (unsigned round = 1; round <= rounds; ++round) {
    Round(round);
    if (round != next) {
      continue;
    }
    const Sample last = samples.empty() ? start : samples.back();
    Sample& sample = samples.emplace_back(Sample{round, MeasureProcess(), ZemSimulatorObjects()});
    sample.milliseconds =
        (sample.process.processorMilliseconds - last.process.processorMilliseconds) /
        (round - last.rounds);
    next = warmUp + static_cast<unsigned>(static_cast<std::uint64_t>(rounds - warmUp) *
                                          samples.size() / kSamples);
    std::printf("%8u %8llu %8d %12llu %12llu %10.3f\n", round,
                static_cast<unsigned long long>(sample.process.handles), sample.objects,
                static_cast<unsigned long long>(sample.process.heapBytes),
                static_cast<unsigned long long>(sample.process.privateBytes), sample.milliseconds);
    std::fflush(stdout);
  }
  const bool isFlat = Judge(samples, rounds);
  ZemSimulatorStop();
  return isFlat ? 0 : 1;
} catch (const std::exception& error) {
  std::printf("%s\n", error.what());
  return 2;
}
