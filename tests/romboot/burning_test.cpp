// The three burners: what goes where, in which order, and what the caller's address becomes.
#include "tests/support/package_files.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::testing::Bytes;
using zem::testing::ImageFile;
using zem::testing::InOrder;
using zem::testing::Joined;
using zem::testing::Lines;
using zem::testing::PaddedToSectors;
using zem::testing::PartOf;
using zem::testing::PcCamFile;
using zem::testing::PutLe32;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::WriteCommand;
using zem::testing::Written;

const Bytes kHeaderBlock = SomeBytes(4096, 5);

// ---- Image files ----

class BurnFwTest : public RomBootTest {
 protected:
  ZemResult Burn(const Bytes& file) {
    return ZEMROMAPI_BurnFw(session(), WriteFile("image", file).c_str(), &address);
  }
  unsigned int address = 0x10000;
};

TEST_F(BurnFwTest, PayloadOf5000BytesAt0x10000) {
  const Bytes payload = SomeBytes(5000);
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, payload)), 1);
  EXPECT_EQ(address, 0x13000U);
  ASSERT_EQ(volume.controls.size(), 3U);
  EXPECT_EQ(volume.controls[0].sent, Bytes(4096, 0xFF));
  EXPECT_EQ(volume.controls[1].sent, PaddedToSectors(payload));
  EXPECT_EQ(volume.controls[2].sent, kHeaderBlock);
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x10000, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 00 00 00 08 00 00 00 00 00 00 [4096]",
                                 "line Adr=0x11000, Len=0x1400 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 10 00 00 0a 00 00 00 00 00 00 [5120]",
                                 "line Adr=0x10000, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 00 00 00 08 00 00 00 00 00 00 [4096]"}));
}

TEST_F(BurnFwTest, LongPayloadGoesByCommandsOf32768Bytes) {
  const Bytes payload = SomeBytes(70000);
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, payload)), 1);
  EXPECT_EQ(address, 0x23000U);
  EXPECT_EQ(Stored(0x11000, 70144), PaddedToSectors(payload));
  EXPECT_EQ(Stored(0x10000, 4096), kHeaderBlock);
  EXPECT_EQ(TakeEvents(), InOrder({Written(0x10000, 8), Written(0x11000, 64), Written(0x19000, 64),
                                   Written(0x21000, 9), Written(0x10000, 8)}));
}

TEST_F(BurnFwTest, NextFreeAddressIsAMultipleOf4096WhateverTheStart) {
  struct Case {
    unsigned int start;
    std::size_t payload;
    unsigned int next;
  };
  for (const Case& test : std::vector<Case>{{0, 0, 0x1000},
                                            {0, 1, 0x2000},
                                            {0, 4096, 0x2000},
                                            {0, 4097, 0x3000},
                                            {0x200, 512, 0x2000},
                                            {0x123, 512, 0x2000}}) {
    address = test.start;
    EXPECT_EQ(Burn(ImageFile(kHeaderBlock, SomeBytes(test.payload))), 1);
    EXPECT_EQ(address, test.next);
  }
}

TEST_F(BurnFwTest, WithoutPayloadOnlyTheHeaderBlockIsWritten) {
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, {})), 1);
  EXPECT_EQ(TakeEvents(), InOrder({Written(0x10000, 8), Written(0x10000, 8)}));
}

TEST_F(BurnFwTest, LengthFieldCountsAndNotTheFilesLength) {
  Bytes file = ImageFile(kHeaderBlock, SomeBytes(1000));
  PutLe32(file, 14, 600);
  EXPECT_EQ(Burn(file), 1);
  EXPECT_EQ(Stored(0x11000, 1024), PaddedToSectors(SomeBytes(1000)))
      << "the rest of the last sector is what follows in the file, then zeros";
  EXPECT_EQ(TakeCommands().at(1), WriteCommand(0x11000, 2));
}

TEST_F(BurnFwTest, LengthFieldHasMoreThan20Bits) {
  const Bytes payload = SomeBytes(0x101234);
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, payload)), 1);
  EXPECT_EQ(address, 0x113000U);
  EXPECT_EQ(Stored(0x11000, 0x101400), PaddedToSectors(payload));
}

