// Every operation of several commands, with each of them failing in turn: for good, and for once.
#include <functional>

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::ImageFile;
using zem::testing::Joined;
using zem::testing::kGeneralFailure;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::LinuxHeader;
using zem::testing::PcCamFile;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::WideLines;

struct SweptOperation {
  const char* name;
  Bytes file;
  std::function<ZemResult(void* device, const wchar_t* path)> run;
  ZemResult done = 1;
  // The first command's failure is ignored.
  bool ignoresFirst = false;
};

void PrintTo(const SweptOperation& operation, std::ostream* out) { *out << operation.name; }

using AddressedOperation = ZemResult (*)(void*, const wchar_t*, unsigned int*);

std::function<ZemResult(void*, const wchar_t*)> At(AddressedOperation operation,
                                                   unsigned int start) {
  return [=](void* device, const wchar_t* path) {
    unsigned int address = start;
    return operation(device, path, &address);
  };
}

const std::vector<SweptOperation>& Operations() {
  static const Bytes section = SomeBytes(4096 + 100000);
  static const std::vector<SweptOperation> operations = {
      {"Erase",
       {},
       [](void* device, const wchar_t*) { return ZEMROMAPI_Erase(device, 0x1000, 100000); },
       0},
      {"BurnFw", ImageFile(SomeBytes(4096, 9), SomeBytes(100000)), At(ZEMROMAPI_BurnFw, 0x10000), 1,
       true},
      {"BurnPcCamFw", PcCamFile(40, section), At(ZEMROMAPI_BurnPcCamFw, 0)},
      {"BurnPcCamFwPnsV2", PcCamFile(40, section), At(ZEMROMAPI_BurnPcCamFwPnsV2, 0)},
      {"UpdateLinuxFwPkg", Joined({LinuxHeader(9, 0x1234), section}),
       [](void* device, const wchar_t* path) {
         return ZEMROMAPI_UpdateLinuxFwPkg(device, path, 0x300000, 0x20000);
       }},
      {"UpdateLinuxFwPkg_", Joined({LinuxHeader(9, 0x1234), section}),
       [](void* device, const wchar_t* path) {
         return ZEMROMAPI_UpdateLinuxFwPkg_(device, path, 0x20000);
       }},
      {"PartialUpdateWithHeader", section, At(ZEMROMAPI_PartialUpdateWithHeader, 0x8000)},
      {"PartialUpdate", section, At(ZEMROMAPI_PartialUpdate, 0x8000)},
      {"PartialRead",
       {},
       [](void* device, const wchar_t* path) {
         unsigned int address = 0;
         return ZEMROMAPI_PartialRead(device, path, &address, 100000);
       }},
      {"LoadFW2Memory", section, At(ZEMROMAPI_LoadFW2Memory, 0)},
      {"LoadMiniUVC", section, ZEMROMAPI_LoadMiniUVC},
  };
  return operations;
}

class FailureSweepTest : public RomBootTest, public ::testing::WithParamInterface<SweptOperation> {
 protected:
  // One run on a session of its own.
  struct Run {
    ZemResult result;
    Lines commands;
    WideLines lines;
    std::vector<Bytes> sent;
    std::size_t longSleeps;
  };
  Run Execute(std::size_t failing = 0, std::uint32_t error = 0, std::size_t count = 1) {
    void* device = ZEMROMAPI_OpenDevice(1);
    TakeCommands();
    TakeDebuggerLines();
    TakeSleeps();
    if (failing > 0) {
      volume.Fail(failing, error, count);
    }
    Run run = {};
    run.result = GetParam().run(device, WriteFile("file", GetParam().file).c_str());
    for (const auto& control : volume.controls) {
      if (!control.failed) {
        run.sent.push_back(control.sent);
      }
    }
    run.commands = TakeCommands();
    run.lines = TakeDebuggerLines();
    for (const std::uint32_t sleep : TakeSleeps()) {
      run.longSleeps += sleep == 500 ? 1 : 0;
    }
    ZEMROMAPI_CloseDevice(&device);
    EXPECT_TRUE(system().OpenVolumePaths().empty()) << "everything is released";
    return run;
  }
};

TEST_P(FailureSweepTest, ACommandThatFailsForGoodIsTheLastOne) {
  const Run good = Execute();
  ASSERT_EQ(good.result, GetParam().done);
  ASSERT_GE(good.commands.size(), 4U);
  for (std::size_t failing = 1; failing <= good.commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kTimeout);
    const bool ignored = failing == 1 && GetParam().ignoresFirst;
    EXPECT_EQ(run.result, ignored ? GetParam().done : ZEM_E_FAIL);
    Lines commands = good.commands;
    commands.resize(ignored ? commands.size() : failing);
    commands[failing - 1] += " failed";
    EXPECT_EQ(run.commands, commands);
    std::vector<Bytes> sent = good.sent;
    if (ignored) {
      sent.erase(sent.begin());
    } else {
      sent.resize(failing - 1);
    }
    EXPECT_EQ(run.sent, sent);
  }
}

TEST_P(FailureSweepTest, ACommandThatFailsOnceWithError31IsSentAgainAndNothingElseChanges) {
  const Run good = Execute();
  for (std::size_t failing = 1; failing <= good.commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kGeneralFailure);
    EXPECT_EQ(run.result, GetParam().done);
    Lines commands = good.commands;
    commands.insert(commands.begin() + static_cast<std::ptrdiff_t>(failing) - 1,
                    commands[failing - 1] + " failed");
    EXPECT_EQ(run.commands, commands);
    EXPECT_EQ(run.sent, good.sent);
    EXPECT_EQ(run.lines, good.lines);
    EXPECT_EQ(run.longSleeps, good.longSleeps + 1);
  }
}

TEST_P(FailureSweepTest, ACommandThatFailsSixTimesWithError31IsTheLastOne) {
  const Run good = Execute();
  for (std::size_t failing = 1; failing <= good.commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kGeneralFailure, 6);
    const bool ignored = failing == 1 && GetParam().ignoresFirst;
    EXPECT_EQ(run.result, ignored ? GetParam().done : ZEM_E_FAIL);
    EXPECT_EQ(run.commands.size(), ignored ? good.commands.size() + 5 : failing + 5);
    EXPECT_EQ(run.longSleeps, 5U);
  }
}

INSTANTIATE_TEST_SUITE_P(Exports, FailureSweepTest, ::testing::ValuesIn(Operations()),
                         [](const auto& parameters) { return parameters.param.name; });

}  // namespace
