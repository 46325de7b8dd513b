// Splitting a package into its two image files.
#include <filesystem>

#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::Joined;
using zem::testing::Lines;
using zem::testing::PackageSection;
using zem::testing::PartOf;
using zem::testing::PutLe32;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;

// Splits into the test's own folder.
class PackageSplitTest : public RomBootTest {
 protected:
  PackageSplitTest() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder());
  }
  ~PackageSplitTest() override { std::filesystem::current_path(before_); }

  ZemResult Split(const Bytes& file) {
    return ZEMROMAPI_DispackZemPcCamFw(nullptr, WriteFile("package", file).c_str());
  }

  // A package of 3,000 bytes of boot code and 5,000 of firmware, which begins at 18 + (15 << 9).
  static Bytes Package() {
    Bytes bootCode = PackageSection(5, 0x11223344, SomeBytes(3000));
    PutLe32(bootCode, 8, 9);
    PutLe32(bootCode, 12, 15);
    bootCode.resize(15 << 9, 0xA5);
    return Joined({SomeBytes(18, 9), bootCode, PackageSection(6, 0x55667788, SomeBytes(5000, 2))});
  }

 private:
  std::filesystem::path before_;
};

TEST_F(PackageSplitTest, BootCodeAndFirmwareWithTheirImageHeaders) {
  const Bytes package = Package();
  EXPECT_EQ(Split(package), 1);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3BC")), Joined({{'V', 'S', 'N', '_', 'V', '2', 'B', 'C', 1, 0,
                                                   0x44, 0x33, 0x22, 0x11, 0xB8, 0x0B, 0, 0},
                                                  PartOf(package, 18, 4096 + 3000)}));
  EXPECT_EQ(ReadFile(PathOf("VSN_V3FW")), Joined({{'V', 'S', 'N', '_', 'V', '2', 'F', 'W', 1, 0,
                                                   0x88, 0x77, 0x66, 0x55, 0x88, 0x13, 0, 0},
                                                  PartOf(package, 18 + (15 << 9), 4096 + 5000)}));
  EXPECT_TRUE(system().volumePaths.empty()) << "no device is needed";
}

TEST_F(PackageSplitTest, SessionIsNotUsed) {
  EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(session(), WriteFile("package", Package()).c_str()), 1);
  EXPECT_EQ(TakeCommands(), Lines());
}

TEST_F(PackageSplitTest, WhatIsSplitCanBeBurned) {
  ASSERT_EQ(Split(Package()), 1);
  unsigned int address = 0;
  EXPECT_EQ(ZEMROMAPI_BurnFw(session(), PathOf("VSN_V3BC").c_str(), &address), 1);
  EXPECT_EQ(address, 0x2000U);
  EXPECT_EQ(ZEMROMAPI_BurnFw(session(), PathOf("VSN_V3FW").c_str(), &address), 1);
  EXPECT_EQ(Stored(0x1000, 3000), SomeBytes(3000));
  EXPECT_EQ(Stored(0x3000, 5000), SomeBytes(5000, 2));
}

TEST_F(PackageSplitTest, FilesAreMadeAnew) {
  WriteFile("VSN_V3BC", SomeBytes(20000));
  WriteFile("VSN_V3FW", SomeBytes(20000));
  EXPECT_EQ(Split(Package()), 1);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3BC")).size(), 18U + 4096U + 3000U);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3FW")).size(), 18U + 4096U + 5000U);
}

TEST_F(PackageSplitTest, AFileThatCannotBeCreatedIsSkipped) {
  std::filesystem::create_directory("VSN_V3BC");
  EXPECT_EQ(Split(Package()), 1);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3FW")).size(), 18U + 4096U + 5000U);
  std::filesystem::remove("VSN_V3BC");
  std::filesystem::remove("VSN_V3FW");
  std::filesystem::create_directory("VSN_V3FW");
  EXPECT_EQ(Split(Package()), 1);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3BC")).size(), 18U + 4096U + 3000U);
}

TEST_F(PackageSplitTest, AFileThatCannotBeWrittenWholeIsAFailureAndTheOtherIsWritten) {
  std::filesystem::create_symlink("/dev/full", "VSN_V3BC");
  EXPECT_EQ(Split(Package()), ZEM_E_FAIL);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3FW")).size(), 18U + 4096U + 5000U);
  std::filesystem::remove("VSN_V3BC");
  std::filesystem::remove("VSN_V3FW");
  std::filesystem::create_symlink("/dev/full", "VSN_V3FW");
  EXPECT_EQ(Split(Package()), ZEM_E_FAIL);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3BC")).size(), 18U + 4096U + 3000U);
}

