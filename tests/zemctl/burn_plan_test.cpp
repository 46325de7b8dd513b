// What zemctl tells from a file before it burns it.
#include "tools/zemctl/rom_boot/burn_plan.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zemctl;  // NOLINT(google-build-using-namespace): the tool's own test
using Lines = std::vector<std::string>;

void Put32(Bytes& file, std::size_t at, std::uint32_t number) {
  for (std::size_t byte = 0; byte < 4; ++byte) {
    file.at(at + byte) = static_cast<unsigned char>((number >> (8 * byte)) & 0xFF);
  }
}

// A file of `size` bytes, each different from its neighbours.
Bytes SomeFile(std::size_t size) {
  Bytes file(size);
  for (std::size_t index = 0; index < size; ++index) {
    file[index] = static_cast<unsigned char>(index % 251);
  }
  return file;
}

Bytes ImageFile(std::uint32_t payload) {
  Bytes file = SomeFile(4114 + payload);
  const std::string magic = "VSN_V2FW";
  std::copy(magic.begin(), magic.end(), file.begin());
  file[8] = 1;
  file[9] = 0;
  Put32(file, 14, payload);
  return file;
}

// A package whose data begins at `offset`.
Bytes PackageFile(std::uint32_t offset, std::uint32_t size) {
  Bytes file = SomeFile(offset + size);
  Put32(file, 10, offset - 10);
  Put32(file, 14, size);
  return file;
}

Bytes LinuxFile(std::size_t size, std::uint32_t shift, std::uint32_t bodyUnits) {
  Bytes file = SomeFile(size);
  Put32(file, 8, shift);
  Put32(file, 16, bodyUnits);
  return file;
}

// "write payload 0x1000 +5000 flag 0: 01 02"
Lines TextOf(const BurnPlan& plan) {
  Lines lines;
  for (const PlannedWrite& write : plan) {
    char text[128];
    std::snprintf(text, sizeof(text), "%s 0x%X +%zu flag %u", write.what.c_str(), write.address,
                  write.bytes.size(), write.firstFlag);
    lines.emplace_back(text);
  }
  return lines;
}

template <class Make>
std::string RefusalOf(Make make) {
  try {
    make();
  } catch (const MalformedFile& refusal) {
    return refusal.what();
  }
  return "accepted";
}

TEST(BurnPlanTest, ImageErasesItsHeaderBlockAndWritesItLast) {
  const Bytes file = ImageFile(5000);
  const BurnPlan plan = PlanImage(file, 0x10000);
  EXPECT_EQ(TextOf(plan), (Lines{"erase 0x10000 +4096 flag 0", "payload 0x11000 +5000 flag 0",
                                 "header block 0x10000 +4096 flag 0"}));
  EXPECT_EQ(plan[0].bytes, Bytes(4096, 0xFF));
  EXPECT_EQ(plan[1].bytes, Bytes(file.begin() + 4114, file.end()));
  EXPECT_EQ(plan[1].sectors(), 10U);
  EXPECT_EQ(plan[2].bytes, Bytes(file.begin() + 18, file.begin() + 4114));
}

TEST(BurnPlanTest, ImageMayBeLongerThanItsPayloadButNotShorter) {
  Bytes file = ImageFile(100);
  Put32(file, 14, 60);
  EXPECT_EQ(PlanImage(file, 0)[1].bytes.size(), 60U);
  Put32(file, 14, 101);
  EXPECT_EQ(RefusalOf([&] { PlanImage(file, 0); }),
            "says that its payload of 101 bytes begins at 4114, but it ends at 4214");
}

TEST(BurnPlanTest, ImageWithoutItsMarksIsRefused) {
  EXPECT_EQ(RefusalOf([] { PlanImage(SomeFile(4113), 0); }),
            "has 4113 bytes, too few for the header of an image and its header block (4114)");
  Bytes file = ImageFile(1);
  file[7] = 'X';
  EXPECT_EQ(RefusalOf([&] { PlanImage(file, 0); }),
            "begins neither with VSN_V2BC nor with VSN_V2FW");
  file = ImageFile(1);
  file[9] = 1;
  EXPECT_EQ(RefusalOf([&] { PlanImage(file, 0); }), "lacks the marker 1 of an image header");
  file = ImageFile(1);
  file[6] = 'B';
  file[7] = 'C';
  EXPECT_EQ(PlanImage(file, 0).size(), 3U);
}

TEST(BurnPlanTest, AddressesEndAt32Bits) {
  const Bytes file = ImageFile(512);
  EXPECT_EQ(PlanImage(file, 0xFFFFEC00).size(), 3U);
  EXPECT_EQ(RefusalOf([&] { PlanImage(file, 0xFFFFF000); }),
            "does not fit behind address 4294967296");
}

