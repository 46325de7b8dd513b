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

TEST(ErrorsTest, EveryText) {
  const std::pair<std::uint32_t, const wchar_t*> kTexts[] = {
      {1, L"The device does not take this request."},
      {2, L"There is no such device."},
      {4, L"Too many files are open."},
      {5, L"Access is denied."},
      {6, L"The handle is invalid."},
      {14, L"There is not enough memory."},
      {21, L"The device is not ready."},
      {24, L"The length does not suit the request."},
      {31, L"A device attached to the system is not functioning."},
      {50, L"The request is not supported."},
      {87, L"The parameter is incorrect."},
      {121, L"The device did not answer in time."},
      {170, L"The device is in use."},
      {234, L"More data is available."},
      {998, L"Invalid access to memory."},
      {1117, L"The request could not be carried out because of a device error."},
      {1167, L"The device is not connected."},
      {1168, L"There is no such control."},
      {1170, L"The device has no such unit."},
      {1235, L"The request was aborted."},
      {5023, L"The device is not in the state for this request."},
  };
  for (const auto& [error, text] : kTexts) {
    EXPECT_STREQ(TextOfError(error), text) << error;
  }
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
