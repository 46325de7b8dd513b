// What zemctl says about the camera's state when an update did not go through.
#include "tools/zemctl/updates/update_outcome.h"

#include <gtest/gtest.h>

namespace {

using zemctl::ImageTransfers;
using zemctl::StateAfter;
using zemctl::StateWhenStopped;
using zemctl::Transfer;

// An image of two chunks, of which so many have been taken, and perhaps the order to burn.
ImageTransfers Sent(std::uint32_t chunksOfTwo, bool ordered = false) {
  ImageTransfers image(1024);
  Transfer transfer;
  transfer.unit = ZEM_VENDOR_XU;
  transfer.isSet = true;
  for (std::uint32_t chunk = 1; chunk <= chunksOfTwo; ++chunk) {
    transfer.selector = 13;
    transfer.length = 512;
    image.OnTransfer(transfer);
  }
  if (ordered) {
    transfer.selector = 4;
    transfer.length = 8;
    transfer.bytes = {0x01, 0x01, 0x03, 0x00, 0x00, 0x04, 0x00, 0x00};
    image.OnTransfer(transfer);
  }
  return image;
}

bool Tells(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

TEST(UpdateOutcomeTest, AllWentWell) { EXPECT_FALSE(StateAfter(ZEM_OK, Sent(2, true), false, 0)); }

TEST(UpdateOutcomeTest, ALostTransferIsNoSuccess) {
  const auto state = StateAfter(ZEM_OK, Sent(2, true), true, 0);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->state, "the camera has come to its end since: the image is burned");
}

TEST(UpdateOutcomeTest, SuccessWithPartOfTheImageIsNone) {
  const auto state = StateAfter(ZEM_OK, Sent(1, true), false, 0);
  ASSERT_TRUE(state);
  EXPECT_TRUE(Tells(state->state, "part of the image was lost"));
  EXPECT_TRUE(Tells(state->next, "before it restarts"));
}

TEST(UpdateOutcomeTest, WithoutABurnOrderNothingIsChanged) {
  for (const ZemResult result : {ZEM_E_NO_DEVICE, ZEM_E_REFUSED}) {
    for (const std::uint32_t chunks : {0U, 1U, 2U}) {
      const auto state = StateAfter(result, Sent(chunks), false, std::nullopt);
      ASSERT_TRUE(state);
      EXPECT_EQ(state->state, "no burn order went through: the camera keeps what it had");
    }
  }
}

TEST(UpdateOutcomeTest, AfterTheOrderTheCamerasStatusTells) {
  const struct {
    std::optional<std::uint8_t> status;
    const char* state;
  } cases[] = {
      {0x82, "the burn failed: the area may be erased or half written"},
      {0x81, "the camera is still burning"},
      {0x00, "the camera has come to its end since: the image is burned"},
      {std::nullopt, "the camera was burning and no longer answers: the area may be half written"}};
  for (const auto& [status, text] : cases) {
    const auto state = StateAfter(ZEM_E_DEVICE_REFUSED, Sent(2, true), false, status);
    ASSERT_TRUE(state);
    EXPECT_EQ(state->state, text);
    EXPECT_FALSE(state->next.empty());
  }
}

TEST(UpdateOutcomeTest, ALostPartCountsMoreThanTheStatus) {
  const auto state = StateAfter(ZEM_E_DEVICE_REFUSED, Sent(1, true), false, 0x82);
  ASSERT_TRUE(state);
  EXPECT_TRUE(Tells(state->state, "part of the image was lost"));
}

TEST(UpdateOutcomeTest, RefusedBeforeTheImage) {
  const struct {
    std::optional<std::uint8_t> status;
    const char* state;
  } cases[] = {{0x81, "is busy or does not take this kind of image; nothing was sent"},
               {0x01, "is busy or does not take this kind of image; nothing was sent"},
               {0x00, "was not idle when the image was announced, and is now"},
               {0x82, "reports a failed burn, this one or an earlier one"},
               {std::nullopt, "does not answer"}};
  for (const auto& [status, text] : cases) {
    const auto state = StateAfter(ZEM_E_DEVICE_REFUSED, Sent(0), false, status);
    ASSERT_TRUE(state);
    EXPECT_TRUE(Tells(state->state, text)) << state->state;
  }
}

TEST(UpdateOutcomeTest, StoppedByThePerson) {
  for (const ImageTransfers& image : {Sent(0), Sent(1), Sent(2)}) {
    EXPECT_EQ(StateWhenStopped(image).state,
              "no burn order was given: the camera keeps what it had");
  }
  for (const ImageTransfers& image : {Sent(1, true), Sent(2, true)}) {
    EXPECT_EQ(StateWhenStopped(image).state, "the camera was told to burn and goes on by itself");
  }
}

}  // namespace