TEST(BurnPlanTest, PackageGoesToTheBeginningWithFlagOneFirst) {
  const Bytes file = PackageFile(30, 40000);
  const BurnPlan plan = PlanPackage(file);
  EXPECT_EQ(TextOf(plan), Lines{"data 0x0 +40000 flag 1"});
  EXPECT_EQ(plan[0].bytes, Bytes(file.begin() + 30, file.end()));
  const auto commands = CommandsOf(plan);
  ASSERT_EQ(commands.size(), 2U);
  EXPECT_EQ(commands[0].address, 0U);
  EXPECT_EQ(commands[0].sectors, 64U);
  EXPECT_EQ(commands[0].flag, 1);
  EXPECT_EQ(commands[1].address, 0x8000U);
  EXPECT_EQ(commands[1].sectors, 15U);
  EXPECT_EQ(commands[1].flag, 0);
}

TEST(BurnPlanTest, PackageThatSaysMoreThanItHoldsIsRefused) {
  EXPECT_EQ(RefusalOf([] { PlanPackage(SomeFile(17)); }),
            "has 17 bytes, too few for the header of a package (18)");
  Bytes file = PackageFile(30, 100);
  Put32(file, 14, 101);
  EXPECT_EQ(RefusalOf([&] { PlanPackage(file); }),
            "says that its data of 101 bytes begins at 30, but it ends at 130");
  Put32(file, 10, 0xFFFFFFFF);
  EXPECT_EQ(RefusalOf([&] { PlanPackage(file); }),
            "says that its data of 101 bytes begins at 4294967305, but it ends at 130");
  Put32(file, 14, 0);
  EXPECT_EQ(RefusalOf([&] { PlanPackage(file); }), "says that it holds no data");
}

TEST(BurnPlanTest, SecondPackageHasAHeaderBlockOfItsOwn) {
  const Bytes file = PackageFile(18, 4096 + 700);
  const BurnPlan plan = PlanPackageV2(file);
  EXPECT_EQ(TextOf(plan), (Lines{"erase 0x0 +4096 flag 0", "payload 0x1000 +700 flag 0",
                                 "header block 0x0 +4096 flag 0"}));
  EXPECT_EQ(plan[1].bytes, Bytes(file.begin() + 18 + 4096, file.end()));
  EXPECT_EQ(plan[2].bytes, Bytes(file.begin() + 18, file.begin() + 18 + 4096));
  EXPECT_EQ(RefusalOf([] { PlanPackageV2(PackageFile(18, 4095)); }),
            "says that its data has 4095 bytes, too few for a header block (4096)");
}

TEST(BurnPlanTest, LinuxBodyIsWhereTheHeaderSays) {
  const Bytes file = LinuxFile(9000, 12, 5);
  const BurnPlan plan = PlanLinux(file, 0x20000, std::nullopt);
  EXPECT_EQ(TextOf(plan), (Lines{"erase 0x20000 +8192 flag 0", "body 0x5000 +808 flag 0",
                                 "header 0x20000 +8192 flag 0"}));
  EXPECT_EQ(plan[1].bytes, Bytes(file.begin() + 8192, file.end()));
  EXPECT_EQ(plan[2].bytes, Bytes(file.begin(), file.begin() + 8192));
}

TEST(BurnPlanTest, LinuxHeaderIsToldWhereTheBodyIs) {
  const BurnPlan plan = PlanLinux(LinuxFile(9000, 12, 5), 0x20000, 0x7000);
  EXPECT_EQ(plan[1].address, 0x7000U);
  EXPECT_EQ(Bytes(plan[2].bytes.begin() + 16, plan[2].bytes.begin() + 20), (Bytes{7, 0, 0, 0}));
  EXPECT_EQ(RefusalOf([] { PlanLinux(LinuxFile(9000, 12, 5), 0x20000, 0x7200); }),
            "can only say of a body that it begins at a multiple of 4096");
}

TEST(BurnPlanTest, SmallLinuxPackageIsAllHeader) {
  const Bytes file = LinuxFile(4096, 0, 0);
  EXPECT_EQ(TextOf(PlanLinux(file, 0x20000, std::nullopt)),
            (Lines{"erase 0x20000 +8192 flag 0", "package 0x20000 +4096 flag 0"}));
}

TEST(BurnPlanTest, LinuxPackageWithoutAWholeHeaderIsRefused) {
  EXPECT_EQ(RefusalOf([] { PlanLinux(SomeFile(511), 0, std::nullopt); }),
            "has 511 bytes, too few for the beginning of a Linux package (512)");
  for (const std::size_t size : {4097U, 8191U}) {
    EXPECT_EQ(
        RefusalOf([&] { PlanLinux(LinuxFile(size, 0, 0), 0, std::nullopt); }),
        "has " + std::to_string(size) + " bytes, too few for the header of a Linux package (8192)");
  }
  EXPECT_EQ(RefusalOf([] { PlanLinux(LinuxFile(9000, 32, 0), 0, std::nullopt); }),
            "gives addresses in units of 2 to the power of 32");
  EXPECT_EQ(RefusalOf([] { PlanLinux(LinuxFile(9000, 12, 0x100000), 0, std::nullopt); }),
            "does not fit behind address 4294967296");
  EXPECT_EQ(RefusalOf([] { PlanLinux(LinuxFile(9000, 0, 0x1FFF), 0, std::nullopt); }),
            "would have its body overwritten by its header");
  EXPECT_EQ(PlanLinux(LinuxFile(9000, 0, 0x2000), 0, std::nullopt).size(), 3U);
}

