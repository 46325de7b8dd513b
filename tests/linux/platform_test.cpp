// The platform wall on Linux, but for its devices.
#include "platform/platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "include/ZemUVCExtApi.h"
#include "tests/support/temporary_folder.h"

// Of a build that counts what runs.
extern "C" [[gnu::weak]] int __llvm_profile_write_file();  // NOLINT: the compiler's name

namespace {

using zem::testing::TemporaryFolder;
namespace platform = zem::platform;

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// An environment variable for as long as a test.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    const char* const before = std::getenv(name);
    before_ = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
    setenv(name, value.c_str(), 1);
  }
  ~Variable() {
    if (before_) {
      setenv(name_, before_->c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> before_;
};

TEST(LinuxPlatformTest, SettingsLieBesideTheProgram) {
  std::array<wchar_t, platform::kPathCapacity> path = {};
  platform::HostFilePath(path, L"zem_setting.ini");
  const std::filesystem::path expected =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / "zem_setting.ini";
  EXPECT_EQ(std::wstring(path.data()), expected.wstring());
}

TEST(LinuxPlatformTest, SettingsAreReadFromAFileOfAnyBytes) {
  const TemporaryFolder folder;
  const std::wstring path = folder.path().wstring() + L"/s\u00E4tze.ini";
  const auto read = [&](const std::string& text) {
    folder.Write("s\xC3\xA4tze.ini", {text.begin(), text.end()});
    return platform::PrivateProfileInt(L"AP", L"DeviceVid", 7, path.c_str());
  };
  EXPECT_EQ(read("[AP]\nDeviceVid=0x1234\n"), 0x1234U);
  EXPECT_EQ(read("; \xFF\xC3\xA4\r\n[ap]\r\ndevicevid = 99\r\n"), 99U);
  EXPECT_EQ(read(""), 7U);
  EXPECT_EQ(read(std::string(1024 * 1024, ' ')), 7U);
  EXPECT_EQ(read("[AP]\nDeviceVid=5\n" + std::string(1024 * 1024, ' ')), 7U) << "no settings file";
  EXPECT_EQ(platform::PrivateProfileInt(L"AP", L"DeviceVid", 7, folder.Path("none").c_str()), 7U);
  EXPECT_EQ(platform::PrivateProfileInt(L"AP", L"DeviceVid", 7, folder.Path("").c_str()), 7U);
}

TEST(LinuxPlatformTest, FilesByWidePath) {
  const TemporaryFolder folder;
  // A name that is not UTF-8 comes from the system as stray bytes, and goes back as such.
  const std::wstring wide = folder.path().wstring() + L"/\u20AC" + static_cast<wchar_t>(0xDCFF);
  std::FILE* const file = platform::OpenFile(wide.c_str(), L"w+b");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  platform::WriteText(file, L"a\u20AC\U0001F600");
  EXPECT_EQ(platform::MeasureFile(file), 8U);
  EXPECT_TRUE(platform::SeekFile(file, 1));
  EXPECT_EQ(std::fgetc(file), 0xE2);
  EXPECT_FALSE(platform::SeekFile(file, ~std::uint64_t{0}));
  std::fclose(file);
  EXPECT_EQ(access((folder.path().string() + "/\xE2\x82\xAC\xFF").c_str(), F_OK), 0);
  EXPECT_EQ(platform::OpenFile(nullptr, L"rb"), nullptr);
  EXPECT_EQ(platform::OpenFile(folder.Path("none").c_str(), L"rb"), nullptr);
  EXPECT_EQ(platform::OpenFile(folder.path().wstring().c_str(), L"rb"), nullptr) << "a folder";
  EXPECT_EQ(platform::OpenFile(std::wstring(5000, L'a').c_str(), L"wb"), nullptr);
  EXPECT_EQ(platform::OpenFile(wide.c_str(), L"\u20AC\u20AC\u20AC"), nullptr) << "no mode";
}

// A wait that a signal interrupts goes on until its end; the signal's own work is done.
TEST(LinuxPlatformTest, SignalsDoNotShortenAWait) {
  static volatile std::sig_atomic_t signals = 0;
  struct sigaction action = {};
  struct sigaction before = {};
  action.sa_handler = [](int /*signal*/) { signals = signals + 1; };
  ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
  const itimerval soon = {{0, 0}, {0, 5000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &soon, nullptr), 0);
  const std::uint32_t start = platform::MillisecondClock();
  platform::Sleep(40);
  EXPECT_GE(platform::MillisecondClock() - start, 39U);
  EXPECT_EQ(signals, 1);
  sigaction(SIGALRM, &before, nullptr);
}

TEST(LinuxPlatformTest, LogFolder) {
  std::array<wchar_t, platform::kPathCapacity> path = {};
  for (const auto& [folder, expected] :
       {std::pair("/var/x", L"/var/x/log.txt"), std::pair("/var/x/", L"/var/x/log.txt"),
        std::pair("", L"/tmp/log.txt"), std::pair("/\xC3\xA4", L"/\u00E4/log.txt")}) {
    const Variable variable("TMPDIR", folder);
    platform::LogFilePath(path, L"log.txt");
    EXPECT_STREQ(path.data(), expected);
  }
}

TEST(LinuxPlatformTest, DebuggerLinesGoToTheFileThatIsChosen) {
  const TemporaryFolder folder;
  const std::string path = (folder.path() / "debug.txt").string();
  platform::DebuggerOutput(L"nowhere\r\n");
  {
    const Variable variable("ZEM_DEBUG", "");
    platform::DebuggerOutput(L"nowhere\r\n");
  }
  {
    const Variable variable("ZEM_DEBUG", path);
    platform::DebuggerOutput(L"[ERR] \u20AC\r\n");
    platform::DebuggerOutput(L"no end");
    platform::DebuggerOutput(L"\r\n");
    platform::DebuggerOutput(L"");
    platform::DebuggerOutput(L"two\r\n\r\n");
  }
  platform::DebuggerOutput(L"nowhere\r\n");
  EXPECT_EQ(ReadText(path), "[ERR] \xE2\x82\xAC\nno end\ntwo\r\n\n");
}

TEST(LinuxPlatformTest, DebuggerLinesLongerThanOnePieceAreCutAndKeepTheirEnd) {
  const TemporaryFolder folder;
  const std::string path = (folder.path() / "debug.txt").string();
  const Variable variable("ZEM_DEBUG", path);
  platform::DebuggerOutput((std::wstring(5000, L'x') + L"\r\n").c_str());
  EXPECT_EQ(ReadText(path), std::string(4095, 'x') + "\n");
}

TEST(LinuxPlatformTest, DebuggerLinesOnTheErrorStream) {
  const Variable variable("ZEM_DEBUG", "stderr");
  testing::internal::CaptureStderr();
  platform::DebuggerOutput(L"line\r\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "line\n");
}

TEST(LinuxPlatformTest, AFileThatCannotBeWrittenIsNoFailure) {
  const Variable variable("ZEM_DEBUG", "/proc/none/debug.txt");
  platform::DebuggerOutput(L"line\r\n");
}

TEST(LinuxPlatformTest, ClockAndSleep) {
  const std::uint32_t before = platform::MillisecondClock();
  platform::Sleep(20);
  const std::uint32_t slept = platform::MillisecondClock() - before;
  EXPECT_GE(slept, 20U);
}

TEST(LinuxPlatformTest, LocalTimeIsThatOfTheZone) {
  const Variable variable("TZ", "XYZ-3");
  tzset();
  const std::time_t now = std::time(nullptr);
  const platform::LocalTime local = platform::CurrentLocalTime();
  const std::time_t shifted = now + 3 * 3600;
  std::tm expected = {};
  gmtime_r(&shifted, &expected);
  // The second may have turned between the two.
  EXPECT_EQ(local.year, expected.tm_year + 1900);
  EXPECT_EQ(local.month, expected.tm_mon + 1);
  EXPECT_EQ(local.hour * 60 + local.minute, expected.tm_hour * 60 + expected.tm_min);
}

TEST(LinuxPlatformTest, LastErrorIsTheThreads) {
  EXPECT_EQ(platform::OpenVolume(L"none"), nullptr);
  EXPECT_EQ(platform::LastError(), 2U);
  std::uint32_t other = 1;
  std::thread([&other] { other = platform::LastError(); }).join();
  EXPECT_EQ(other, 0U);
}

// What a process has counted is lost when it aborts, unless it is written before.
void KeepCounts(int /*signal*/) {
  if (__llvm_profile_write_file != nullptr) {
    __llvm_profile_write_file();
  }
}

TEST(LinuxPlatformDeathTest, ABoundedCopyThatDoesNotFitEndsTheProcess) {
  char fits[4] = {};
  platform::BoundedCopy(fits, sizeof(fits), "abc");
  EXPECT_STREQ(fits, "abc");
  const auto copy = [&fits] {
    std::signal(SIGABRT, KeepCounts);
    platform::BoundedCopy(fits, sizeof(fits), "abcd");
  };
  EXPECT_EXIT(copy(), testing::KilledBySignal(SIGABRT), "");
  char serial[32] = {};
  EXPECT_EXIT(ZEMAPI_GetSerialNumber(nullptr, serial), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