TEST_F(BurnFwTest, MagicAndMarkerAreNotLookedAt) {
  Bytes file = ImageFile(kHeaderBlock, SomeBytes(512));
  std::fill_n(file.begin(), 14, std::uint8_t{0});
  EXPECT_EQ(Burn(file), 1);
}

TEST_F(BurnFwTest, OnlyTheEraseIsMirrored) {
  const std::wstring dump = WriteFile("dump", Bytes(0x4000, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  address = 0x1000;
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, SomeBytes(5000))), 1);
  Bytes mirrored(0x4000, 0x11);
  std::fill_n(mirrored.begin() + 0x1000, 0x1000, std::uint8_t{0xFF});
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(BurnFwTest, AddressesAreDivided) {
  session();
  SetAddressDivider(0x200);
  EXPECT_EQ(Burn(ImageFile(kHeaderBlock, SomeBytes(512))), 1);
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x80, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 80 00 08 00 00 00 00 00 00 [4096]",
                                 "line Adr=0x88, Len=0x200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 88 00 01 00 00 00 00 00 00 [512]",
                                 "line Adr=0x80, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 80 00 08 00 00 00 00 00 00 [4096]"}));
  EXPECT_EQ(address, 0x12000U);
}

TEST_F(BurnFwTest, MalformedFilesAreRefusedBeforeAnythingIsSent) {
  const Bytes good = ImageFile(kHeaderBlock, SomeBytes(5000));
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{17}, std::size_t{18}, std::size_t{4113}, good.size() - 1}) {
    EXPECT_EQ(Burn(PartOf(good, 0, size)), ZEM_E_FAIL) << size;
  }
  for (const std::uint32_t length : {5001U, 0x80000000U, 0xFFFFFFFFU, 0xFFFFF000U, 0x10000U + 5000U,
                                     0x100000U + 5000U, 0x1000000U + 5000U, 0x80000000U + 5000U}) {
    Bytes file = good;
    PutLe32(file, 14, length);
    EXPECT_EQ(Burn(file), ZEM_E_FAIL) << length;
  }
  EXPECT_EQ(address, 0x10000U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(BurnFwTest, WhatWouldReachPastTheLastAddressIsRefusedBeforeAnythingIsSent) {
  const Bytes file = ImageFile(kHeaderBlock, SomeBytes(5000));
  address = 0xFFFFDC00;
  EXPECT_EQ(Burn(file), 1);
  EXPECT_EQ(address, 0U) << "the address behind the last";
  TakeEvents();
  for (const unsigned int start : {0xFFFFDC01U, 0xFFFFE000U, 0xFFFFF000U, 0xFFFFFFFFU}) {
    address = start;
    EXPECT_EQ(Burn(file), ZEM_E_FAIL);
    EXPECT_EQ(address, start);
  }
  EXPECT_EQ(TakeEvents(), Lines());
}

// ---- Packages of one piece ----

class BurnPcCamFwTest : public RomBootTest {
 protected:
  ZemResult Burn(const Bytes& file) {
    return ZEMROMAPI_BurnPcCamFw(session(), WriteFile("package", file).c_str(), &address);
  }
  unsigned int address = 0x777;
};

TEST_F(BurnPcCamFwTest, FirstCommandCarriesFlag1) {
  const Bytes data = SomeBytes(70000);
  EXPECT_EQ(Burn(PcCamFile(100, data)), 1);
  EXPECT_EQ(address, 70144U);
  EXPECT_EQ(Stored(0, 70144), PaddedToSectors(data));
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x0, Len=0x8000 Flag=0x1\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 00 00 40 01 00 00 00 00 00 [32768]",
                                 "line Adr=0x8000, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 80 00 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0x10000, Len=0x1200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 01 00 00 00 09 00 00 00 00 00 00 [4608]"}));
}

