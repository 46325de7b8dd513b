// Files from 2 GiB on. The files take no room on the disk, and nothing of them is read but the
// first piece: where a whole one is wanted, its memory is refused, and what was wanted is looked
// at.
#include "tests/support/memory_limit.h"
#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::kTimeout;
using zem::testing::kTransferFailedEvent;
using zem::testing::Lines;
using zem::testing::LinuxHeader;
using zem::testing::MemoryExhausted;
using zem::testing::NotWritten;
using zem::testing::RomBootTest;
using zem::testing::Written;

constexpr std::uint64_t k2GiB = 0x80000000;
constexpr std::uint64_t k4GiB = 0x100000000;

class LongFileTest : public RomBootTest {
 protected:
  std::wstring File(std::uint64_t size) const { return WriteLongFile("long", {}, size); }
  unsigned int address = 0;
};

// ---- In pieces ----

TEST_F(LongFileTest, PartialUpdateTakesWhatReachesTheLastAddress) {
  struct Case {
    unsigned int start;
    std::uint64_t size;
  };
  for (const Case& test : std::vector<Case>{{0, k2GiB - 1},
                                            {0, k2GiB},
                                            {0x40000000, 3 * k2GiB / 2 - 511},
                                            {0x40000000, 3 * k2GiB / 2},
                                            {0, k4GiB - 1},
                                            {0, k4GiB}}) {
    SCOPED_TRACE(test.size);
    const std::wstring path = File(test.size);
    session();
    address = test.start;
    volume.Fail(2, kTimeout);
    EXPECT_EQ(ZEMROMAPI_PartialUpdate(session(), path.c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(TakeEvents(), InOrder({Written(test.start, 64),
                                     NotWritten(test.start + 0x8000, 64),
                                     {kTransferFailedEvent}}));
    EXPECT_EQ(address, test.start + 0x8000);
  }
}

TEST_F(LongFileTest, PartialUpdateRefusesWhatWouldReachPastTheLastAddress) {
  for (const std::uint64_t size :
       {k4GiB - 0x1000 + 1, k4GiB, k4GiB + 512, k4GiB + k2GiB, 2 * k4GiB, 2 * k4GiB + 512}) {
    SCOPED_TRACE(size);
    address = 0x1000;
    EXPECT_EQ(ZEMROMAPI_PartialUpdate(session(), File(size).c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(address, 0x1000U);
  }
  EXPECT_EQ(TakeEvents(), Lines());
}

// ---- Whole ----

TEST_F(LongFileTest, WhatIsReadWholeIsRefusedForMemoryOnly) {
  void* const device = session();
  for (const std::uint64_t size : {k2GiB - 1, k2GiB, k4GiB - 512, k4GiB}) {
    SCOPED_TRACE(size);
    const std::wstring path = WriteLongFile("long", LinuxHeader(0, 0), size);
    const wchar_t* const text = path.c_str();
    const MemoryExhausted exhausted;
    for (const auto operation : {ZEMROMAPI_BurnFw, ZEMROMAPI_BurnPcCamFw,
                                 ZEMROMAPI_BurnPcCamFwPnsV2, ZEMROMAPI_PartialUpdateWithHeader}) {
      EXPECT_EQ(operation(device, text, &address), ZEM_E_FAIL);
      EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 512) << "with room for the last sector";
    }
    EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(device, text, &address), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 32768);
    EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, text), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 512);
    EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, text), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 512);
    EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(device, text, 0, 0), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 512);
    EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg_(device, text, 0), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size + 512);
    EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(device, text), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), size);
  }
  EXPECT_EQ(address, 0U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(LongFileTest, APackageMayBeLongerThanTheDataThatItsFieldsNeed) {
  void* const device = session();
  const std::wstring path = File(k4GiB + 100);
  const MemoryExhausted exhausted;
  for (const auto operation :
       {ZEMROMAPI_BurnFw, ZEMROMAPI_BurnPcCamFw, ZEMROMAPI_BurnPcCamFwPnsV2}) {
    EXPECT_EQ(operation(device, path.c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), k4GiB + 612);
  }
  EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(nullptr, path.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(MemoryExhausted::TakeWanted(), k4GiB + 100);
}

TEST_F(LongFileTest, WhatNoAddressOrFieldCanHoldIsRefusedWithoutTakingMemory) {
  void* const device = session();
  const auto refused = [&](ZemResult result) {
    EXPECT_EQ(result, ZEM_E_FAIL);
    EXPECT_EQ(MemoryExhausted::TakeWanted(), 0U);
  };
  const MemoryExhausted exhausted;
  const std::wstring path = File(k4GiB + 1);
  refused(ZEMROMAPI_PartialUpdateWithHeader(device, path.c_str(), &address));
  refused(ZEMROMAPI_LoadFW2Memory(device, path.c_str(), &address));

  // A Linux package's header has its own place.
  const std::wstring longest = WriteLongFile("linux", LinuxHeader(0, 0), k4GiB + 8192);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(device, longest.c_str(), 0, 0), ZEM_E_FAIL);
  EXPECT_EQ(MemoryExhausted::TakeWanted(), k4GiB + 8192 + 512);
  const std::wstring linux = WriteLongFile("linux", LinuxHeader(0, 0), k4GiB + 8193);
  refused(ZEMROMAPI_UpdateLinuxFwPkg(device, linux.c_str(), 0, 0));
  refused(ZEMROMAPI_UpdateLinuxFwPkg_(device, linux.c_str(), 0));

  // Code has no address, but its sectors are counted in 32 bits.
  constexpr std::uint64_t kLongestCode = 0xFFFFFFFF * std::uint64_t{512};
  const std::wstring code = File(kLongestCode);
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, code.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(MemoryExhausted::TakeWanted(), kLongestCode + 512);
  const std::wstring longCode = File(kLongestCode + 1);
  refused(ZEMROMAPI_LoadMiniUVC(device, longCode.c_str()));
  refused(ZEMROMAPI_LoadUpdater(device, longCode.c_str()));

  EXPECT_EQ(address, 0U);
  EXPECT_EQ(TakeEvents(), Lines());
}

// ---- The dump file ----

TEST_F(LongFileTest, DumpAddressesFrom2GiBOnAreThePlacesInTheFile) {
  const std::wstring dump = WriteFile("dump", {});
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  const Bytes bytes = zem::testing::SomeBytes(700);
  for (const unsigned int start : {0x7FFFFE00U, 0x80000000U, 0xC0000000U, 0xFFFFF000U}) {
    SCOPED_TRACE(start);
    address = start;
    EXPECT_EQ(ZEMROMAPI_PartialUpdate(session(), WriteFile("file", bytes).c_str(), &address), 1);
    EXPECT_EQ(std::filesystem::file_size(dump), std::uint64_t{start} + 700);
    EXPECT_EQ(ReadPart(dump, start, 700), bytes);
    EXPECT_EQ(ZEMROMAPI_Erase(session(), start, 600), 0);
    EXPECT_EQ(ReadPart(dump, start, 600), Bytes(600, 0xFF));
    EXPECT_EQ(ReadPart(dump, start + std::uint64_t{600}, 100),
              zem::testing::PartOf(bytes, 600, 100));
  }
  EXPECT_EQ(ReadPart(dump, 0, 4096), Bytes(4096, 0));
}

}  // namespace
