// WAV files byte by byte, and what happens when they cannot be written.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/allocation_count.h"
#include "tests/support/memory_limit.h"
#include "tests/support/temporary_folder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

class WavFileTest : public ::testing::Test {
 protected:
  WavFileTest() { zem::platform::simulated::Reset(); }

  std::int32_t Pack(std::uint8_t channels, std::int32_t sampleRate, std::uint8_t bits) {
    return PackWavFile(folder_.Path("raw").c_str(), folder_.Path("wav").c_str(), channels,
                       sampleRate, bits);
  }

  Bytes Header() {
    Bytes file = folder_.Read("wav");
    file.resize(44);
    return file;
  }

  zem::testing::TemporaryFolder folder_;
};

TEST_F(WavFileTest, OneSecondOfMonoSpeech) {
  Bytes samples(32000);
  for (std::size_t index = 0; index < samples.size(); ++index) {
    samples[index] = static_cast<std::uint8_t>(index * 7);
  }
  folder_.Write("raw", samples);
  EXPECT_EQ(Pack(1, 16000, 16), 1);
  const Bytes file = folder_.Read("wav");
  ASSERT_EQ(file.size(), 32044U);
  EXPECT_EQ(Header(), (Bytes{'R',  'I',  'F', 'F', 0x24, 0x7D, 0, 0, 'W', 'A', 'V', 'E',  //
                             'f',  'm',  't', ' ', 16,   0,    0, 0, 1,   0,   1,   0,    //
                             0x80, 0x3E, 0,   0,   0x00, 0x7D, 0, 0, 2,   0,   16,  0,    //
                             'd',  'a',  't', 'a', 0x00, 0x7D, 0, 0}));
  EXPECT_TRUE(std::equal(samples.begin(), samples.end(), file.begin() + 44));
}

TEST_F(WavFileTest, APipeHasNoLengthToBePacked) {
  const std::string path = (folder_.path() / "raw").string();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  // So that opening it does not wait for the other side.
  const int held = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(held, 0);
  EXPECT_EQ(Pack(1, 16000, 16), 0);
  EXPECT_FALSE(folder_.Exists("wav"));
  close(held);
}

TEST_F(WavFileTest, RatesAreCutToTheirFields) {
  folder_.Write("raw", {1, 2, 3});
  // 255 channels of 255 bits at 0x7FFFFFFF a second: 65,025 * 0x7FFFFFFF is 0x7F007FFF01FF, of
  // which 0x7FFF01FF... keeps 32 bits before it is divided by 8.
  EXPECT_EQ(Pack(255, 0x7FFFFFFF, 255), 1);
  EXPECT_EQ(Header(), (Bytes{'R', 'I', 'F', 'F', 39,   0,    0,    0,    'W', 'A',  'V', 'E',  //
                             'f', 'm', 't', ' ', 16,   0,    0,    0,    1,   0,    255, 0,    //
                             255, 255, 255, 127, 0x3F, 0xE0, 0xFF, 0x0F, 192, 0x1F, 255, 0,    //
                             'd', 'a', 't', 'a', 3,    0,    0,    0}));
}

TEST_F(WavFileTest, BlockAlignmentIsRoundedTowardZero) {
  folder_.Write("raw", {1, 2, 3});
  EXPECT_EQ(Pack(1, -1, 12), 1);
  EXPECT_EQ(Header(), (Bytes{'R', 'I', 'F', 'F', 39,   0,    0,    0,    'W', 'A', 'V', 'E',  //
                             'f', 'm', 't', ' ', 16,   0,    0,    0,    1,   0,   1,   0,    //
                             255, 255, 255, 255, 0xFE, 0xFF, 0xFF, 0x1F, 1,   0,   12,  0,    //
                             'd', 'a', 't', 'a', 3,    0,    0,    0}));
}

