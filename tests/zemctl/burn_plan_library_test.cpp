// What zemctl shows before it burns is what the library then sends: the same commands in the same
// order with the same data.
#include <functional>

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"
#include "tools/zemctl/rom_boot/burn_plan.h"

namespace zem::testing {
namespace {

struct PlannedBurn {
  const char* name;
  std::function<zemctl::BurnPlan(const Bytes& file)> plan;
  std::function<ZemResult(void* session, const wchar_t* path)> burn;
  std::vector<Bytes> files;
};

void PrintTo(const PlannedBurn& burn, std::ostream* out) { *out << burn.name; }

using AddressedBurner = ZemResult (*)(void*, const wchar_t*, unsigned int*);

std::function<ZemResult(void*, const wchar_t*)> From(AddressedBurner burner, unsigned int start) {
  return [=](void* session, const wchar_t* path) {
    unsigned int address = start;
    return burner(session, path, &address);
  };
}

const std::vector<PlannedBurn>& Burns() {
  static const Bytes block = SomeBytes(4096, 5);
  static const Bytes data = SomeBytes(70000);
  static const std::vector<PlannedBurn> burns = {
      {"Image",
       [](const Bytes& file) { return zemctl::PlanImage(file, 0x10000); },
       From(ZEMROMAPI_BurnFw, 0x10000),
       {ImageFile(block, {}), ImageFile(block, SomeBytes(512)), ImageFile(block, data)}},
      {"Package",
       zemctl::PlanPackage,
       From(ZEMROMAPI_BurnPcCamFw, 0),
       {PcCamFile(8, SomeBytes(1)), PcCamFile(100, data)}},
      {"PackageV2",
       zemctl::PlanPackageV2,
       From(ZEMROMAPI_BurnPcCamFwPnsV2, 0),
       {PcCamFile(8, block), PcCamFile(100, Joined({block, data}))}},
      {"LinuxAtItsOwnAddress",
       [](const Bytes& file) { return zemctl::PlanLinux(file, 0x20000, std::nullopt); },
       [](void* session, const wchar_t* path) {
         return ZEMROMAPI_UpdateLinuxFwPkg(session, path, 0xFFFFFFFF, 0x20000);
       },
       {PartOf(LinuxHeader(9, 0x1234), 0, 600), LinuxHeader(9, 0x1234),
        // Without a body its address may be anything: beyond 32 bits, or inside the header.
        LinuxHeader(12, 0x100000), LinuxHeader(12, 0x21), Joined({LinuxHeader(9, 0x1234), data})}},
      {"LinuxAtAnother",
       [](const Bytes& file) { return zemctl::PlanLinux(file, 0x20000, 0x300000); },
       [](void* session, const wchar_t* path) {
         return ZEMROMAPI_UpdateLinuxFwPkg(session, path, 0x300000, 0x20000);
       },
       {PartOf(LinuxHeader(9, 0x1234), 0, 600), Joined({LinuxHeader(9, 0x1234), data})}},
      {"Partial",
       [](const Bytes& file) { return zemctl::PlanPartial(file, 0x3000); },
       From(ZEMROMAPI_PartialUpdate, 0x3000),
       {SomeBytes(1), SomeBytes(32768), data}},
      {"PartialWithHeader",
       [](const Bytes& file) { return zemctl::PlanPartialWithHeader(file, 0x3000); },
       From(ZEMROMAPI_PartialUpdateWithHeader, 0x3000),
       {SomeBytes(1), SomeBytes(4096), SomeBytes(4097), data}},
      {"Erase",
       [](const Bytes& /*file*/) { return zemctl::PlanErase(0x3000, 70000); },
       [](void* session, const wchar_t* /*path*/) {
         return ZEMROMAPI_Erase(session, 0x3000, 70000) == 0 ? 1 : ZEM_E_FAIL;
       },
       {{}}},
  };
  return burns;
}

class BurnPlanLibraryTest : public RomBootTest,
                            public ::testing::WithParamInterface<PlannedBurn> {};

TEST_P(BurnPlanLibraryTest, ThePlanIsWhatIsSent) {
  for (const Bytes& file : GetParam().files) {
    SCOPED_TRACE(file.size());
    const zemctl::BurnPlan plan = GetParam().plan(file);
    ASSERT_EQ(GetParam().burn(session(), WriteFile("file", file).c_str()), 1);
    Bytes sent;
    for (const VolumeControl& control : volume.controls) {
      sent.insert(sent.end(), control.sent.begin(), control.sent.end());
    }
    Lines commands;
    for (const zemctl::PlannedCommand& command : zemctl::CommandsOf(plan)) {
      commands.push_back(WriteCommand(command.address, command.sectors, command.flag));
    }
    EXPECT_EQ(TakeCommands(), commands);
    std::size_t at = 0;
    for (const zemctl::PlannedWrite& write : plan) {
      ASSERT_LE(at + write.bytes.size(), sent.size());
      EXPECT_EQ(PartOf(sent, at, write.bytes.size()), write.bytes) << write.what;
      at += write.sectors() * std::size_t{512};
    }
    EXPECT_EQ(at, sent.size());
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, BurnPlanLibraryTest, ::testing::ValuesIn(Burns()),
                         [](const auto& parameters) { return parameters.param.name; });

}  // namespace
}  // namespace zem::testing
