// The bytes of the command log.
#include "encoding/command_log.h"

#include <array>
#include <string>
#include <vector>

#include "tests/encoding/log_test.h"

namespace {

using zem::Direction;
using zem::LogTransfer;
using zem::testing::Header;
using zem::testing::LogTest;

// A block whose bytes count up from `first`.
std::vector<std::uint8_t> CountingBlock(std::size_t size, unsigned first) {
  std::vector<std::uint8_t> block(size);
  for (std::size_t index = 0; index < size; ++index) {
    block[index] = static_cast<std::uint8_t>(first + index);
  }
  return block;
}

using CommandLogTest = LogTest;

TEST_F(CommandLogTest, TitlesOfTheEncodingUnit) {
  const std::vector<std::pair<std::uint16_t, std::string>> titles = {
      {1, "EU Video Resolution Control \r\n"},
      {2, "EU Frame Interval Control \r\n"},
      {4, "EU Sync Frame Control \r\n"},
      {5, "EU Long Term Ref Frame Control \r\n"},
      {6, "EU Priority ID Control \r\n"},
      {7, "EU Start Layer Control \r\n"},
      {8, "EU Stop Layer Control \r\n"},
      {0, ""},
      {9, ""},
      {23, ""},
      {0x103, ""},
  };
  for (const auto& [selector, title] : titles) {
    LogTransfer(Direction::kSet, zem::EncodingUnitXu, selector, CountingBlock(51, 1), 0);
    EXPECT_EQ(TakeLog(), Header("Set") + title) << selector;
  }
}

TEST_F(CommandLogTest, RateControlFields) {
  LogTransfer(Direction::kGet, zem::EncodingUnitXu, 3, CountingBlock(28, 0xA0), 0);
  EXPECT_EQ(TakeLog(),
            "2024/3/5 7:8:9 : Get : HRESULT=0x00000000 :EU Rate Control \r\n"
            "\t\tdwSliceMode=0xA3A2A1A0\r\n"
            "\t\tdwAverageBitRate=0xA7A6A5A4\r\n"
            "\t\tdwPeakBitRate=0xABAAA9A8\r\n"
            "\t\tdwLeakyBucketSize=0xAFAEADAC\r\n"
            "\t\tdwQpPrime_I[3]=0xB0, 0xB1, 0xB2\r\n"
            "\t\tdwQpPrime_P[3]=0xB3, 0xB4, 0xB5\r\n"
            "\t\tdwQpPrime_B[3]=0xB6, 0xB7, 0xB8\r\n"
            "\t\tbRateControlMethod=0xB9\r\n"
            "\t\twLayerID=0xBBBA\r\n");
}

TEST_F(CommandLogTest, RateControlFieldsBeyondTheBlockAreZero) {
  // The heap's guard zones end the test if a byte behind the block is read.
  LogTransfer(Direction::kSet, zem::EncodingUnitXu, 3, CountingBlock(6, 0xA0), 0);
  EXPECT_EQ(TakeLog(),
            "2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :EU Rate Control \r\n"
            "\t\tdwSliceMode=0xA3A2A1A0\r\n"
            "\t\tdwAverageBitRate=0x0000A5A4\r\n"
            "\t\tdwPeakBitRate=0x00000000\r\n"
            "\t\tdwLeakyBucketSize=0x00000000\r\n"
            "\t\tdwQpPrime_I[3]=0x00, 0x00, 0x00\r\n"
            "\t\tdwQpPrime_P[3]=0x00, 0x00, 0x00\r\n"
            "\t\tdwQpPrime_B[3]=0x00, 0x00, 0x00\r\n"
            "\t\tbRateControlMethod=0x00\r\n"
            "\t\twLayerID=0x0000\r\n");
  for (std::size_t size = 0; size < 28; ++size) {
    LogTransfer(Direction::kSet, zem::EncodingUnitXu, 3, CountingBlock(size, 0xA0), 0);
  }
}

TEST_F(CommandLogTest, BlocksLongerThanTheLogKnows) {
  LogTransfer(Direction::kSet, zem::EncodingUnitXu, 3, CountingBlock(65535, 0xA0), 0);
  EXPECT_TRUE(TakeLog().ends_with("\t\tbRateControlMethod=0xB9\r\n\t\twLayerID=0xBBBA\r\n"));
}

// What is logged of a stream block that counts up from 0x10, around its capability line.
std::string StreamFields(const std::string& capabilityLine) {
  return "\t\tbmHint=0x1110\r\n"
         "\t\twIndex=0x1312\r\n"
         "\t\tdwInterval=0x17161514\r\n"
         "\t\twKeyFrameRate=0x1918\r\n"
         "\t\twPFrameRate=0x1B1A\r\n"
         "\t\twCompQuality=0x1D1C\r\n"
         "\t\twCompWinSize=0x1F1E\r\n"
         "\t\twDelay=0x2120\r\n"
         "\t\tdwMaxFrameSize=0x25242322\r\n"
         "\t\tdwMaxPayloadSize=0x29282726\r\n"
         "\t\tbmSetting=0x2B2A\r\n"
         "\t\tbUsage=0x2C\r\n"
         "\t\tdwMaxSliceMode=0x302F2E2D\r\n"
         "\t\tbBitDepthLumaMinus8=0x31\r\n"
         "\t\tbMaxDecoderFrameBuffering=0x32\r\n"
         "\t\tbMaxNumberOfReorderFrames=0x33\r\n"
         "\t\tbMaxNumberOfRefFrames=0x34\r\n" +
         capabilityLine +
         "\t\tbMaxNumberOfRefFrames=0x3E3D\r\n"
         "\t\tdwNumMacroBlocksperSeconds=0x4241403F\r\n";
}

TEST_F(CommandLogTest, ProbeFields) {
  LogTransfer(Direction::kSet, zem::StreamProbeXu, 23, CountingBlock(51, 0x10), 0);
  EXPECT_EQ(
      TakeLog(),
      "2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :H264 Probe \r\n" +
          StreamFields("\t\tbmSVCCapabilityModes=0x35 0x36 0x37 0x38 0x39 0x3A 0x3B 0x3C\r\n"));
}

// This system's formatter prints the malformed conversion as it stands and takes no number for it.
TEST_F(CommandLogTest, CommitFieldsDifferInTheCapabilityLine) {
  LogTransfer(Direction::kGet, zem::StreamProbeXu, 24, CountingBlock(51, 0x10), 1);
  EXPECT_EQ(
      TakeLog(),
      "2024/3/5 7:8:9 : Get : HRESULT=0x00000001 :H264 Commit \r\n" +
          StreamFields("\t\tbmSVCCapabilityModes=0x35 0x36 0x37 0x%.1 X0x38 0x39 0x3A 0x3B\r\n"));
}

TEST_F(CommandLogTest, WidthsOfSmallRateControlNumbers) {
  LogTransfer(Direction::kGet, zem::EncodingUnitXu, 3, std::vector<std::uint8_t>(28), 0);
  EXPECT_EQ(TakeLog(), Header("Get") +
                           "EU Rate Control \r\n"
                           "\t\tdwSliceMode=0x00000000\r\n"
                           "\t\tdwAverageBitRate=0x00000000\r\n"
                           "\t\tdwPeakBitRate=0x00000000\r\n"
                           "\t\tdwLeakyBucketSize=0x00000000\r\n"
                           "\t\tdwQpPrime_I[3]=0x00, 0x00, 0x00\r\n"
                           "\t\tdwQpPrime_P[3]=0x00, 0x00, 0x00\r\n"
                           "\t\tdwQpPrime_B[3]=0x00, 0x00, 0x00\r\n"
                           "\t\tbRateControlMethod=0x00\r\n"
                           "\t\twLayerID=0x0000\r\n");
}

TEST_F(CommandLogTest, WidthsOfSmallNumbers) {
  LogTransfer(Direction::kSet, zem::StreamProbeXu, 23, std::vector<std::uint8_t>(51), 0);
  EXPECT_EQ(TakeLog(),
            "2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :H264 Probe \r\n"
            "\t\tbmHint=0x0000\r\n"
            "\t\twIndex=0x0000\r\n"
            "\t\tdwInterval=0x00000000\r\n"
            "\t\twKeyFrameRate=0x0000\r\n"
            "\t\twPFrameRate=0x0000\r\n"
            "\t\twCompQuality=0x0000\r\n"
            "\t\twCompWinSize=0x0000\r\n"
            "\t\twDelay=0x0000\r\n"
            "\t\tdwMaxFrameSize=0x00000000\r\n"
            "\t\tdwMaxPayloadSize=0x00000000\r\n"
            "\t\tbmSetting=0x0000\r\n"
            "\t\tbUsage=0x0\r\n"
            "\t\tdwMaxSliceMode=0x0000\r\n"
            "\t\tbBitDepthLumaMinus8=0x0\r\n"
            "\t\tbMaxDecoderFrameBuffering=0x0\r\n"
            "\t\tbMaxNumberOfReorderFrames=0x0\r\n"
            "\t\tbMaxNumberOfRefFrames=0x0\r\n"
            "\t\tbmSVCCapabilityModes=0x0 0x0 0x0 0x0 0x0 0x0 0x0 0x0\r\n"
            "\t\tbMaxNumberOfRefFrames=0x00\r\n"
            "\t\tdwNumMacroBlocksperSeconds=0x0000\r\n");
}

TEST_F(CommandLogTest, OtherSelectorsAndUnitsGiveTheHeaderOnly) {
  LogTransfer(Direction::kSet, zem::StreamProbeXu, 22, CountingBlock(51, 1), 0);
  EXPECT_EQ(TakeLog(), Header("Set"));
  LogTransfer(Direction::kGet, zem::StreamProbeXu, 3, CountingBlock(51, 1), 0);
  EXPECT_EQ(TakeLog(), Header("Get"));
  LogTransfer(Direction::kGet, zem::VendorXu, 3, CountingBlock(51, 1), 0);
  EXPECT_EQ(TakeLog(), Header("Get"));
  GUID almost = zem::EncodingUnitXu;
  almost.Data4[7] ^= 1;
  LogTransfer(Direction::kGet, almost, 3, CountingBlock(51, 1), 0);
  EXPECT_EQ(TakeLog(), Header("Get")) << "units are compared by all their bytes";
}

TEST_F(CommandLogTest, EveryCallIsAppended) {
  const unsigned char data = 7;
  LogTransfer(Direction::kSet, zem::EncodingUnitXu, 9, {&data, 1}, 0);
  system().localTime = {1999, 12, 31, 23, 59, 58};
  LogTransfer(Direction::kGet, zem::EncodingUnitXu, 6, {&data, 1}, E_FAIL);
  WREN_WriteLog(L"and %s so \u20ac on");
  LogTransfer(Direction::kSet, zem::EncodingUnitXu, 9, {&data, 1}, 0);
  EXPECT_EQ(TakeLog(),
            "2024/3/5 7:8:9 : Set : HRESULT=0x00000000 :"
            "1999/12/31 23:59:58 : Get : HRESULT=0x80004005 :EU Priority ID Control \r\n"
            "1999/12/31 23:59:58 : Set : and %s so \xE2\x82\xAC on"
            "1999/12/31 23:59:58 : Set : HRESULT=0x00000000 :");
}

TEST_F(CommandLogTest, OwnTextOfAnyLength) {
  WREN_WriteLog(std::wstring(10000, L'x').c_str());
  EXPECT_EQ(TakeLog(), "2024/3/5 7:8:9 : Set : " + std::string(10000, 'x'));
  WREN_WriteLog(L"");
  EXPECT_EQ(TakeLog(), "2024/3/5 7:8:9 : Set : ");
  WREN_WriteLog(nullptr);
  EXPECT_FALSE(std::filesystem::exists(LogPath()));
}

TEST_F(CommandLogTest, WithoutAFolderOfTheUsersItLiesInTmp) {
  unsetenv("TMPDIR");
  std::vector<std::wstring> opened;
  system().refuseFile = [&](const std::wstring& path) {
    opened.push_back(path);
    return true;
  };
  WREN_WriteLog(L"text");
  LogTransfer(Direction::kSet, zem::EncodingUnitXu, 9, {}, 0);
  EXPECT_EQ(opened,
            (std::vector<std::wstring>{L"/tmp/ZemWrenCmdLog.txt", L"/tmp/ZemWrenCmdLog.txt"}));
}

}  // namespace
