// The ROM-boot session: which camera it is opened on, how it ends, its dump file.
#include "romboot/rom_boot_config.h"

#include <sys/resource.h>

#include <csignal>
#include <cwchar>
#include <limits>

#include "tests/support/rom_boot_test.h"

namespace {

using zem::ZemRomBootConfig;
using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::Lines;
using zem::testing::RomBootTest;
using zem::testing::ScriptedVolume;
using zem::testing::VolumePath;
using zem::testing::Written;

const Bytes kBootLoaderReply = {0xAA, 0x55, 0, 0, 'V', 'S', 'N', '2'};
const Bytes kZemStorageReply = {0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'};

// ---- Opening and closing ----

using RomBootConfigTest = RomBootTest;

struct OpenCase {
  unsigned mode;
  bool bootLoader;  // what answers; else the "ZEM" storage
  bool opened;
  std::uint32_t flag;  // the process-wide one behind it
};

TEST_F(RomBootConfigTest, ModeAsksForOneDeviceKind) {
  const std::vector<OpenCase> cases = {
      {1, true, true, 0},      {1, false, false, 0},         {2, true, false, 0},
      {2, false, true, 0},     {0x11, true, true, 1},        {0x11, false, false, 1},
      {0x12, true, false, 1},  {0x12, false, true, 1},       {0, true, false, 0},
      {0, false, false, 0},    {0x10, true, false, 1},       {3, true, false, 0},
      {3, false, false, 0},    {0x101, true, false, 0},      {0x111, true, false, 1},
      {0x22, false, false, 0}, {0xFFFFFFFF, true, false, 1},
  };
  for (const OpenCase& test : cases) {
    SCOPED_TRACE(::testing::Message()
                 << "mode " << test.mode << " boot loader " << test.bootLoader);
    zem::sendAddressDivider = 0;
    volume.identify = test.bootLoader ? kBootLoaderReply : kZemStorageReply;
    void* device = ZEMROMAPI_OpenDevice(test.mode);
    EXPECT_EQ(device != nullptr, test.opened);
    EXPECT_EQ(zem::sendAddressDivider, test.flag);
    EXPECT_EQ(system().OpenVolumePaths().size(), test.opened ? 1U : 0U)
        << "a session that is not handed out closes its volume";
    ZEMROMAPI_CloseDevice(&device);
    EXPECT_TRUE(system().OpenVolumePaths().empty());
  }
}

TEST_F(RomBootConfigTest, WithoutACameraThereIsNoSession) {
  system().volumes.clear();
  EXPECT_EQ(ZEMROMAPI_OpenDevice(1), nullptr);
  EXPECT_EQ(ZEMROMAPI_OpenDevice(0), nullptr);
  EXPECT_EQ(system().volumePaths.size(), 48U);
}

TEST_F(RomBootConfigTest, DividerFlagStaysSetForTheRestOfTheProcess) {
  EXPECT_EQ(ZEMROMAPI_OpenDevice(0x12), nullptr);
  const Lines probe = {"in 12 00 00 00 24 00 [36]",
                       "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
                       "line Set addr div = 1\r\n",
                       "line Send addr div = 1\r\n",
                       "sleep 10",
                       "out fa 55 66 0f 00 00 00 04 00 00 00 00 00 00 00 00 [4]",
                       "line Storage Address Divider=0x1 \r\n"};
  EXPECT_EQ(TakeEvents(), InOrder({probe, {"close \\\\.\\F:"}})) << "of another kind";
  void* device = ZEMROMAPI_OpenDevice(1);
  EXPECT_EQ(TakeEvents(), probe);
  ZEMROMAPI_CloseDevice(&device);
  EXPECT_EQ(TakeEvents(), Lines{"close \\\\.\\F:"});
}

TEST_F(RomBootConfigTest, ASearchLooksAtTheDividerFlagOnceAsItBegins) {
  ScriptedVolume other;
  other.identify = {};
  Attach(L'E', other);
  const auto answer = other.Answer();
  // While the search is under way, another thread's opening sets it.
  system().volumes[VolumePath(L'E')] = [&answer](const auto& request) {
    zem::sendAddressDivider = 1;
    return answer(request);
  };
  const Lines untold = {"in 12 00 00 00 24 00 [36]",
                        "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
                        "line Set addr div = 1\r\n", "line Storage Address Divider=0x1 \r\n"};
  void* device = ZEMROMAPI_OpenDevice(1);
  EXPECT_EQ(TakeEvents(), InOrder({untold, untold}));
  ZEMROMAPI_CloseDevice(&device);
  leftOpen = {VolumePath(L'E')};
}

TEST_F(RomBootConfigTest, ClosingLeavesTheCallersPointerAndNullsDoNothing) {
  void* device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  void* const before = device;
  ZEMROMAPI_CloseDevice(&device);
  EXPECT_EQ(device, before);
  EXPECT_TRUE(system().OpenVolumePaths().empty());
  device = nullptr;
  ZEMROMAPI_CloseDevice(&device);
  ZEMROMAPI_CloseDevice(nullptr);
}

TEST_F(RomBootConfigTest, FieldsFollowEachOtherBehindTheVirtualTable) {
  const ZemRomBootConfig config;
  const auto offset = [&](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&config);
  };
  EXPECT_EQ(offset(&config.dumpEnabled), 8);
  EXPECT_EQ(offset(&config.dumpPath), 8 + static_cast<int>(sizeof(wchar_t)));
  EXPECT_EQ(std::size(config.dumpPath), 260U);
  EXPECT_GT(offset(&config.scsi), offset(&config.dumpPath));
  EXPECT_EQ(config.dumpEnabled, 0U);
  for (const wchar_t character : config.dumpPath) {
    EXPECT_EQ(character, L'\0');
  }
}

// ---- Dump file ----

class DumpFileTest : public RomBootTest {
 protected:
  ZemRomBootConfig& config() { return *static_cast<ZemRomBootConfig*>(session()); }
};

TEST_F(DumpFileTest, SizeIsRoundedUpToBlocksOf4096BytesOfFF) {
  for (const auto& [size, written] :
       std::vector<std::pair<int, std::size_t>>{{5000, 8192}, {4096, 4096}, {1, 4096}}) {
    EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("dump").c_str(), size), 0);
    EXPECT_EQ(ReadFile(PathOf("dump")), Bytes(written, 0xFF));
  }
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(DumpFileTest, PathIsKeptAndTheDumpIsOn) {
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("dump").c_str(), 1), 0);
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(config().dumpPath, PathOf("dump"));
}