TEST_F(BurnPcCamFwTest, DataBeginsAtTenPlusTheFirstField) {
  for (const std::uint32_t offset : {8U, 9U, 4096U}) {
    const Bytes data = SomeBytes(512, static_cast<std::uint8_t>(offset % 100));
    EXPECT_EQ(Burn(PcCamFile(offset, data)), 1);
    EXPECT_EQ(volume.controls.at(0).sent, data);
    TakeCommands();
  }
}

TEST_F(BurnPcCamFwTest, FieldsHaveMoreThan20Bits) {
  const Bytes data = SomeBytes(0x101234);
  EXPECT_EQ(Burn(PcCamFile(0x104321, data)), 1);
  EXPECT_EQ(address, 0x101400U);
  EXPECT_EQ(Stored(0, 0x101400), PaddedToSectors(data));
}

TEST_F(BurnPcCamFwTest, DataMayLieOverTheHeader) {
  Bytes file = SomeBytes(18);
  PutLe32(file, 10, 0);
  PutLe32(file, 14, 8);
  EXPECT_EQ(Burn(file), 1);
  EXPECT_EQ(volume.controls.at(0).sent, PaddedToSectors(PartOf(file, 10, 8)));
}

TEST_F(BurnPcCamFwTest, TheLastSectorIsFilledWithWhatFollowsInTheFile) {
  Bytes file = PcCamFile(8, SomeBytes(600));
  PutLe32(file, 14, 100);
  EXPECT_EQ(Burn(file), 1);
  EXPECT_EQ(volume.controls.at(0).sent, SomeBytes(512));
}

TEST_F(BurnPcCamFwTest, NothingIsMirrored) {
  const std::wstring dump = WriteFile("dump", Bytes(100, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(Burn(PcCamFile(8, SomeBytes(600))), 1);
  EXPECT_EQ(ReadFile(dump), Bytes(100, 0x11));
}

TEST_F(BurnPcCamFwTest, NoDataIsWrittenAsNothing) {
  EXPECT_EQ(Burn(PcCamFile(8, {})), 1);
  EXPECT_EQ(address, 0U);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(BurnPcCamFwTest, MalformedFilesAreRefusedBeforeAnythingIsSent) {
  const Bytes good = PcCamFile(100, SomeBytes(5000));
  for (const std::size_t size : {std::size_t{0}, std::size_t{13}, std::size_t{17}, std::size_t{18},
                                 std::size_t{110}, good.size() - 1}) {
    EXPECT_EQ(Burn(PartOf(good, 0, size)), ZEM_E_FAIL) << size;
  }
  struct Fields {
    std::uint32_t offset;
    std::uint32_t length;
  };
  for (const Fields& fields : std::vector<Fields>{{101, 5000},
                                                  {100, 5001},
                                                  {0xFFFFFFF6, 16},
                                                  {0xFFFFFFFF, 1},
                                                  {100, 0xFFFFFFFF},
                                                  {0x80000000, 0x80000000},
                                                  {0x10000 + 100, 5000},
                                                  {0x100000 + 100, 5000},
                                                  {0x1000000 + 100, 5000},
                                                  {0x80000000 + 100, 5000},
                                                  {100, 0x10000 + 5000},
                                                  {100, 0x100000 + 5000},
                                                  {100, 0x1000000 + 5000},
                                                  {100, 0x80000000 + 5000},
                                                  {5101, 0}}) {
    Bytes file = good;
    PutLe32(file, 10, fields.offset);
    PutLe32(file, 14, fields.length);
    EXPECT_EQ(Burn(file), ZEM_E_FAIL) << fields.offset << " " << fields.length;
  }
  EXPECT_EQ(address, 0x777U);
  EXPECT_EQ(TakeEvents(), Lines());
}

// ---- Packages with a header block ----

class BurnPnsV2Test : public RomBootTest {
 protected:
  ZemResult Burn(const Bytes& file) {
    return ZEMROMAPI_BurnPcCamFwPnsV2(session(), WriteFile("package", file).c_str(), &address);
  }
  unsigned int address = 0x777;
};

TEST_F(BurnPnsV2Test, HeaderBlockGoesLast) {
  const Bytes payload = SomeBytes(40000);
  EXPECT_EQ(Burn(PcCamFile(50, Joined({kHeaderBlock, payload}))), 1);
  EXPECT_EQ(address, 4096U + 40448U) << "the end of the payload, not rounded to 4,096";
  ASSERT_EQ(volume.controls.size(), 4U);
  EXPECT_EQ(volume.controls[0].sent, Bytes(4096, 0xFF));
  EXPECT_EQ(Stored(4096, 40448), PaddedToSectors(payload));
  EXPECT_EQ(volume.controls[3].sent, kHeaderBlock);
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x0, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00 [4096]",
                                 "line Adr=0x1000, Len=0x8000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 10 00 00 40 00 00 00 00 00 00 [32768]",
                                 "line Adr=0x9000, Len=0x1E00 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 90 00 00 0f 00 00 00 00 00 00 [7680]",
                                 "line Adr=0x0, Len=0x1000 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00 [4096]"}));
}

