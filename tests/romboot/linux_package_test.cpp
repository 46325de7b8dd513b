// The Linux package, in both forms.
#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::Joined;
using zem::testing::Lines;
using zem::testing::LinuxHeader;
using zem::testing::PaddedToSectors;
using zem::testing::PartOf;
using zem::testing::PutLe32;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::WriteCommand;

constexpr unsigned int kAddressInHeader = 0xFFFFFFFF;

class LinuxPackageTest : public RomBootTest {
 protected:
  ZemResult Update(const Bytes& file, unsigned int bodyAddress, unsigned int headerAddress) {
    return ZEMROMAPI_UpdateLinuxFwPkg(session(), WriteFile("package", file).c_str(), bodyAddress,
                                      headerAddress);
  }
  ZemResult UpdateAtOwnAddress(const Bytes& file, unsigned int headerAddress) {
    return ZEMROMAPI_UpdateLinuxFwPkg_(session(), WriteFile("package", file).c_str(),
                                       headerAddress);
  }
  // A dump file of `size` bytes of 0x11.
  std::wstring Dump(std::size_t size) {
    std::wstring dump = WriteFile("dump", Bytes(size, 0x11));
    EXPECT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
    return dump;
  }
};

TEST_F(LinuxPackageTest, EraseThenBodyThenHeader) {
  const Bytes header = LinuxHeader(9, 0x1234);
  const Bytes body = SomeBytes(40000);
  EXPECT_EQ(Update(Joined({header, body}), 0x300000, 0x20000), 1);
  ASSERT_EQ(volume.controls.size(), 4U);
  EXPECT_EQ(volume.controls[0].sent, Bytes(8192, 0xFF));
  EXPECT_EQ(Stored(0x300000, 40448), PaddedToSectors(body));
  Bytes written = header;
  PutLe32(written, 16, 0x1800);
  EXPECT_EQ(volume.controls[3].sent, written) << "the body's address, in units of 1 << 9";
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x20000, Len=0x2000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 02 00 00 00 10 00 00 00 00 00 00 [8192]",
                                 "line Adr=0x300000, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 30 00 00 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0x308000, Len=0x1E00 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 30 80 00 00 0f 00 00 00 00 00 00 [7680]",
                                 "line Adr=0x20000, Len=0x2000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 02 00 00 00 10 00 00 00 00 00 00 [8192]"}));
}

TEST_F(LinuxPackageTest, AddressFFFFFFFFIsTheOneInTheHeaderWhichStaysAsItIs) {
  const Bytes header = LinuxHeader(12, 0x345);
  EXPECT_EQ(Update(Joined({header, SomeBytes(512)}), kAddressInHeader, 0), 1);
  EXPECT_EQ(TakeCommands(),
            (Lines{WriteCommand(0, 16), WriteCommand(0x345000, 1), WriteCommand(0, 16)}));
  EXPECT_EQ(Stored(0, 0).size(), 0U);
  EXPECT_EQ(UpdateAtOwnAddress(Joined({header, SomeBytes(512)}), 0), 1);
  EXPECT_EQ(volume.controls.at(2).sent, header);
  EXPECT_EQ(TakeCommands(),
            (Lines{WriteCommand(0, 16), WriteCommand(0x345000, 1), WriteCommand(0, 16)}));
}

TEST_F(LinuxPackageTest, AddressBetweenTwoUnitsIsRoundedDownInTheHeaderOnly) {
  EXPECT_EQ(Update(Joined({LinuxHeader(12, 0), SomeBytes(512)}), 0x12FFF, 0), 1);
  EXPECT_EQ(PartOf(volume.controls.at(2).sent, 16, 4), (Bytes{0x12, 0, 0, 0}));
  EXPECT_EQ(TakeCommands().at(1), WriteCommand(0x12FFF, 1));
}

TEST_F(LinuxPackageTest, TheFileItselfIsNotChanged) {
  const Bytes file = Joined({LinuxHeader(9, 0x1234), SomeBytes(100)});
  EXPECT_EQ(Update(file, 0x300000, 0), 1);
  EXPECT_EQ(ReadFile(PathOf("package")), file);
}

TEST_F(LinuxPackageTest, UpTo4096BytesAreAllHeader) {
  for (const std::size_t size : {std::size_t{20}, std::size_t{600}, std::size_t{4096}}) {
    const Bytes file = PartOf(LinuxHeader(4, 0x1234), 0, size);
    EXPECT_EQ(Update(file, 0x100, 0x20000), 1);
    Bytes written = file;
    PutLe32(written, 16, 0x10);
    EXPECT_EQ(volume.controls.at(1).sent, PaddedToSectors(written));
    EXPECT_EQ(TakeCommands(),
              (Lines{WriteCommand(0x20000, 16),
                     WriteCommand(0x20000, static_cast<std::uint32_t>((size + 511) / 512))}));
  }
}