TEST_F(DumpFileTest, WithoutASizeTheFileIsLeftAlone) {
  const std::wstring path = WriteFile("dump", {1, 2, 3});
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), path.c_str(), 0), 0);
  EXPECT_EQ(ReadFile(path), (Bytes{1, 2, 3}));
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("none").c_str(), 0), 0);
  EXPECT_FALSE(Exists("none"));
}

TEST_F(DumpFileTest, ANullPathChangesNothing) {
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), nullptr, 4096), 0);
  EXPECT_EQ(config().dumpEnabled, 0U);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("dump").c_str(), 0), 0);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), nullptr, 4096), 0);
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(config().dumpPath, PathOf("dump"));
}

TEST_F(DumpFileTest, APathOf260CharactersLeavesTheDumpOffAndOneOf259IsKept) {
  std::wstring path = PathOf("dump/");
  while (path.size() < 260) {
    path += L"./";
  }
  path.resize(260);
  std::filesystem::create_directories(folder() / "dump");
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), path.c_str(), 4096), 0);
  EXPECT_EQ(config().dumpEnabled, 0U);
  EXPECT_EQ(config().dumpPath[0], L'\0');
  path.resize(259);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), path.c_str(), 0), 0);
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(config().dumpPath, path);
}

TEST_F(DumpFileTest, APathOf260CharactersLeavesARunningDumpAsItIs) {
  const std::wstring dump = WriteFile("dump", Bytes(600, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), std::wstring(260, L'x').c_str(), 4096), 0);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), std::wstring(100000, L'x').c_str(), 4096), 0);
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(config().dumpPath, dump);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 512), 0);
  Bytes mirrored(600, 0x11);
  std::fill_n(mirrored.begin(), 512, std::uint8_t{0xFF});
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(DumpFileTest, AShorterPathTakesThePlaceOfALongOne) {
  const std::wstring longer = WriteFile("dump_with_a_long_name", Bytes(600, 0x11));
  const std::wstring shorter = WriteFile("dump", Bytes(600, 0x22));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), longer.c_str(), 0), 0);
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), shorter.c_str(), 0), 0);
  EXPECT_EQ(config().dumpPath, shorter);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 600), 0);
  EXPECT_EQ(ReadFile(shorter), Bytes(600, 0xFF));
  EXPECT_EQ(ReadFile(longer), Bytes(600, 0x11));
}

TEST_F(DumpFileTest, AFileThatCannotBeCreatedIsNoError) {
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("no/folder").c_str(), 4096), 0);
  EXPECT_EQ(config().dumpEnabled, 1U);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0, 512), 0) << "nor later";
}

TEST_F(DumpFileTest, ADumpThatCannotBeWrittenIsNoFailure) {
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), L"/dev/full", 0), 0);
  EXPECT_EQ(ZEMROMAPI_Erase(session(), 0x1000, 512), 0);
  unsigned int address = 0;
  const std::wstring file = WriteFile("file", Bytes(100000, 0x22));
  EXPECT_EQ(ZEMROMAPI_PartialUpdate(session(), file.c_str(), &address), 1);
  EXPECT_EQ(TakeEvents(), InOrder({Written(0x1000, 1), Written(0, 64), Written(0x8000, 64),
                                   Written(0x10000, 64), Written(0x18000, 4)}));
}

TEST_F(DumpFileTest, ANullSession) {
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(nullptr, PathOf("dump").c_str(), 4096), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_CreateDumpFile(nullptr, nullptr, 4096), ZEM_E_FAIL);
  EXPECT_FALSE(Exists("dump"));
}

// As long as it lives, no file grows beyond a size: writing more fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    const rlimit limit = {size, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~FileSizeLimit() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before_), 0);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*signal_)(int);
  rlimit before_ = {};
};

TEST_F(DumpFileTest, SizeIsTakenAsUnsignedAndAFullDiskIsNoError) {
  for (const int size : {-1, std::numeric_limits<int>::min()}) {
    {
      const FileSizeLimit limit(65536);  // 2 GiB and more are not written here
      EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), PathOf("dump").c_str(), size), 0);
    }
    EXPECT_EQ(ReadFile(PathOf("dump")), Bytes(65536, 0xFF)) << size;
    EXPECT_EQ(config().dumpEnabled, 1U);
  }
}

}  // namespace
