// The boot loader's single commands: every byte, every result, every line.
#include <array>
#include <functional>

#include "romboot/rom_boot_config.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;

struct BootCommand {
  const char* name;
  std::function<ZemResult(void*)> run;
  std::string wire;
  ZemResult done;
  ZemResult refused;
  Lines doneLines;
  Lines refusedLines;
};

const Lines kNandSelected = {"line Select storage type 'ZEM_STORAGE_SPI_NAND'\r\n"};
const Lines kNandFailed = {"line Failed to select storage type -> ZEM_STORAGE_SPI_NAND.\r\n"};

void PrintTo(const BootCommand& command, std::ostream* out) { *out << command.name; }

const std::vector<BootCommand> kCommands = {
    {"SwitchModePCAM_SF",
     [](void* device) { return ZEMROMAPI_SwitchModePCAM_SF(device); },
     "in fa 55 66 06 05 00 00 00 00 00 00 00 00 00 00 00 [4]",
     0,
     ZEM_E_FAIL,
     {},
     {"line Failed to select storage type -> ZEM_STORAGE_PCAM_SF.\r\n"}},
    {"SwitchModePCAM_DRAM",
     [](void* device) { return ZEMROMAPI_SwitchModePCAM_DRAM(device); },
     "in fa 55 66 06 80 00 00 00 00 00 00 00 00 00 00 00 [4]",
     0,
     ZEM_E_FAIL,
     {},
     {"line Failed to select storage type -> ZEM_STORAGE_PCAM_DRAM.\r\n"}},
    {"SwitchModePCAM_PARALLEL_NAND",
     [](void* device) { return ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(device, 0xA1); },
     "in fa 55 66 06 07 00 a1 00 00 00 00 00 00 00 00 00 [4]", 0, ZEM_E_FAIL, kNandSelected,
     kNandFailed},
    {"SwitchModePCAM_SPI_NAND",
     [](void* device) { return ZEMROMAPI_SwitchModePCAM_SPI_NAND(device, 0xA2); },
     "in fa 55 66 06 06 00 a2 00 00 00 00 00 00 00 00 00 [4]", 0, ZEM_E_FAIL, kNandSelected,
     kNandFailed},
    {"SwitchModePCAM_EMMC",
     [](void* device) { return ZEMROMAPI_SwitchModePCAM_EMMC(device, 0xA3); },
     "in fa 55 66 06 02 00 a3 00 00 00 00 00 00 00 00 00 [4]",
     0,
     ZEM_E_FAIL,
     {},
     {"line Failed to select storage type -> ZEM_STORAGE_EMMC.\r\n"}},
    {"ResetSystem",
     [](void* device) { return ZEMROMAPI_ResetSystem(device); },
     "out fa 55 66 21 00 00 00 00 00 00 00 00 00 00 00 00 [0]",
     1,
     1,
     {},
     {}},
    {"LongJump",
     [](void* device) { return ZEMROMAPI_LongJump(device); },
     "out fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00 [0]",
     0,
     ZEM_E_FAIL,
     {},
     {}},
    {"SetFwDownloadAddr",
     [](void* device) { return ZEMROMAPI_SetFwDownloadAddr(device, 0x12345678); },
     "out fa 55 66 0d 12 34 56 78 00 00 00 00 00 00 00 00 [0]",
     0,
     ZEM_E_FAIL,
     {},
     {}},
    {"WriteRegister",
     [](void* device) { return ZEMROMAPI_WriteRegister(device, 0x9ABCDEF0, 0x5A); },
     "out fa 55 66 05 9a bc de f0 5a 00 00 00 00 00 00 00 [0]",
     0,
     ZEM_E_FAIL,
     {},
     {}},
    {"ReadRegister",
     [](void* device) {
       unsigned char value = 0;
       return ZEMROMAPI_ReadRegister(device, 0x9ABCDEF0, &value);
     },
     "in fa 55 66 04 9a bc de f0 00 00 00 00 00 00 00 00 [1]",
     0,
     ZEM_E_FAIL,
     {},
     {}},
    {"MkEmmcEhancedArea",
     [](void* device) { return ZEMROMAPI_MkEmmcEhancedArea(device, 0x01020304, 0xA5B6C7D8); },
     "out fa 55 66 22 01 01 02 03 04 a5 b6 c7 d8 00 00 00 [0]",
     1,
     0,
     {},
     {}},
};

class BootCommandTest : public RomBootTest, public ::testing::WithParamInterface<BootCommand> {
 protected:
  static bool IsOut() { return GetParam().wire.starts_with("out"); }
  // The command, with the pause before data that goes out.
  static Lines Sent() {
    return IsOut() ? Lines{"sleep 10", GetParam().wire} : Lines{GetParam().wire};
  }
};

TEST_P(BootCommandTest, Accepted) {
  EXPECT_EQ(GetParam().run(session()), GetParam().done);
  EXPECT_EQ(TakeEvents(), InOrder({Sent(), GetParam().doneLines}));
}

