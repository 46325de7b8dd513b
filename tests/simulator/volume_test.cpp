// The simulated volume: opening, SCSI pass-through requests as Windows lays them out, closing.
#include "simulator/volume.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <vector>

namespace {

using namespace zem::simulator;  // NOLINT(google-build-using-namespace): the model's own test
using Bytes = std::vector<std::uint8_t>;

// A buffered request to identify: header, filler, 32 sense bytes, then `dataSize` bytes of 0xEE.
Bytes IdentifyRequest(std::size_t dataSize) {
  Bytes block = {
      56,   0,    0,    0, 1,  0, 16, 24,                           // lengths and target
      1,    0,    0,    0, 16, 0, 0,  0,  2,  0, 0, 0, 0, 0, 0, 0,  // in, 16 bytes, 2 seconds
      92,   0,    0,    0, 0,  0, 0,  0,  60, 0, 0, 0,              // data, sense
      0xFA, 0x55, 0x66, 1, 0,  0, 0,  0,  0,  0, 0, 0, 0, 0, 0, 0,  // command
      0,    0,    0,    0};
  EXPECT_EQ(block.size(), 56U);
  block.resize(92);
  block.resize(92 + dataSize, 0xEE);
  return block;
}

// A direct request to write register 0x01020304 (no data).
Bytes RegisterRequest() {
  Bytes block = {56,   0,    0,    0, 1, 0, 16, 24,  // lengths and target
                 0,    0,    0,    0, 0, 0, 0,  0,  10,   0, 0, 0, 0, 0, 0, 0,  // out, 10 seconds
                 0,    0,    0,    0, 0, 0, 0,  0,  60,   0, 0, 0,              // no data, sense
                 0xFA, 0x55, 0x66, 5, 1, 2, 3,  4,  0x99, 0, 0, 0, 0, 0, 0, 0,  // command
                 0,    0,    0,    0};
  EXPECT_EQ(block.size(), 56U);
  block.resize(96);
  return block;
}

class VolumeTest : public ::testing::Test {
 protected:
  void* Open() {
    std::uint32_t error = 77;
    void* const handle = volume.Open(error);
    EXPECT_EQ(error, handle == nullptr ? 2U : 0U);
    return handle;
  }

  std::uint32_t Control(const void* handle, std::uint32_t code, Bytes& block) {
    return volume.Control(handle, code, block, block, returned);
  }

  std::shared_ptr<BootLoader> loader = std::make_shared<BootLoader>(BootLoaderOptions());
  Volume volume{loader};
  std::uint32_t returned = 0;
};

TEST_F(VolumeTest, NameIsTheDriveLetters) {
  EXPECT_TRUE(volume.IsNamed(L"\\\\.\\F:"));
  EXPECT_TRUE(volume.IsNamed(L"\\\\.\\f:"));
  EXPECT_FALSE(volume.IsNamed(L"\\\\.\\G:"));
  EXPECT_FALSE(volume.IsNamed(L"\\\\.\\F:\\"));
  EXPECT_FALSE(volume.IsNamed(L"F:"));
}

TEST_F(VolumeTest, HandlesAreItsOwnUntilClosed) {
  void* const first = Open();
  void* const second = Open();
  EXPECT_NE(first, second);
  EXPECT_TRUE(volume.Owns(first));
  EXPECT_EQ(volume.openHandles(), 2U);
  volume.Close(first);
  EXPECT_FALSE(volume.Owns(first));
  EXPECT_FALSE(volume.Owns(&volume));
  EXPECT_EQ(volume.openHandles(), 1U);
  Bytes block = IdentifyRequest(16);
  EXPECT_EQ(Control(first, 0x4D004, block), 6U);
  EXPECT_EQ(returned, 0U);
}

TEST_F(VolumeTest, BufferedRequestReadsIntoItsOwnBlock) {
  void* const handle = Open();
  Bytes block = IdentifyRequest(20);
  EXPECT_EQ(Control(handle, 0x4D004, block), 0U);
  EXPECT_EQ(returned, 112U);
  EXPECT_EQ(Bytes(block.begin() + 92, block.end()),
            (Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N',  '3',  0,    0,
                   0,    0,    0, 0, 0,   0,   0xEE, 0xEE, 0xEE, 0xEE}));
  EXPECT_EQ(block[12], 16) << "bytes moved";
}

TEST_F(VolumeTest, ShortAnswerTellsItsLength) {
  loader->AddFault(ParseFault("short@1=2").value());
  Bytes block = IdentifyRequest(16);
  EXPECT_EQ(Control(Open(), 0x4D004, block), 0U);
  EXPECT_EQ(block[12], 2);
  EXPECT_EQ(block[93], 0x55);
  EXPECT_EQ(block[94], 0xEE);
}