TEST_F(PackageSplitTest, FirmwareSectionIsFoundByShiftAndCountAlone) {
  // A shift of 0 and a section that lies over the boot code's.
  Bytes section = PackageSection(5, 1, SomeBytes(100));
  PutLe32(section, 8, 0);
  PutLe32(section, 12, 0);
  const Bytes package = Joined({Bytes(18), section});
  EXPECT_EQ(Split(package), 1);
  EXPECT_EQ(PartOf(ReadFile(PathOf("VSN_V3FW")), 18, 4196), section);
}

TEST_F(PackageSplitTest, FieldsHaveMoreThan20Bits) {
  Bytes bootCode = PackageSection(5, 0xFEDCBA98, SomeBytes(0x101234));
  PutLe32(bootCode, 8, 0);
  PutLe32(bootCode, 12, 0x104321);
  bootCode.resize(0x104321, 0xA5);
  const Bytes firmware = PackageSection(6, 0x89ABCDEF, SomeBytes(0x101235, 2));
  const Bytes package = Joined({Bytes(18), bootCode, firmware});
  EXPECT_EQ(Split(package), 1);
  EXPECT_EQ(ReadFile(PathOf("VSN_V3BC")), Joined({{'V', 'S', 'N', '_', 'V', '2', 'B', 'C', 1, 0,
                                                   0x98, 0xBA, 0xDC, 0xFE, 0x34, 0x12, 0x10, 0},
                                                  PartOf(package, 18, 4096 + 0x101234)}));
  EXPECT_EQ(ReadFile(PathOf("VSN_V3FW")), Joined({{'V', 'S', 'N', '_', 'V', '2', 'F', 'W', 1, 0,
                                                   0xEF, 0xCD, 0xAB, 0x89, 0x35, 0x12, 0x10, 0},
                                                  firmware}));
}

TEST_F(PackageSplitTest, MalformedPackagesMakeNoFile) {
  const Bytes good = Package();
  const std::size_t firmware = 18 + (15 << 9);
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{17}, std::size_t{18}, std::size_t{18 + 4095},
        std::size_t{18 + 4096 + 2999}, firmware, firmware + 4095, good.size() - 1}) {
    EXPECT_EQ(Split(PartOf(good, 0, size)), ZEM_E_FAIL) << size;
  }
  struct Field {
    std::size_t offset;
    std::uint32_t value;
  };
  for (const Field& field : std::vector<Field>{
           {18 + 20, 0xFFFFFFFF},       // length of the boot code
           {18 + 20, 0xFFFFF000},       // and one that overflows with its header
           {18 + 8, 32},                // shift
           {18 + 8, 0xFFFFFFFF},        //
           {18 + 8, 31},                // out of the file
           {18 + 8, 0x10009},           // whose lower bits would do
           {18 + 8, 0x100009},          //
           {18 + 8, 0x1000009},         //
           {18 + 12, 0x1000F},          // count: the same
           {18 + 12, 0x10000F},         //
           {18 + 20, 0x10BB8},          // length of the boot code: the same
           {18 + 20, 0x100BB8},         //
           {firmware + 20, 0x11388},    // of the firmware
           {firmware + 20, 0x101388},   //
           {18 + 12, 0xFFFFFFFF},       // count
           {18 + 12, 0x00800000},       // overflows with its shift to the start of the file
           {18 + 12, 17},               // no room for the firmware
           {firmware + 20, 5001},       // length of the firmware
           {firmware + 20, 0xFFFFFFFF}  //
       }) {
    Bytes package = good;
    PutLe32(package, field.offset, field.value);
    EXPECT_EQ(Split(package), ZEM_E_FAIL) << field.offset << " " << field.value;
  }
  EXPECT_FALSE(Exists("VSN_V3BC"));
  EXPECT_FALSE(Exists("VSN_V3FW"));
}

TEST_F(PackageSplitTest, PackageThatCannotBeOpened) {
  EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(nullptr, PathOf("none").c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_DispackZemPcCamFw(nullptr, nullptr), ZEM_E_FAIL);
  EXPECT_FALSE(Exists("VSN_V3BC"));
  EXPECT_EQ(TakeEvents(), Lines());
}

}  // namespace
