// The kernel's errors as the errors of Windows, row by row, and that the page for users says the
// same.
#include "platform/linux/errors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace {

using zem::platform::ErrorOfErrno;
using zem::platform::ResultOfErrno;
using zem::platform::TextOfError;

struct Row {
  const char* name;
  int error;
  std::uint32_t windows;
};

constexpr Row kRows[] = {
    {"ENOENT", ENOENT, 1168},       {"EINVAL", EINVAL, 87},
    {"EBADRQC", EBADRQC, 1},        {"ENOBUFS", ENOBUFS, 24},
    {"ENOTTY", ENOTTY, 50},         {"EBUSY", EBUSY, 170},
    {"EILSEQ", EILSEQ, 5023},       {"EREMOTE", EREMOTE, 21},
    {"ERANGE", ERANGE, 87},         {"EIO", EIO, 1117},
    {"EPIPE", EPIPE, 31},           {"ETIMEDOUT", ETIMEDOUT, 121},
    {"ETIME", ETIME, 121},          {"EPROTO", EPROTO, 1117},
    {"EOVERFLOW", EOVERFLOW, 1117}, {"ESHUTDOWN", ESHUTDOWN, 1167},
    {"ENODEV", ENODEV, 1167},       {"ENXIO", ENXIO, 1167},
    {"EACCES", EACCES, 5},          {"EPERM", EPERM, 5},
    {"EFAULT", EFAULT, 998},        {"ENOMEM", ENOMEM, 14},
    {"EMFILE", EMFILE, 4},          {"ENFILE", ENFILE, 4},
};

TEST(ErrorsTest, EveryRowOfEitherSign) {
  for (const Row& row : kRows) {
    EXPECT_EQ(ErrorOfErrno(row.error), row.windows) << row.name;
    EXPECT_EQ(ErrorOfErrno(-row.error), row.windows) << row.name;
    EXPECT_EQ(static_cast<std::uint32_t>(ResultOfErrno(-row.error)), 0x80070000U + row.windows);
    EXPECT_NE(TextOfError(row.windows), nullptr) << row.name;
  }
}

TEST(ErrorsTest, AnyOtherErrorIsAGeneralFailure) {
  EXPECT_EQ(ErrorOfErrno(EXDEV), 31U);
  EXPECT_EQ(ErrorOfErrno(100000), 31U);
}

TEST(ErrorsTest, TextsOfErrorsThatAreNotOfTheTable) {
  EXPECT_STREQ(TextOfError(2), L"There is no such device.");
  EXPECT_STREQ(TextOfError(1235), L"The request was aborted.");
  EXPECT_EQ(TextOfError(3), nullptr);
}

TEST(ErrorsTest, ThePageForUsersHasTheSameTable) {
  std::ifstream page(ZEM_SOURCE_FOLDER "/docs/linux.md");
  const std::regex row(R"(\| `(E[A-Z]+)` \| .* \| 0x8007([0-9A-F]{4}) \|)");
  std::map<std::string, std::uint32_t> documented;
  for (std::string line; std::getline(page, line);) {
    std::smatch match;
    if (std::regex_match(line, match, row)) {
      documented[match[1]] = static_cast<std::uint32_t>(std::stoul(match[2], nullptr, 16));
    }
  }
  std::map<std::string, std::uint32_t> expected;
  for (const Row& each : kRows) {
    expected[each.name] = each.windows;
  }
  EXPECT_EQ(documented, expected);
}

}  // namespace