TEST(BurnPlanTest, PartialUpdatesWithAndWithoutHeaderBlock) {
  const Bytes file = SomeFile(5000);
  EXPECT_EQ(TextOf(PlanPartial(file, 0x3000)), Lines{"file 0x3000 +5000 flag 0"});
  const BurnPlan plan = PlanPartialWithHeader(file, 0x3000);
  EXPECT_EQ(TextOf(plan), (Lines{"erase 0x3000 +4096 flag 0", "body 0x4000 +904 flag 0",
                                 "header block 0x3000 +4096 flag 0"}));
  EXPECT_EQ(plan[1].bytes, Bytes(file.begin() + 4096, file.end()));
  EXPECT_EQ(TextOf(PlanPartialWithHeader(SomeFile(4096), 0)),
            (Lines{"erase 0x0 +4096 flag 0", "file 0x0 +4096 flag 0"}));
  EXPECT_EQ(RefusalOf([] { PlanPartial({}, 0); }), "is empty");
  EXPECT_EQ(RefusalOf([] { PlanPartialWithHeader({}, 0); }), "is empty");
}

TEST(BurnPlanTest, OnlyWhatStaysIsExpected) {
  const auto expected = ExpectationsOf(PlanPartialWithHeader(Bytes(600, 7), 0x1000));
  ASSERT_EQ(expected.size(), 2U);
  EXPECT_EQ(expected[0].address, 0x1000U);
  ASSERT_EQ(expected[0].bytes, Bytes(4096, 0xFF));
  EXPECT_FALSE(expected[0].defined[0]);
  EXPECT_FALSE(expected[0].defined[1023]) << "the rest of the last sector is not defined";
  EXPECT_TRUE(expected[0].defined[1024]);
  EXPECT_EQ(expected[1].bytes, Bytes(600, 7));
  EXPECT_TRUE(expected[1].defined[599]);
  EXPECT_EQ(ExpectationsOf(PlanImage(ImageFile(5), 0)).size(), 2U) << "nothing erased stays";
}

TEST(BurnPlanTest, EraseIsWritingOnes) {
  const BurnPlan plan = PlanErase(0x200, 40000);
  EXPECT_EQ(TextOf(plan), Lines{"erase 0x200 +40000 flag 0"});
  EXPECT_EQ(CommandsOf(plan).size(), 2U);
  EXPECT_EQ(ExpectationsOf(plan)[0].bytes, Bytes(40000, 0xFF));
}

TEST(BurnPlanTest, CodeIsSentWithoutItsHeader) {
  Bytes file = SomeFile(1000);
  EXPECT_EQ(CodeSize(file), 1000U);
  file[8] = 1;
  file[9] = 0;
  EXPECT_EQ(CodeSize(file), 982U);
  file.resize(18);
  EXPECT_EQ(RefusalOf([&] { CodeSize(file); }), "holds a header and no code");
  file.resize(17);
  EXPECT_EQ(RefusalOf([&] { CodeSize(file); }),
            "has 17 bytes, too few for the header of a code image (18)");
}

TEST(BurnPlanTest, SectionsOfAPackage) {
  Bytes package = SomeFile(18 + 8192 + 4096 + 300);
  Put32(package, 18 + 8, 12);
  Put32(package, 18 + 12, 2);
  Put32(package, 18 + 20, 4096);
  Put32(package, 18 + 8192 + 20, 300);
  const auto sections = SectionsOf(package);
  ASSERT_EQ(sections.size(), 2U);
  EXPECT_EQ(sections[0].file, "VSN_V3BC");
  EXPECT_EQ(sections[0].offset, 18U);
  EXPECT_EQ(sections[0].payloadSize, 4096U);
  EXPECT_EQ(sections[1].file, "VSN_V3FW");
  EXPECT_EQ(sections[1].offset, 18U + 8192);
  EXPECT_EQ(sections[1].payloadSize, 300U);
  Put32(package, 18 + 8192 + 20, 301);
  EXPECT_EQ(RefusalOf([&] { SectionsOf(package); }),
            "says that its section of 301 bytes begins at 12306, but it ends at 12606");
  Put32(package, 18 + 12, 0xFFFFFFFF);
  EXPECT_NE(RefusalOf([&] { SectionsOf(package); }), "accepted");
  Put32(package, 18 + 8, 32);
  EXPECT_EQ(RefusalOf([&] { SectionsOf(package); }),
            "gives the place of its firmware in units of 2 to the power of 32");
}

}  // namespace
