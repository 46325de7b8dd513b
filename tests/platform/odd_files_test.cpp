// Files that cannot be measured, and files that change while they are read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/file_contents.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/memory_limit.h"
#include "tests/support/temporary_folder.h"

namespace {

using zem::FileHandle;
using zem::testing::BeforeAllocation;
using zem::testing::TemporaryFolder;
namespace platform = zem::platform;

class OddFileTest : public ::testing::Test {
 protected:
  OddFileTest() { platform::simulated::Reset(); }

  TemporaryFolder folder_;
};

// A file of five bytes, of whose seeks one fails.
struct SeekCount {
  int failing = 0;
  int made = 0;
  off64_t position = 0;
};

FileHandle OpenSeekable(SeekCount& seeks) {
  cookie_io_functions_t functions = {};
  functions.seek = [](void* cookie, off64_t* position, int whence) {
    auto& count = *static_cast<SeekCount*>(cookie);
    if (count.made++ == count.failing) {
      errno = EIO;
      return -1;
    }
    *position += whence == SEEK_END ? 5 : whence == SEEK_CUR ? count.position : 0;
    count.position = *position;
    return 0;
  };
  return FileHandle(fopencookie(&seeks, "r", functions));
}

TEST_F(OddFileTest, AFileOfWhichOneSeekFailsHasNoLength) {
  SeekCount seeks = {.failing = -1};
  const FileHandle good = OpenSeekable(seeks);
  EXPECT_EQ(platform::MeasureFile(good.get()), 5U);
  const int needed = seeks.made;
  EXPECT_GE(needed, 2);
  for (int failing = 0; failing < needed; ++failing) {
    SeekCount failure = {.failing = failing};
    const FileHandle file = OpenSeekable(failure);
    EXPECT_EQ(platform::MeasureFile(file.get()), std::nullopt) << failing;
    EXPECT_EQ(failure.made, failing + 1) << "nothing is asked behind it";
  }
}

TEST_F(OddFileTest, AFileThatBecomesShorterWhileItIsReadIsNotRead) {
  constexpr std::size_t kMoreThanIsReadAhead = 1 << 20;
  folder_.Write("short", std::vector<std::uint8_t>(kMoreThanIsReadAhead));
  ASSERT_TRUE(zem::ReadWholeFile(folder_.Path("short").c_str(), 0));
  const BeforeAllocation act(
      [this] { std::filesystem::resize_file(folder_.path() / "short", kMoreThanIsReadAhead - 1); });
  EXPECT_FALSE(zem::ReadWholeFile(folder_.Path("short").c_str(), 0));
}

TEST_F(OddFileTest, APipeIsNotReadAsAFile) {
  const std::string path = (folder_.path() / "pipe").string();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  // So that opening it does not wait for the other side.
  const int held = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(held, 0);
  EXPECT_FALSE(zem::ReadWholeFile(folder_.Path("pipe").c_str(), 0));
  close(held);
}

}  // namespace
