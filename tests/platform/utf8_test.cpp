// Between wide text and UTF-8.
#include "platform/portable/utf8.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

using zem::platform::DecodeUtf8;
using zem::platform::EncodeUtf8;
using zem::platform::NarrowText;
using zem::platform::WidenText;

std::wstring Widened(std::string_view narrow) {
  std::array<wchar_t, 64> wide = {};
  WidenText(narrow, wide);
  return wide.data();
}

std::string Narrowed(const std::wstring& wide) {
  std::array<char, 64> narrow = {};
  EXPECT_TRUE(NarrowText(wide, narrow));
  return narrow.data();
}

TEST(Utf8Test, FirstAndLastCharacterOfEachLength) {
  const std::pair<wchar_t, std::string> kCases[] = {
      {L'\x01', "\x01"},
      {L'\x7F', "\x7F"},
      {L'\x80', "\xC2\x80"},
      {L'\x7FF', "\xDF\xBF"},
      {L'\x800', "\xE0\xA0\x80"},
      {L'\xD7FF', "\xED\x9F\xBF"},
      {L'\xE000', "\xEE\x80\x80"},
      {L'\xFFFF', "\xEF\xBF\xBF"},
      {L'\x10000', "\xF0\x90\x80\x80"},
      {L'\x10FFFF', "\xF4\x8F\xBF\xBF"},
  };
  for (const auto& [character, bytes] : kCases) {
    EXPECT_EQ(EncodeUtf8(character).text(), bytes);
    std::string_view rest = bytes;
    EXPECT_EQ(DecodeUtf8(rest), character);
    EXPECT_TRUE(rest.empty());
  }
}

TEST(Utf8Test, WhatIsNoCharacterBecomesAQuestionMark) {
  EXPECT_EQ(EncodeUtf8(static_cast<wchar_t>(0x110000)).text(), "?");
  EXPECT_EQ(EncodeUtf8(static_cast<wchar_t>(-1)).text(), "?");
}

// Continuations without a lead, leads without their continuations, forms longer than needed, halves
// of a pair, what lies behind the last character.
TEST(Utf8Test, EveryByteOfNoSequenceSurvivesBothWays) {
  for (const std::string text : {"a\x80z", "\xBF", "\xC3", "\xC3(", "\xE2(\x82", "\xC0\xAF",
                                 "\xE0\x80\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF0\x80\x80\xAF",
                                 "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE\xFF"}) {
    std::size_t stray = 0;
    for (const wchar_t character : Widened(text)) {
      stray += character >= 0xDC80 && character <= 0xDCFF ? 1 : 0;
    }
    EXPECT_GT(stray, 0U) << text;
    EXPECT_EQ(Narrowed(Widened(text)), text);
  }
  EXPECT_EQ(Widened("a\x80z"), std::wstring({L'a', static_cast<wchar_t>(0xDC80), L'z'}));
}

TEST(Utf8Test, NarrowTextThatDoesNotFitIsNone) {
  std::array<char, 4> three = {'x', 'x', 'x', 'x'};
  EXPECT_TRUE(NarrowText(L"a\u00E4", three));
  EXPECT_STREQ(three.data(), "a\xC3\xA4");
  EXPECT_FALSE(NarrowText(L"ab\u00E4", three));
  EXPECT_STREQ(three.data(), "");
}

TEST(Utf8Test, WideTextIsCut) {
  std::array<wchar_t, 3> wide = {};
  WidenText("\xC3\xA4\xC3\xB6\xC3\xBC", wide);
  EXPECT_STREQ(wide.data(), L"\u00E4\u00F6");
}

}  // namespace