TEST_F(BurnPnsV2Test, WithoutPayload) {
  EXPECT_EQ(Burn(PcCamFile(8, kHeaderBlock)), 1);
  EXPECT_EQ(address, 4096U);
  EXPECT_EQ(TakeEvents(), InOrder({Written(0, 8), Written(0, 8)}));
}

TEST_F(BurnPnsV2Test, OnlyTheEraseIsMirrored) {
  const std::wstring dump = WriteFile("dump", Bytes(0x3000, 0x11));
  ASSERT_EQ(ZEMROMAPI_CreateDumpFile(session(), dump.c_str(), 0), 0);
  EXPECT_EQ(Burn(PcCamFile(8, Joined({kHeaderBlock, SomeBytes(100)}))), 1);
  Bytes mirrored(0x3000, 0x11);
  std::fill_n(mirrored.begin(), 0x1000, std::uint8_t{0xFF});
  EXPECT_EQ(ReadFile(dump), mirrored);
}

TEST_F(BurnPnsV2Test, MalformedFilesAreRefusedBeforeAnythingIsSent) {
  const Bytes good = PcCamFile(100, Joined({kHeaderBlock, SomeBytes(5000)}));
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{17}, std::size_t{110 + 4096}, good.size() - 1}) {
    EXPECT_EQ(Burn(PartOf(good, 0, size)), ZEM_E_FAIL) << size;
  }
  for (const std::uint32_t length :
       {0U, 1U, 4095U, 9097U, 0xFFFFFFFFU, 0x10000U + 9096U, 0x100000U + 9096U}) {
    Bytes file = good;
    PutLe32(file, 14, length);
    EXPECT_EQ(Burn(file), ZEM_E_FAIL) << length;
  }
  EXPECT_EQ(address, 0x777U);
  EXPECT_EQ(TakeEvents(), Lines());
}

// ---- What all have in common ----

using BurnerArgumentsTest = RomBootTest;

TEST_F(BurnerArgumentsTest, NullsAndMissingFiles) {
  const std::wstring path = WriteFile("image", ImageFile(kHeaderBlock, SomeBytes(100)));
  for (const auto burn : {ZEMROMAPI_BurnFw, ZEMROMAPI_BurnPcCamFw, ZEMROMAPI_BurnPcCamFwPnsV2}) {
    unsigned int address = 0x777;
    EXPECT_EQ(burn(nullptr, path.c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(burn(nullptr, path.c_str(), nullptr), ZEM_E_FAIL);
    EXPECT_EQ(burn(session(), path.c_str(), nullptr), ZEM_E_REFUSED);
    EXPECT_EQ(burn(session(), nullptr, &address), ZEM_E_FAIL);
    EXPECT_EQ(burn(session(), PathOf("none").c_str(), &address), ZEM_E_FAIL);
    EXPECT_EQ(burn(session(), folder().wstring().c_str(), &address), ZEM_E_FAIL)
        << "a folder opens and cannot be read";
    EXPECT_EQ(address, 0x777U);
  }
  EXPECT_EQ(TakeEvents(), Lines());
}

}  // namespace