TEST_F(WavFileTest, AnEmptyRawFileGivesAHeaderAndCountsAsNotWritten) {
  folder_.Write("raw", {});
  EXPECT_EQ(Pack(2, 48000, 16), 0);
  EXPECT_EQ(folder_.Read("wav"),
            (Bytes{'R', 'I', 'F', 'F', 36, 0, 0,   0,   'W', 'A',  'V',  'E', 'f', 'm',  't',
                   ' ', 16,  0,   0,   0,  1, 0,   2,   0,   0x80, 0xBB, 0,   0,   0x00, 0xEE,
                   2,   0,   4,   0,   16, 0, 'd', 'a', 't', 'a',  0,    0,   0,   0}));
}

TEST_F(WavFileTest, AMissingRawFileCreatesNothing) {
  EXPECT_EQ(Pack(1, 16000, 16), 0);
  EXPECT_FALSE(folder_.Exists("wav"));
}

TEST_F(WavFileTest, AWavPathThatCannotBeOpenedGivesNothing) {
  folder_.Write("raw", {1, 2});
  const std::wstring raw = folder_.Path("raw");
  const std::wstring wav = folder_.Path("missing") + L"/wav";
  EXPECT_EQ(PackWavFile(raw.c_str(), wav.c_str(), 1, 16000, 16), 0);
}

TEST_F(WavFileTest, NullPathsGiveNothing) {
  folder_.Write("raw", {1, 2});
  EXPECT_EQ(PackWavFile(nullptr, folder_.Path("wav").c_str(), 1, 16000, 16), 0);
  EXPECT_EQ(PackWavFile(folder_.Path("raw").c_str(), nullptr, 1, 16000, 16), 0);
  EXPECT_FALSE(folder_.Exists("wav"));
}

TEST_F(WavFileTest, AnExistingWavFileIsReplaced) {
  folder_.Write("raw", {9, 8});
  folder_.Write("wav", Bytes(1000, 0xFF));
  EXPECT_EQ(Pack(1, 8000, 8), 1);
  EXPECT_EQ(folder_.Read("wav").size(), 46U);
}

TEST_F(WavFileTest, TheRawFileIsClosedBeforeTheOtherIsOpened) {
  folder_.Write("raw", {1, 2, 3});
  std::vector<bool> isRawOpen;
  zem::platform::simulated::TheSystem().refuseFile = [&](const std::wstring& /*path*/) {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    isRawOpen.push_back(std::any_of(begin(files), end(files), [this](const auto& file) {
      std::error_code ignored;
      return std::filesystem::read_symlink(file, ignored) == folder_.path() / "raw";
    }));
    return false;
  };
  EXPECT_EQ(Pack(1, 16000, 16), 1);
  EXPECT_EQ(isRawOpen, (std::vector<bool>{false, false}));
}

TEST_F(WavFileTest, AFullDiskIsNotNoticed) {
  folder_.Write("raw", {1, 2});
  EXPECT_EQ(PackWavFile(folder_.Path("raw").c_str(), L"/dev/full", 1, 16000, 16), 1);
}

TEST_F(WavFileTest, LengthsOfFourBytes) {
  folder_.Write("raw", {});
  std::filesystem::resize_file(folder_.Path("raw"), 0x01020304);
  EXPECT_EQ(Pack(1, 16000, 16), 1);
  EXPECT_EQ(std::filesystem::file_size(folder_.Path("wav")), 0x01020330U);
  std::filesystem::resize_file(folder_.Path("wav"), 44);
  EXPECT_EQ(folder_.Read("wav"),
            (Bytes{'R',  'I',  'F', 'F', 0x28, 0x03, 0x02, 0x01, 'W', 'A', 'V', 'E',  //
                   'f',  'm',  't', ' ', 16,   0,    0,    0,    1,   0,   1,   0,    //
                   0x80, 0x3E, 0,   0,   0x00, 0x7D, 0,    0,    2,   0,   16,  0,    //
                   'd',  'a',  't', 'a', 0x04, 0x03, 0x02, 0x01}));
}

