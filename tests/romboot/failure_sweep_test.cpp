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

struct SweptOperation {
  const char* name;
  Bytes file;
  std::function<ZemResult(void* device, const wchar_t* path)> run;
  ZemResult done = 1;
  // What the operation itself says about a command that failed; null for nothing.
  const char* reported = "line Failed to transfer data to device.\r\n";
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
       "line Failed to transfer data to device.\r\n", true},
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
       },
       1,
       "line Usb transfer failed\r\n"},
      {"LoadFW2Memory", section, At(ZEMROMAPI_LoadFW2Memory, 0)},
      {"LoadMiniUVC", section, ZEMROMAPI_LoadMiniUVC, 1, nullptr},
  };
  return operations;
}

class FailureSweepTest : public RomBootTest, public ::testing::WithParamInterface<SweptOperation> {
 protected:
  // One run on a session of its own.
  struct Run {
    ZemResult result;
    Lines events;
    std::vector<Bytes> sent;
  };
  Run Execute(std::size_t failing = 0, std::uint32_t error = 0, std::size_t count = 1) {
    void* device = ZEMROMAPI_OpenDevice(1);
    TakeEvents();
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
    run.events = TakeEvents();
    ZEMROMAPI_CloseDevice(&device);
    TakeEvents();
    EXPECT_TRUE(system().OpenVolumePaths().empty()) << "everything is released";
    return run;
  }

  // Where the commands are among the events of a run.
  static std::vector<std::ptrdiff_t> CommandsAmong(const Lines& events) {
    std::vector<std::ptrdiff_t> places;
    for (std::size_t index = 0; index < events.size(); ++index) {
      if (events[index].starts_with("in ") || events[index].starts_with("out ")) {
        places.push_back(static_cast<std::ptrdiff_t>(index));
      }
    }
    return places;
  }

  // The events of a run without failures, but that the command at `place` has failed `times` times
  // and is reported.
  static Lines Broken(const Lines& good, std::ptrdiff_t place, std::size_t times,
                      const std::string& code) {
    const std::string& command = good[static_cast<std::size_t>(place)];
    Lines events(good.begin(), good.begin() + place);
    for (std::size_t time = 0; time < times; ++time) {
      if (time > 0) {
        events.emplace_back("sleep 500");
      }
      events.push_back(command + " failed");
    }
    events.push_back("line SendScsiCmd" + std::string(command.starts_with("in ") ? "IIn" : "IOut") +
                     " Failed, Erroe=" + code + " \r\n");
    if (GetParam().reported != nullptr) {
      events.emplace_back(GetParam().reported);
    }
    const bool ignored = GetParam().ignoresFirst && place == CommandsAmong(good).front();
    const bool last = place == CommandsAmong(good).back();
    if (ignored || last) {
      events.insert(events.end(), good.begin() + place + 1, good.end());
    }
    return events;
  }

  static ZemResult ResultWithout(std::size_t failing) {
    return failing == 1 && GetParam().ignoresFirst ? GetParam().done : ZEM_E_FAIL;
  }
};

TEST_P(FailureSweepTest, ACommandThatFailsForGoodIsTheLastOne) {
  const Run good = Execute();
  ASSERT_EQ(good.result, GetParam().done);
  const auto commands = CommandsAmong(good.events);
  ASSERT_GE(commands.size(), 4U);
  for (std::size_t failing = 1; failing <= commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kTimeout);
    EXPECT_EQ(run.result, ResultWithout(failing));
    EXPECT_EQ(run.events, Broken(good.events, commands[failing - 1], 1, "0x79"));
    std::vector<Bytes> sent = good.sent;
    if (run.result == ZEM_E_FAIL) {
      sent.resize(failing - 1);
    } else {
      sent.erase(sent.begin());
    }
    EXPECT_EQ(run.sent, sent);
  }
}

TEST_P(FailureSweepTest, ACommandThatFailsOnceWithError31IsSentAgainAndNothingElseChanges) {
  const Run good = Execute();
  const auto commands = CommandsAmong(good.events);
  for (std::size_t failing = 1; failing <= commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kGeneralFailure);
    EXPECT_EQ(run.result, GetParam().done);
    Lines events = good.events;
    const auto place = events.begin() + commands[failing - 1];
    const Lines attempt = {*place + " failed", "sleep 500"};
    events.insert(place, attempt.begin(), attempt.end());
    EXPECT_EQ(run.events, events);
    EXPECT_EQ(run.sent, good.sent);
  }
}

TEST_P(FailureSweepTest, ACommandThatFailsSixTimesWithError31IsTheLastOne) {
  const Run good = Execute();
  const auto commands = CommandsAmong(good.events);
  for (std::size_t failing = 1; failing <= commands.size(); ++failing) {
    SCOPED_TRACE(failing);
    const Run run = Execute(failing, kGeneralFailure, 6);
    EXPECT_EQ(run.result, ResultWithout(failing));
    EXPECT_EQ(run.events, Broken(good.events, commands[failing - 1], 6, "0x1F"));
  }
}

INSTANTIATE_TEST_SUITE_P(Exports, FailureSweepTest, ::testing::ValuesIn(Operations()),
                         [](const auto& parameters) { return parameters.param.name; });

}  // namespace
