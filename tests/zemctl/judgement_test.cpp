// Which of a call's failed transfers count.
#include "tools/zemctl/camera/judgement.h"

#include <gtest/gtest.h>

#include <vector>

#include "include/ZemUVCExtApi.h"

namespace {

using zemctl::FindLoss;
using zemctl::Transfer;

constexpr HRESULT kStall = static_cast<HRESULT>(0x8007001FU);
constexpr HRESULT kUnknown = static_cast<HRESULT>(0x80070490U);

Transfer Made(const GUID& unit, std::uint32_t selector, bool isSet, HRESULT result) {
  Transfer transfer;
  transfer.unit = unit;
  transfer.selector = selector;
  transfer.isSet = isSet;
  transfer.length = 8;
  transfer.moved = FAILED(result) ? 0 : 8;
  transfer.result = result;
  return transfer;
}

Transfer Get(std::uint32_t selector, HRESULT result) {
  return Made(ZEM_VENDOR_XU, selector, false, result);
}

Transfer Set(std::uint32_t selector, HRESULT result, std::uint8_t first = 0) {
  Transfer transfer = Made(ZEM_VENDOR_XU, selector, true, result);
  transfer.bytes = {first};
  return transfer;
}

bool HasLoss(const char* function, const std::vector<Transfer>& transfers) {
  return FindLoss(function, transfers).has_value();
}

TEST(JudgementTest, ACallWithoutAFailedTransferLostNone) {
  EXPECT_FALSE(HasLoss("ZEMAPI_GetRegister", {}));
  EXPECT_FALSE(HasLoss("ZEMAPI_GetRegister", {Set(1, S_OK), Get(2, S_FALSE)}));
}

TEST(JudgementTest, TheFirstFailedTransferIsTheLoss) {
  const std::vector<Transfer> transfers = {Set(1, S_OK), Get(2, kStall), Get(7, kUnknown)};
  const auto loss = FindLoss("ZEMAPI_GetRegister", transfers);
  ASSERT_TRUE(loss);
  EXPECT_EQ(loss->selector, 2U);
  EXPECT_EQ(loss->result, kStall);
}

Transfer Short(Transfer transfer) {
  transfer.moved = 7;
  return transfer;
}

TEST(JudgementTest, AnAnswerThatIsTooShortIsALoss) {
  const auto loss = FindLoss("ZEMAPI_GetRegister", std::vector{Set(1, S_OK), Short(Get(2, S_OK))});
  ASSERT_TRUE(loss);
  EXPECT_EQ(FailureOf(*loss), "it brought 7 of 8 bytes");
  // What is written is not counted by what was moved, and a standard control moves no bytes.
  EXPECT_FALSE(HasLoss("ZEMAPI_SetRegister", {Short(Set(1, S_OK))}));
  Transfer control = Short(Get(4, S_OK));
  control.unit = zem::IID_IAMCameraControl;
  EXPECT_FALSE(HasLoss("ZEMAPI_GetCameraControl", {control}));
  // Where the length is what is asked for.
  EXPECT_FALSE(HasLoss("ZEMAPI_UpdateFlash", {Short(Get(13, S_OK)), Set(3, S_OK)}));
  EXPECT_FALSE(HasLoss("ZEMAPI_ReadFWData", {Short(Get(3, S_OK)), Get(3, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_ReadFWData", {Get(3, S_OK), Short(Get(3, S_OK))}));
  // Nobody tries again because of it.
  EXPECT_TRUE(HasLoss("ZEMAPI_UpdateFW_516x", {Short(Get(5, S_OK)), Get(5, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_ReadPartialFlashData", {Short(Get(8, S_OK)), Get(8, S_OK)}));
}

TEST(JudgementTest, TheSpeedMayBeUnknown) {
  EXPECT_FALSE(HasLoss("ZEMAPI_UpdateFlash", {Get(13, kStall), Set(3, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_UpdateFlash", {Set(13, kStall)}));
}

TEST(JudgementTest, OnlyTheFirstReadOfDataIsALengthProbe) {
  EXPECT_FALSE(HasLoss("ZEMAPI_ReadFWData", {Get(3, kStall), Set(4, S_OK), Get(3, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_ReadFWData", {Get(3, S_OK), Set(4, S_OK), Get(3, kStall)}));
  // A piece that follows is another one, not the same again.
  EXPECT_TRUE(
      HasLoss("ZEMAPI_ReadFWData", {Get(3, S_OK), Set(4, S_OK), Get(3, kStall), Get(3, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_SendData", {Get(3, kStall)}));
}

TEST(JudgementTest, TheSkypeVersionMayBeMissingWithItsUnit) {
  const auto version = [](HRESULT result) { return Made(ZEM_SKYPE_XU, 1, false, result); };
  EXPECT_FALSE(HasLoss("ZEMAPI_SetH264Mode", {version(kUnknown)}));
  EXPECT_FALSE(HasLoss("ZEMAPI_SetH264FrameIndex", {version(kUnknown)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_SetH264Mode", {version(kStall)}));
  EXPECT_FALSE(HasLoss("ZEMAPI_GetSkypeXUVersion", {version(kUnknown)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_GetSkypeXUVersion", {version(kStall)}));
  Transfer unaddressed = version(kStall);
  unaddressed.isAddressed = false;
  EXPECT_FALSE(HasLoss("ZEMAPI_SetH264Mode", {unaddressed}));
  unaddressed.unit = ZEM_TIRELLA_XU;
  EXPECT_TRUE(HasLoss("ZEMAPI_TIRELLA_LedCtrl", {unaddressed}));
}

TEST(JudgementTest, TheWayIntoRomBootMayEndTheConnection) {
  EXPECT_FALSE(HasLoss("ZEMAPI_ResetToRomboot", {Set(4, kStall), Set(14, kStall)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_ResetToRombootVcp8", {Set(4, kStall)}));
}

TEST(JudgementTest, WhatTheLibraryRepeatsCountsAtItsEnd) {
  EXPECT_FALSE(HasLoss("ZEMAPI_SendData", {Set(3, kStall), Set(3, kStall), Set(3, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_SendData", {Set(3, kStall), Set(3, kStall)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_SendData", {Set(3, kStall, 1), Set(3, S_OK, 2)}));
  EXPECT_FALSE(HasLoss("ZEMAPI_ReadPartialFlashData", {Get(8, kStall), Get(8, S_OK)}));
  EXPECT_FALSE(HasLoss("ZEMAPI_ReadPartialFlashData", {Get(11, kStall), Get(11, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_ReadPartialFlashData", {Get(8, kStall), Get(11, S_OK)}));
  for (const char* const function :
       {"ZEMAPI_UpdateFW_516x", "ZEMAPI_UpdateFlash", "ZEMAPI_UpdateCaliData"}) {
    EXPECT_FALSE(HasLoss(function, {Get(5, kStall), Get(5, S_OK)})) << function;
    EXPECT_TRUE(HasLoss(function, {Get(5, kStall), Get(13, S_OK), Get(5, S_OK)})) << function;
  }
  EXPECT_TRUE(HasLoss("ZEMAPI_UpdateFW_517x", {Get(5, kStall), Get(5, S_OK)}));
  EXPECT_TRUE(HasLoss("ZEMAPI_GetRegister", {Get(2, kStall), Get(2, S_OK)}));
}

}  // namespace
