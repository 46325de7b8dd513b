// The encoding-unit family and the bytes of its log.
#include <array>
#include <cstdio>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "simulator/windows/import_hook.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::simulator::ImportHook;
using zem::testing::SimulatorGuard;

constexpr const char* kWithUnits =
    R"({"cameras": [{"encodingUnit": true, "streamProbeUnit": true}]})";

using Block = std::array<unsigned char, 51>;

// What the DLL takes for the time: one at which padding would show in month, day and time of day.
SYSTEMTIME localTime;
void WINAPI TellFixedTime(SYSTEMTIME* time) { *time = localTime; }

class CommandLogTest : public ::testing::Test {
 protected:
  CommandLogTest()
      : clock_(GetModuleHandleW(L"ZemUVCExtApi.dll"), "GetLocalTime",
               reinterpret_cast<FARPROC>(reinterpret_cast<void*>(TellFixedTime))) {
    localTime = {2024, 3, 2, 5, 7, 8, 9, 10};
    std::array<wchar_t, MAX_PATH> folder = {};
    GetWindowsDirectoryW(folder.data(), MAX_PATH);
    path_ = std::wstring(folder.data()) + L"\\Temp\\ZemWrenCmdLog.txt";
    DeleteFileW(path_.c_str());
  }
  ~CommandLogTest() override { DeleteFileW(path_.c_str()); }

  // The log's bytes as UTF-16 text.
  std::wstring ReadLog() const {
    std::FILE* const file = _wfopen(path_.c_str(), L"rb");
    if (file == nullptr) {
      return L"(no file)";
    }
    std::wstring text;
    std::array<unsigned char, 2> unit = {};
    std::size_t read = 0;
    while ((read = std::fread(unit.data(), 1, unit.size(), file)) == unit.size()) {
      text += static_cast<wchar_t>(unit[0] | (unit[1] << 8));
    }
    std::fclose(file);
    EXPECT_EQ(read, 0U) << "an odd number of bytes";
    return text;
  }

  std::wstring path_;

 private:
  ImportHook clock_;
};

class WrenDevice {
 public:
  WrenDevice() { EXPECT_EQ(WREN_OpenDevice(0, &device_), 0); }
  ~WrenDevice() { WREN_CloseDevice(&device_); }
  WrenDevice(const WrenDevice&) = delete;
  WrenDevice& operator=(const WrenDevice&) = delete;

  // NOLINTNEXTLINE(google-explicit-constructor): stands wherever a device object does
  operator void*() const { return device_; }

 private:
  void* device_ = nullptr;
};

TEST_F(CommandLogTest, EveryCallIsAppendedAsUtf16) {
  const SimulatorGuard simulator(kWithUnits);
  const WrenDevice device;
  std::array<unsigned char, 28> rate = {};
  for (std::size_t index = 0; index < rate.size(); ++index) {
    rate[index] = static_cast<unsigned char>(0xA0 + index);
  }
  EXPECT_EQ(WREN_EuSet(device, 3, rate.data(), 28), 0);
  rate.fill(0);
  EXPECT_EQ(WREN_EuGet(device, 3, rate.data(), 6), 0);
  EXPECT_EQ(rate[5], 0xA5);
  localTime = {1999, 12, 5, 31, 23, 59, 58, 999};
  WREN_WriteLog(L"own text %s \u20ac\r\n");
  EXPECT_EQ(WREN_EuSet(device, 6, rate.data(), 1), 0);
  EXPECT_EQ(ReadLog(),
            L"2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :EU Rate Control \r\n"
            L"\t\tdwSliceMode=0xA3A2A1A0\r\n"
            L"\t\tdwAverageBitRate=0xA7A6A5A4\r\n"
            L"\t\tdwPeakBitRate=0xABAAA9A8\r\n"
            L"\t\tdwLeakyBucketSize=0xAFAEADAC\r\n"
            L"\t\tdwQpPrime_I[3]=0xB0, 0xB1, 0xB2\r\n"
            L"\t\tdwQpPrime_P[3]=0xB3, 0xB4, 0xB5\r\n"
            L"\t\tdwQpPrime_B[3]=0xB6, 0xB7, 0xB8\r\n"
            L"\t\tbRateControlMethod=0xB9\r\n"
            L"\t\twLayerID=0xBBBA\r\n"
            L"2024/3/5 7:8:9 : Get : HRESULT=0x00000000 :EU Rate Control \r\n"
            L"\t\tdwSliceMode=0xA3A2A1A0\r\n"
            L"\t\tdwAverageBitRate=0x0000A5A4\r\n"
            L"\t\tdwPeakBitRate=0x00000000\r\n"
            L"\t\tdwLeakyBucketSize=0x00000000\r\n"
            L"\t\tdwQpPrime_I[3]=0x00, 0x00, 0x00\r\n"
            L"\t\tdwQpPrime_P[3]=0x00, 0x00, 0x00\r\n"
            L"\t\tdwQpPrime_B[3]=0x00, 0x00, 0x00\r\n"
            L"\t\tbRateControlMethod=0x00\r\n"
            L"\t\twLayerID=0x0000\r\n"
            L"1999/12/31 23:59:58 : Set : own text %s \u20ac\r\n"
            L"1999/12/31 23:59:58 : Set : HRESULT=0x00000000 :EU Priority ID Control \r\n");
}

