// The rules by which an integer is read from a private profile file.
#include "platform/portable/private_profile.h"

#include <gtest/gtest.h>

namespace {

using zem::platform::ParsePrivateProfileInt;

std::uint32_t Read(std::wstring_view text) {
  return ParsePrivateProfileInt(text, L"AP", L"Key", 7);
}

TEST(PrivateProfileTest, Numbers) {
  EXPECT_EQ(Read(L"[AP]\nKey=12"), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey=0x1aF"), 0x1AFU);
  EXPECT_EQ(Read(L"[AP]\nKey=0X10"), 16U);
  EXPECT_EQ(Read(L"[AP]\nKey=+3"), 3U);
  EXPECT_EQ(Read(L"[AP]\nKey=-1"), 0xFFFFFFFFU);
  EXPECT_EQ(Read(L"[AP]\nKey=12abc"), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey=12-3"), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey=12:3"), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey=0x12g"), 0x12U);
  EXPECT_EQ(Read(L"[AP]\nKey=4294967297"), 1U) << "wraps at 32 bits";
}

TEST(PrivateProfileTest, ValuesWithoutDigitsGiveZeroAndMissingOnesTheDefault) {
  EXPECT_EQ(Read(L"[AP]\nKey=abc"), 0U);
  EXPECT_EQ(Read(L"[AP]\nKey=0x"), 0U);
  EXPECT_EQ(Read(L"[AP]\nKey="), 7U);
  EXPECT_EQ(Read(L"[AP]\nKey=\"\""), 7U);
  EXPECT_EQ(Read(L"[AP]\nOther=1"), 7U);
  EXPECT_EQ(Read(L"Key=1"), 7U);
  EXPECT_EQ(Read(L""), 7U);
}

TEST(PrivateProfileTest, NamesInAnyCaseBlanksQuotesAndComments) {
  EXPECT_EQ(Read(L" [ap] \r\n  KEY = 12 \r\n"), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey=\"12\""), 12U);
  EXPECT_EQ(Read(L"[AP]\nKey='12'"), 12U);
  EXPECT_EQ(Read(L"[AP]\n;Key=1\nKey=2"), 2U);
  EXPECT_EQ(Read(L"[AP]\nKey\nKey=2"), 2U) << "a line without a value is passed over";
}

TEST(PrivateProfileTest, FirstSectionAndFirstKeyCount) {
  EXPECT_EQ(Read(L"[AP]\nKey=1\nKey=2"), 1U);
  EXPECT_EQ(Read(L"[AP]\nOther=1\n[XX]\n[AP]\nKey=2"), 7U);
  EXPECT_EQ(Read(L"[AP\nKey=1"), 7U) << "a heading that is not closed is none";
}

}  // namespace
