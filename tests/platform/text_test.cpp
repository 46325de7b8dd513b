// Text comparison, byte order and the simulated formatter.
#include "platform/text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/bytes.h"
#include "platform/platform.h"

namespace {

TEST(TextTest, CaseOfAsciiLettersIsIgnoredAndNoOther) {
  EXPECT_TRUE(zem::EqualIgnoringCase(L"aZ09_\u00E4", L"Az09_\u00E4"));
  EXPECT_FALSE(zem::EqualIgnoringCase(L"\u00E4", L"\u00C4"));
  EXPECT_FALSE(zem::EqualIgnoringCase(L"a", L"ab"));
  EXPECT_FALSE(zem::EqualIgnoringCase(L"@", L"`")) << "neighbours of the letters are no letters";
  EXPECT_FALSE(zem::EqualIgnoringCase(L"[", L"{"));
}

TEST(BytesTest, LoadAndStore) {
  const std::array<std::uint8_t, 4> bytes = {0x12, 0x34, 0x56, 0x78};
  EXPECT_EQ(zem::LoadLe16(bytes.data()), 0x3412);
  EXPECT_EQ(zem::LoadLe32(bytes.data()), 0x78563412U);
  EXPECT_EQ(zem::ByteOf(0x123456U, 2), 0x12);
  std::array<std::uint8_t, 4> stored = {};
  zem::StoreLe16(stored.data(), 0x1234);
  EXPECT_EQ(stored, (std::array<std::uint8_t, 4>{0x34, 0x12, 0, 0}));
  zem::StoreLe32(stored.data(), 0x12345678);
  EXPECT_EQ(stored, (std::array<std::uint8_t, 4>{0x78, 0x56, 0x34, 0x12}));
  zem::StoreBe32(stored.data(), 0x12345678);
  EXPECT_EQ(stored, (std::array<std::uint8_t, 4>{0x12, 0x34, 0x56, 0x78}));
  zem::StoreBe16(stored.data(), 0xABCD);
  EXPECT_EQ(stored, (std::array<std::uint8_t, 4>{0xAB, 0xCD, 0x56, 0x78}));
}

TEST(FormatTest, WideStringsAndCutting) {
  std::array<wchar_t, 8> text = {};
  zem::platform::FormatWide(text, L"%s|%.4x", L"ab", 0x1FU);
  EXPECT_STREQ(text.data(), L"ab|001f");
  zem::platform::FormatWide(text, L"%s", L"0123456789");
  EXPECT_STREQ(text.data(), L"0123456");
  zem::platform::FormatWide(text, L"s%s", L"x");
  EXPECT_STREQ(text.data(), L"sx");
}

TEST(FormatTest, AFormatLongerThanTheBuffersIsCutToThem) {
  std::array<wchar_t, 5000> text = {};
  zem::platform::FormatWide(text, std::wstring(6000, L'x').c_str());
  EXPECT_EQ(std::wstring(text.data()), std::wstring(4094, L'x'));
}

}  // namespace
