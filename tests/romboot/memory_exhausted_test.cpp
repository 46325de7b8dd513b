// ROM boot without memory: the plain failure, and nothing sent.
#include "tests/support/memory_limit.h"
#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::ImageFile;
using zem::testing::Lines;
using zem::testing::MemoryExhausted;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;

using RomBootMemoryTest = RomBootTest;

TEST_F(RomBootMemoryTest, NoSession) {
  const MemoryExhausted exhausted;
  EXPECT_EQ(ZEMROMAPI_OpenDevice(0x11), nullptr);
  EXPECT_TRUE(system().volumePaths.empty());
}

TEST_F(RomBootMemoryTest, NoFile) {
  const std::wstring path = WriteFile("file", ImageFile(SomeBytes(4096), SomeBytes(5000)));
  void* const device = session();
  const MemoryExhausted exhausted;
  for (const auto operation :
       {ZEMROMAPI_BurnFw, ZEMROMAPI_BurnPcCamFw, ZEMROMAPI_BurnPcCamFwPnsV2,
        ZEMROMAPI_PartialUpdateWithHeader, ZEMROMAPI_PartialUpdate, ZEMROMAPI_LoadFW2Memory}) {
    unsigned int address = 0x777;
    EXPECT_EQ(operation(device, path.c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(address, 0x777U);
  }
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, path.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, path.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(device, path.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(device, path.c_str(), 0, 0), ZEM_E_FAIL);
  EXPECT_EQ(TakeCommands(), Lines());
}

}  // namespace