// The files of these two are sparse, and nothing of them is read.
TEST_F(WavFileTest, SoundTooLongForItsHeaderCreatesNothing) {
  folder_.Write("raw", {});
  // One byte more than the header's length field can say; and lengths whose lower 32 bits, and
  // those of the sum with the header, are small.
  for (const std::uint64_t size : {4294967260ULL, 4294967295ULL, 4294967296ULL, 4294967297ULL,
                                   4294967340ULL, 8589934600ULL, 1099511627780ULL}) {
    std::filesystem::resize_file(folder_.Path("raw"), size);
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(Pack(1, 16000, 16), 0);
    EXPECT_EQ(exhausted.TakeWanted(), 0U) << size << " is refused without looking for memory";
  }
  EXPECT_FALSE(folder_.Exists("wav"));
}

TEST_F(WavFileTest, SoundThatTheHeaderCanSayIsRefusedForMemoryOnly) {
  folder_.Write("raw", {});
  for (const std::uint64_t size : {2147483646ULL, 2147483647ULL, 2147483648ULL, 4294967259ULL}) {
    std::filesystem::resize_file(folder_.Path("raw"), size);
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(Pack(1, 16000, 16), 0);
    EXPECT_EQ(exhausted.TakeWanted(), size);
  }
  EXPECT_FALSE(folder_.Exists("wav"));
}

TEST_F(WavFileTest, ExhaustedMemoryLeavesAnExistingWavFile) {
  folder_.Write("raw", {1, 2, 3});
  folder_.Write("wav", {9});
  const zem::testing::MemoryExhausted exhausted;
  EXPECT_EQ(Pack(1, 16000, 16), 0);
  EXPECT_EQ(folder_.Read("wav"), Bytes{9});
}

// Longer than what the runtime may have read ahead when the file was measured.
TEST_F(WavFileTest, ARawFileThatBecomesShorterIsFilledUpWithZeros) {
  folder_.Write("raw", Bytes(100000, 3));
  {
    const zem::testing::BeforeAllocation shorten(
        [this] { std::filesystem::resize_file(folder_.Path("raw"), 60000); });
    EXPECT_EQ(Pack(1, 16000, 16), 1);
  }
  const Bytes file = folder_.Read("wav");
  ASSERT_EQ(file.size(), 100044U);
  EXPECT_EQ(Bytes(file.begin() + 40, file.begin() + 44), (Bytes{0xA0, 0x86, 0x01, 0x00}));
  EXPECT_TRUE(Bytes(file.begin() + 44, file.begin() + 60044) == Bytes(60000, 3));
  EXPECT_TRUE(Bytes(file.begin() + 60044, file.end()) == Bytes(40000));
}

// Longer than what the runtime may have read ahead, too.
TEST_F(WavFileTest, OnePathForBothFilesPutsTheHeaderInFront) {
  folder_.Write("raw", Bytes(100000, 3));
  const std::wstring path = folder_.Path("raw");
  EXPECT_EQ(PackWavFile(path.c_str(), path.c_str(), 1, 16000, 16), 1);
  const Bytes file = folder_.Read("raw");
  ASSERT_EQ(file.size(), 100044U);
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 8),
            (Bytes{'R', 'I', 'F', 'F', 0xC4, 0x86, 0x01, 0x00}));
  EXPECT_TRUE(Bytes(file.begin() + 44, file.end()) == Bytes(100000, 3));
}

TEST_F(WavFileTest, AFolderInPlaceOfTheRawFileCreatesNothing) {
  std::filesystem::create_directory(folder_.Path("raw"));
  EXPECT_EQ(Pack(1, 16000, 16), 0);
  EXPECT_FALSE(folder_.Exists("wav"));
}

TEST_F(WavFileTest, TakesTheRawSizeAndLittleElse) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "this build does not count allocations";
  }
  folder_.Write("raw", Bytes(100000, 3));
  const std::wstring raw = folder_.Path("raw");
  const std::wstring wav = folder_.Path("wav");
  const std::uint64_t before = zem::testing::AllocatedBytes();
  EXPECT_EQ(PackWavFile(raw.c_str(), wav.c_str(), 1, 16000, 16), 1);
  const std::uint64_t taken = zem::testing::AllocatedBytes() - before;
  EXPECT_GE(taken, 100000U);
  // The rest is the runtime's records and buffers of two open files, and their paths.
  EXPECT_LT(taken, 100000U + 12288U);
}

}  // namespace