TEST_F(VolumeTest, BufferedRequestSendsFromItsOwnBlock) {
  Bytes block = IdentifyRequest(512);
  block[8] = 0;
  block[12] = 0;
  block[13] = 2;
  block[39] = 2;
  block[41] = 1;
  EXPECT_EQ(Control(Open(), 0x4D004, block), 0U);
  EXPECT_EQ(loader->loadBuffer, Bytes(512, 0xEE));
}

TEST_F(VolumeTest, DirectRequestWithoutData) {
  Bytes block = RegisterRequest();
  EXPECT_EQ(Control(Open(), 0x4D014, block), 0U);
  EXPECT_EQ(returned, 96U);
  EXPECT_EQ(loader->registers.at(0x01020304), 0x99);
}

TEST_F(VolumeTest, DirectRequestUsesTheCallersBuffer) {
  Bytes data(512, 0x3C);
  Bytes block = RegisterRequest();
  block[12] = 0;
  block[13] = 2;
  auto address = std::bit_cast<std::uint64_t>(data.data());
  for (std::size_t byte = 24; byte < 32; ++byte, address >>= 8) {
    block[byte] = static_cast<std::uint8_t>(address & 0xFF);
  }
  block[39] = 2;
  block[40] = 0;
  block[41] = 1;
  EXPECT_EQ(Control(Open(), 0x4D014, block), 0U);
  EXPECT_EQ(loader->loadBuffer, data);
}

TEST_F(VolumeTest, BlocksThatTheSystemWouldNotTake) {
  void* const handle = Open();
  const auto refused = [&](std::size_t at, std::uint8_t byte) {
    Bytes block = IdentifyRequest(16);
    block[at] = byte;
    return Control(handle, 0x4D004, block);
  };
  EXPECT_EQ(refused(0, 55), 87U) << "length of the header";
  EXPECT_EQ(refused(6, 17), 87U) << "length of the command";
  EXPECT_EQ(refused(8, 2), 87U) << "direction";
  EXPECT_EQ(refused(12, 17), 87U) << "more data than the block has room for";
  EXPECT_EQ(refused(24, 93), 87U) << "data behind the block";
  EXPECT_EQ(refused(24, 83), 87U) << "data upon the sense bytes";
  EXPECT_EQ(refused(31, 1), 87U) << "data far away";
  EXPECT_EQ(refused(32, 55), 87U) << "sense bytes upon the header";
  Bytes half(55, 0);
  half[0] = 56;
  EXPECT_EQ(Control(handle, 0x4D004, half), 87U);
  Bytes direct = RegisterRequest();
  direct[12] = 4;
  EXPECT_EQ(Control(handle, 0x4D014, direct), 87U) << "data without a buffer";
  Bytes block = IdentifyRequest(16);
  EXPECT_EQ(Control(handle, 0x4D000, block), 1U) << "no such control code";
}

TEST_F(VolumeTest, OutcomesAsSystemErrors) {
  for (const char* const text : {"fail@1", "fail@2=5", "refuse@3", "silent@4", "unplug@5"}) {
    loader->AddFault(ParseFault(text).value());
  }
  void* const handle = Open();
  for (const std::uint32_t error : {31U, 5U, 1117U, 121U, 1167U}) {
    Bytes block = IdentifyRequest(16);
    EXPECT_EQ(Control(handle, 0x4D004, block), error);
    EXPECT_EQ(block, IdentifyRequest(16)) << "untouched";
  }
  EXPECT_EQ(Open(), nullptr);
}

TEST_F(VolumeTest, RefusalWithAStatusIsNoSystemError) {
  loader->AddFault(ParseFault("refuse@1=2").value());
  loader->AddFault(ParseFault("refuse@2=8").value());
  void* const handle = Open();
  Bytes block = IdentifyRequest(16);
  EXPECT_EQ(Control(handle, 0x4D004, block), 0U);
  EXPECT_EQ(block[2], 2) << "check condition";
  EXPECT_EQ(block[12], 0) << "bytes moved";
  EXPECT_EQ(block[92], 0xEE);
  block = RegisterRequest();
  EXPECT_EQ(Control(handle, 0x4D014, block), 0U);
  EXPECT_EQ(block[2], 8) << "busy";
  EXPECT_TRUE(loader->registers.empty());
}

TEST_F(VolumeTest, ChangeOfStageEndsOpenHandles) {
  void* const handle = Open();
  loader->EnterRomBoot();
  Bytes block = IdentifyRequest(16);
  EXPECT_EQ(Control(handle, 0x4D004, block), 1167U);
  EXPECT_EQ(Open(), nullptr) << "absent once";
  EXPECT_EQ(Control(Open(), 0x4D004, block), 0U);
}

}  // namespace
