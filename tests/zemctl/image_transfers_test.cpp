// What zemctl concludes from the transfers of an image.
#include "tools/zemctl/updates/image_transfers.h"

#include <gtest/gtest.h>

#include "include/ZemUVCExtApi.h"

namespace {

using zemctl::ImageTransfers;
using zemctl::Transfer;

Transfer Vendor(std::uint32_t selector, bool isSet, std::vector<std::uint8_t> bytes,
                HRESULT result = S_OK) {
  Transfer transfer;
  transfer.unit = ZEM_VENDOR_XU;
  transfer.selector = selector;
  transfer.isSet = isSet;
  transfer.length = static_cast<std::uint32_t>(bytes.size());
  transfer.bytes = std::move(bytes);
  transfer.result = result;
  return transfer;
}

Transfer Chunk(std::uint32_t selector, std::size_t size, HRESULT result = S_OK) {
  return Vendor(selector, true, std::vector<std::uint8_t>(size), result);
}

Transfer Order(HRESULT result = S_OK) {
  return Vendor(4, true, {0x01, 0x01, 0x03, 0x00, 0, 4, 0, 0}, result);
}

Transfer Status(std::uint8_t state) { return Vendor(5, false, {state, 0, 0, 0, 0, 0, 0, 0}); }

TEST(ImageTransfersTest, NothingYet) {
  const ImageTransfers image(1000);
  EXPECT_FALSE(image.begun());
  EXPECT_FALSE(image.complete());
  EXPECT_FALSE(image.ordered());
  EXPECT_FALSE(image.seenBurning());
  EXPECT_EQ(image.sentPercent(), 0U);
}

TEST(ImageTransfersTest, AnImageInChunksOfEitherLength) {
  ImageTransfers fast(1000);
  fast.OnTransfer(Chunk(13, 512));
  EXPECT_TRUE(fast.begun());
  EXPECT_FALSE(fast.complete());
  EXPECT_EQ(fast.sentPercent(), 51U);
  fast.OnTransfer(Chunk(13, 512));
  EXPECT_TRUE(fast.complete());
  EXPECT_EQ(fast.sentPercent(), 100U);

  ImageTransfers slow(64);
  slow.OnTransfer(Chunk(3, 32));
  EXPECT_EQ(slow.sentPercent(), 50U);
  slow.OnTransfer(Chunk(3, 32));
  EXPECT_TRUE(slow.complete());
}

TEST(ImageTransfersTest, OnlyWhatWasTakenCounts) {
  ImageTransfers image(512);
  image.OnTransfer(Chunk(13, 512, E_FAIL));
  image.OnTransfer(Vendor(13, false, std::vector<std::uint8_t>(512)));  // the look at the speed
  image.OnTransfer(Chunk(9, 512));
  EXPECT_FALSE(image.begun());
  Transfer other = Chunk(13, 512);
  other.unit = ZEM_H264_XU;
  image.OnTransfer(other);
  EXPECT_FALSE(image.begun());
}

TEST(ImageTransfersTest, TheOrderToBurn) {
  ImageTransfers image(512);
  image.OnTransfer(Vendor(4, true, {0x01, 0x00, 0x03, 0x00, 0, 2, 0, 0}));
  image.OnTransfer(Vendor(4, true, {0x02, 0x01, 0x03, 0x00, 0, 2, 0, 0}));
  image.OnTransfer(Order(E_FAIL));
  EXPECT_FALSE(image.ordered());
  image.OnTransfer(Order());
  EXPECT_TRUE(image.ordered());
}

TEST(ImageTransfersTest, ABurnIsSeenBehindTheOrderOnly) {
  ImageTransfers image(512);
  image.OnTransfer(Status(0x81));
  EXPECT_FALSE(image.seenBurning());
  image.OnTransfer(Order());
  for (const std::uint8_t state : std::initializer_list<std::uint8_t>{0x00, 0x82}) {
    image.OnTransfer(Status(state));
    EXPECT_FALSE(image.seenBurning());
  }
  Transfer unread = Status(0x81);
  unread.result = E_FAIL;
  image.OnTransfer(unread);
  EXPECT_FALSE(image.seenBurning());
  image.OnTransfer(Status(0x81));
  EXPECT_TRUE(image.seenBurning());
}

}  // namespace