TEST_F(CommandLogTest, UnknownControlsAndFailuresGiveHeadersOnOneLine) {
  const SimulatorGuard simulator(kWithUnits);
  const WrenDevice device;
  unsigned char data = 7;
  constexpr auto kUnknownControl = static_cast<ZemResult>(0x80070490);
  EXPECT_EQ(WREN_EuSet(device, 9, &data, 1), kUnknownControl);
  EXPECT_EQ(WREN_EuGet(device, 9, &data, 1), ZEM_E_NO_DEVICE);
  EXPECT_EQ(
      ReadLog(),
      L"2024/3/5 7:8:9 : Set : HRESULT=0x80070490 :2024/3/5 7:8:9 : Get : HRESULT=0x80070490 :");
}

// The fields up to the capability line, and those behind it, of the block of the tests below.
constexpr const wchar_t* kFieldsBefore =
    L"\t\tbmHint=0x1110\r\n"
    L"\t\twIndex=0x1312\r\n"
    L"\t\tdwInterval=0x17161514\r\n"
    L"\t\twKeyFrameRate=0x1918\r\n"
    L"\t\twPFrameRate=0x1B1A\r\n"
    L"\t\twCompQuality=0x1D1C\r\n"
    L"\t\twCompWinSize=0x1F1E\r\n"
    L"\t\twDelay=0x2120\r\n"
    L"\t\tdwMaxFrameSize=0x25242322\r\n"
    L"\t\tdwMaxPayloadSize=0x29282726\r\n"
    L"\t\tbmSetting=0x2B2A\r\n"
    L"\t\tbUsage=0x2C\r\n"
    L"\t\tdwMaxSliceMode=0x302F2E2D\r\n"
    L"\t\tbBitDepthLumaMinus8=0x31\r\n"
    L"\t\tbMaxDecoderFrameBuffering=0x32\r\n"
    L"\t\tbMaxNumberOfReorderFrames=0x33\r\n"
    L"\t\tbMaxNumberOfRefFrames=0x34\r\n";
constexpr const wchar_t* kFieldsBehind =
    L"\t\tbMaxNumberOfRefFrames=0x3E3D\r\n"
    L"\t\tdwNumMacroBlocksperSeconds=0x4241403F\r\n";

Block CountingBlock() {
  Block block = {};
  for (std::size_t index = 0; index < block.size(); ++index) {
    block[index] = static_cast<unsigned char>(0x10 + index);
  }
  return block;
}

class StreamBlockLogTest : public CommandLogTest {
 protected:
  using Transfer = ZemResult(void* device, void* block);

  // A block that is written and read back gives two entries, alike but for their direction.
  void Run(Transfer* set, Transfer* get, const std::wstring& title,
           const std::wstring& capabilityLine) const {
    const SimulatorGuard simulator(kWithUnits);
    const WrenDevice device;
    Block block = CountingBlock();
    EXPECT_EQ(set(device, block.data()), 0);
    block.fill(0);
    EXPECT_EQ(get(device, block.data()), 0);
    EXPECT_EQ(block, CountingBlock());
    const std::wstring fields = title + kFieldsBefore + capabilityLine + kFieldsBehind;
    EXPECT_EQ(ReadLog(), L"2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :" + fields +
                             L"2024/3/5 7:8:9 : Get : HRESULT=0x00000000 :" + fields);
  }
};

TEST_F(StreamBlockLogTest, Probe) {
  Run(WREN_ProbeSet, WREN_ProbeGet, L"H264 Probe \r\n",
      L"\t\tbmSVCCapabilityModes=0x35 0x36 0x37 0x38 0x39 0x3A 0x3B 0x3C\r\n");
}

// The runtime's formatter prints " X" for the misplaced blank and takes no number for it.
TEST_F(StreamBlockLogTest, CommitHasItsOwnCapabilityLine) {
  Run(WREN_CommitSet, WREN_CommitGet, L"H264 Commit \r\n",
      L"\t\tbmSVCCapabilityModes=0x35 0x36 0x37 0x X0x38 0x39 0x3A 0x3B\r\n");
}

TEST_F(CommandLogTest, AbsentUnits) {
  const SimulatorGuard simulator;
  const WrenDevice device;
  Block block = {};
  constexpr auto kUnknownControl = static_cast<ZemResult>(0x80070490);
  EXPECT_EQ(WREN_EuSet(device, 4, block.data(), 4), kUnknownControl);
  EXPECT_EQ(WREN_EuGet(device, 4, block.data(), 4), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_ProbeSet(device, block.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_ProbeGet(device, block.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_CommitSet(device, block.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_CommitGet(device, block.data()), ZEM_E_NO_DEVICE);
}

TEST_F(CommandLogTest, LogThatCannotBeOpenedChangesNothing) {
  const SimulatorGuard simulator(kWithUnits);
  const WrenDevice device;
  // A folder in the file's place.
  ASSERT_TRUE(CreateDirectoryW(path_.c_str(), nullptr));
  unsigned char data = 7;
  EXPECT_EQ(WREN_EuSet(device, 6, &data, 1), 0);
  WREN_WriteLog(L"text");
  EXPECT_TRUE(RemoveDirectoryW(path_.c_str()));
}

TEST_F(CommandLogTest, NoCamera) {
  const SimulatorGuard simulator(R"({"cameras": []})");
  void* device = &device;
  EXPECT_EQ(WREN_OpenDevice(0, &device), ZEM_E_FAIL);
  EXPECT_EQ(device, &device);
  unsigned char data = 7;
  EXPECT_EQ(WREN_EuSet(nullptr, 6, &data, 1), ZEM_E_FAIL);
  EXPECT_EQ(ReadLog(), L"2024/3/5 7:8:9 : Set : HRESULT=0x80004005 :EU Priority ID Control \r\n");
}

}  // namespace