TEST_F(LinuxPackageTest, HeaderWithoutABody) {
  EXPECT_EQ(Update(LinuxHeader(0, 0), kAddressInHeader, 0x20000), 1);
  EXPECT_EQ(TakeCommands(), (Lines{WriteCommand(0x20000, 16), WriteCommand(0x20000, 16)}));
}

TEST_F(LinuxPackageTest, AllIsMirroredWithoutTheRounding) {
  const std::wstring dump = Dump(0x6000);
  const Bytes header = LinuxHeader(0, 0x4000);
  const Bytes body = SomeBytes(700);
  EXPECT_EQ(Update(Joined({header, body}), kAddressInHeader, 0x1000), 1);
  Bytes mirrored(0x6000, 0x11);
  std::copy(header.begin(), header.end(), mirrored.begin() + 0x1000);
  std::copy(body.begin(), body.end(), mirrored.begin() + 0x4000);
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(LinuxPackageTest, EraseIsMirroredWhereTheHeaderIsShorter) {
  const std::wstring dump = Dump(0x3000);
  const Bytes file = PartOf(LinuxHeader(0, 0), 0, 100);
  EXPECT_EQ(Update(file, kAddressInHeader, 0), 1);
  Bytes mirrored = file;
  mirrored.resize(0x2000, 0xFF);
  mirrored.resize(0x3000, 0x11);
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(LinuxPackageTest, PackagesOf4097To8191BytesAreRefusedBeforeAnythingIsSent) {
  const std::wstring dump = Dump(4);
  for (const std::size_t size :
       {std::size_t{4097}, std::size_t{4608}, std::size_t{6000}, std::size_t{8191}}) {
    const Bytes file = PartOf(LinuxHeader(0, 0x4000), 0, size);
    EXPECT_EQ(Update(file, 0x4000, 0), ZEM_E_FAIL) << size;
    EXPECT_EQ(Update(file, kAddressInHeader, 0), ZEM_E_FAIL) << size;
    EXPECT_EQ(UpdateAtOwnAddress(file, 0), ZEM_E_FAIL) << size;
  }
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_EQ(ReadFile(dump), Bytes(4, 0x11));
}

TEST_F(LinuxPackageTest, PackagesTooShortForTheirFieldsAreRefusedBeforeAnythingIsSent) {
  for (std::size_t size = 0; size < 20; ++size) {
    EXPECT_EQ(Update(Bytes(size), 0x4000, 0), ZEM_E_FAIL) << size;
    EXPECT_EQ(Update(Bytes(size), kAddressInHeader, 0), ZEM_E_FAIL) << size;
  }
  EXPECT_EQ(TakeCommands(), Lines());
}

TEST_F(LinuxPackageTest, ShiftOf32AndMoreIsMalformed) {
  for (const std::uint32_t shift :
       {32U, 33U, 64U, 0x100U, 0x10000U, 0x100009U, 0x1000000U, 0x80000000U, 0xFFFFFFFFU}) {
    for (const Bytes& file :
         {Joined({LinuxHeader(shift, 0), SomeBytes(512)}), PartOf(LinuxHeader(shift, 0), 0, 600)}) {
      EXPECT_EQ(Update(file, 0x4000, 0), ZEM_E_FAIL) << shift;
      EXPECT_EQ(Update(file, kAddressInHeader, 0), ZEM_E_FAIL) << shift;
      EXPECT_EQ(UpdateAtOwnAddress(file, 0), ZEM_E_FAIL) << shift;
    }
  }
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_EQ(Update(Joined({LinuxHeader(31, 1), SomeBytes(512)}), kAddressInHeader, 0), 1);
  EXPECT_EQ(TakeCommands().at(1), WriteCommand(0x80000000, 1));
}

// Shifts and counts of body addresses beyond 32 bits.
const std::vector<std::pair<std::uint32_t, std::uint32_t>> kAddressesBeyond32Bits = {
    {31, 2}, {1, 0x80000000}, {16, 0x10000}, {9, 0xFFFFFFFF}, {31, 0xFFFFFFFF}};

TEST_F(LinuxPackageTest, BodyAddressBeyond32BitsIsMalformedWhereABodyIsToGoThere) {
  for (const auto& [shift, units] : kAddressesBeyond32Bits) {
    const Bytes file = Joined({LinuxHeader(shift, units), {1}});
    EXPECT_EQ(Update(file, kAddressInHeader, 0), ZEM_E_FAIL);
    EXPECT_EQ(UpdateAtOwnAddress(file, 0), ZEM_E_FAIL);
  }
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(LinuxPackageTest, BodyAddressBeyond32BitsDoesNotMatterWithoutABody) {
  const std::wstring dump = Dump(0x3000);
  for (const auto& [shift, units] : kAddressesBeyond32Bits) {
    for (const std::size_t size : {std::size_t{600}, std::size_t{4096}, std::size_t{8192}}) {
      const Bytes header = PartOf(LinuxHeader(shift, units), 0, size);
      for (const bool ownAddress : {false, true}) {
        EXPECT_EQ(ownAddress ? UpdateAtOwnAddress(header, 0) : Update(header, kAddressInHeader, 0),
                  1);
        EXPECT_EQ(volume.controls.at(1).sent, PaddedToSectors(header)) << "as it is";
        EXPECT_EQ(TakeCommands(),
                  (Lines{WriteCommand(0, 16),
                         WriteCommand(0, static_cast<std::uint32_t>((size + 511) / 512))}));
        Bytes mirrored = header;
        mirrored.resize(0x2000, 0xFF);
        mirrored.resize(0x3000, 0x11);
        EXPECT_EQ(ReadFile(dump), mirrored);
      }
    }
  }
}

TEST_F(LinuxPackageTest, BodyAddressBeyond32BitsDoesNotMatterWhereAnotherIsGiven) {
  EXPECT_EQ(Update(Joined({LinuxHeader(31, 2), SomeBytes(512)}), 0x80000000, 0), 1);
  EXPECT_EQ(PartOf(volume.controls.at(2).sent, 16, 4), (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(TakeCommands(),
            (Lines{WriteCommand(0, 16), WriteCommand(0x80000000, 1), WriteCommand(0, 16)}));
}

TEST_F(LinuxPackageTest, BodyAddressAndItsFieldHave32Bits) {
  struct Case {
    std::uint32_t shift;
    std::uint32_t units;
    Bytes field;
    std::uint32_t address;
  };
  for (const Case& test : std::vector<Case>{{0, 0x12345678, {0x78, 0x56, 0x34, 0x12}, 0x12345678},
                                            {4, 0x0ABCDEF1, {0xF1, 0xDE, 0xBC, 0x0A}, 0xABCDEF10},
                                            {12, 0x000FEDCB, {0xCB, 0xED, 0x0F, 0}, 0xFEDCB000},
                                            {0, 0xFFFFFC00, {0, 0xFC, 0xFF, 0xFF}, 0xFFFFFC00}}) {
    SCOPED_TRACE(test.units);
    const Bytes file = Joined({LinuxHeader(test.shift, test.units), SomeBytes(512)});
    EXPECT_EQ(Update(file, kAddressInHeader, 0x87654321), 1);
    EXPECT_EQ(PartOf(volume.controls.at(2).sent, 16, 4), test.field);
    EXPECT_EQ(UpdateAtOwnAddress(file, 0x87654321), 1);
    // The same address from the caller: the field is computed.
    const Bytes other = Joined({LinuxHeader(test.shift, 0x77), SomeBytes(512)});
    EXPECT_EQ(Update(other, test.address, 0x87654321), 1);
    EXPECT_EQ(PartOf(volume.controls.at(8).sent, 16, 4), test.field);
    const Lines commands = {WriteCommand(0x87654321, 16), WriteCommand(test.address, 1),
                            WriteCommand(0x87654321, 16)};
    Lines all = commands;
    all.insert(all.end(), commands.begin(), commands.end());
    all.insert(all.end(), commands.begin(), commands.end());
    EXPECT_EQ(TakeCommands(), all);
  }
}

TEST_F(LinuxPackageTest, WhatWouldReachPastTheLastAddressIsRefusedBeforeAnythingIsSent) {
  const Bytes file = Joined({LinuxHeader(0, 0), SomeBytes(513)});
  EXPECT_EQ(Update(file, 0xFFFFFE00, 0), ZEM_E_FAIL);
  EXPECT_EQ(Update(file, 0, 0xFFFFE001), ZEM_E_FAIL);
  EXPECT_EQ(TakeCommands(), Lines());
  EXPECT_EQ(Update(file, 0xFFFFFC00, 0xFFFFE000), 1);
  EXPECT_EQ(TakeCommands().size(), 3U);
}

TEST_F(LinuxPackageTest, OwnAddressNeedsAFirstReadOf512Bytes) {
  const Bytes file = LinuxHeader(0, 0);
  for (const std::size_t size : {std::size_t{0}, std::size_t{20}, std::size_t{511}}) {
    EXPECT_EQ(UpdateAtOwnAddress(PartOf(file, 0, size), 0), ZEM_E_FAIL);
    EXPECT_EQ(TakeEvents(), Lines{"line ZEMROMAPI_UpdateLinuxFwPkg_ file error.\r\n"});
  }
  EXPECT_EQ(UpdateAtOwnAddress(PartOf(file, 0, 512), 0), 1);
}

TEST_F(LinuxPackageTest, NullsAndMissingFiles) {
  const std::wstring path = WriteFile("package", LinuxHeader(0, 0));
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(nullptr, path.c_str(), 0, 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg_(nullptr, path.c_str(), 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(session(), nullptr, 0, 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg_(session(), nullptr, 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg(session(), PathOf("none").c_str(), 0, 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg_(session(), PathOf("none").c_str(), 0), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), Lines()) << "a file that cannot be opened leaves no line";
}

}  // namespace