TEST_P(BootCommandTest, Refused) {
  session();
  volume.Fail(1, kTimeout);
  EXPECT_EQ(GetParam().run(session()), GetParam().refused);
  Lines sent = Sent();
  sent.back() += " failed";
  EXPECT_EQ(TakeEvents(), InOrder({sent,
                                   {IsOut() ? "line SendScsiCmdIOut Failed, Erroe=0x79 \r\n"
                                            : "line SendScsiCmdIIn Failed, Erroe=0x79 \r\n"},
                                   GetParam().refusedLines}));
}

TEST_P(BootCommandTest, NullSession) {
  if (std::string(GetParam().name) == "MkEmmcEhancedArea") {
    EXPECT_DEATH(GetParam().run(nullptr), "") << "it alone is not tested";
    return;
  }
  EXPECT_EQ(GetParam().run(nullptr), ZEM_E_FAIL);
  EXPECT_TRUE(system().volumePaths.empty());
  EXPECT_EQ(TakeEvents(), Lines());
}

INSTANTIATE_TEST_SUITE_P(Exports, BootCommandTest, ::testing::ValuesIn(kCommands),
                         [](const auto& parameters) { return parameters.param.name; });

using BootRegisterTest = RomBootTest;

TEST_F(BootRegisterTest, ReadGivesTheByteAndLeavesItOnFailure) {
  volume.answers[0x04] = {{0x5A}, {0x5B}};
  unsigned char value = 0;
  EXPECT_EQ(ZEMROMAPI_ReadRegister(session(), 1, &value), 0);
  EXPECT_EQ(value, 0x5A);
  volume.Fail(1, kTimeout);
  volume.repliesInSpiteOfFailure = true;
  EXPECT_EQ(ZEMROMAPI_ReadRegister(session(), 1, &value), ZEM_E_FAIL);
  EXPECT_EQ(value, 0x5A);
}

TEST_F(BootRegisterTest, ANullValueIsRefusedBehindTheSession) {
  EXPECT_EQ(ZEMROMAPI_ReadRegister(session(), 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_ReadRegister(nullptr, 1, nullptr), ZEM_E_FAIL);
  EXPECT_EQ(TakeCommands(), Lines());
}

// ---- Raw commands ----

using RawScsiCommandTest = RomBootTest;

TEST_F(RawScsiCommandTest, GoesOutUnstampedInEitherDirection) {
  const std::array<unsigned char, 16> before = {0xE0, 1, 2,  3,  4,  5,  6,  7,
                                                8,    9, 10, 11, 12, 13, 14, 15};
  std::array<unsigned char, 16> cdb = before;
  volume.answers[3] = {SomeBytes(600), SomeBytes(600)};
  for (const int dataIn : {1, -1}) {
    Bytes data(601, 0xEE);
    EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), dataIn, 600, cdb.data(), data.data()), 0);
    data.pop_back();
    EXPECT_EQ(data, SomeBytes(600));
    EXPECT_EQ(TakeCommands(), Lines{"in e0 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f [600]"});
  }
  Bytes data = SomeBytes(700);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 700, cdb.data(), data.data()), 0);
  EXPECT_EQ(volume.controls.at(0).sent, data);
  EXPECT_EQ(TakeCommands(), Lines{"out e0 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f [700]"});
  EXPECT_EQ(cdb, before);
}

TEST_F(RawScsiCommandTest, WithoutData) {
  std::array<unsigned char, 16> cdb = {};
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 1, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(TakeCommands(), (Lines{"out 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 [0]",
                                   "in 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 [0]"}));
}

TEST_F(RawScsiCommandTest, FailureLeavesTheCallersData) {
  std::array<unsigned char, 16> cdb = {};
  std::array<unsigned char, 2> data = {7, 7};
  volume.answers[0] = {{1, 2}};
  volume.repliesInSpiteOfFailure = true;
  session();
  volume.Fail(1, kTimeout, 2);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 1, 2, cdb.data(), data.data()), ZEM_E_FAIL);
  EXPECT_EQ(data, (std::array<unsigned char, 2>{7, 7}));
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 2, cdb.data(), data.data()), ZEM_E_FAIL);
}

TEST_F(RawScsiCommandTest, ReadsOfMoreThan65536BytesAreRefusedBeforeAnythingIsSent) {
  std::array<unsigned char, 16> cdb = {};
  Bytes data(65537);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 1, 65536, cdb.data(), data.data()), 0);
  TakeCommands();
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 1, 65537, cdb.data(), data.data()), ZEM_E_FAIL);
  EXPECT_EQ(TakeCommands(), Lines());
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 65537, cdb.data(), data.data()), 0)
      << "there is no such limit to what is sent";
}

TEST_F(RawScsiCommandTest, NullPointersAreRefusedBehindTheSession) {
  std::array<unsigned char, 16> cdb = {};
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 1, 1, cdb.data(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 1, cdb.data(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(session(), 0, 0, nullptr, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(nullptr, 0, 0, nullptr, nullptr), ZEM_E_FAIL);
  EXPECT_EQ(TakeCommands(), Lines());
}

}  // namespace
