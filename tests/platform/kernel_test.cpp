// The calls of the kernel that the platform of Linux makes, on files that every machine has.
#include "platform/linux/kernel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <functional>
#include <string>

#include "tests/support/temporary_folder.h"

namespace {

// Answers an ioctl: an errno value, or 0 to carry it out.
std::function<int()> answerControl;

}  // namespace

// Of the C library's ioctl, so that a test sees it and may let it fail.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
extern "C" int __real_ioctl(int descriptor, unsigned long request, ...);
extern "C" int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  std::va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (const int error = answerControl ? answerControl() : 0; error != 0) {
    errno = error;
    return -1;
  }
  return __real_ioctl(descriptor, request, argument);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

namespace kernel = zem::platform::kernel;

bool IsBlocked(int signal) {
  sigset_t mask;
  EXPECT_EQ(pthread_sigmask(SIG_SETMASK, nullptr, &mask), 0);
  return sigismember(&mask, signal) == 1;
}

// A pipe with three bytes in it.
class KernelTest : public ::testing::Test {
 protected:
  KernelTest() {
    EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0);
    EXPECT_EQ(write(ends_[1], "abc", 3), 3);
  }
  ~KernelTest() override {
    answerControl = nullptr;
    close(ends_[0]);
    close(ends_[1]);
  }

  int pipe() const { return ends_[0]; }

 private:
  int ends_[2] = {-1, -1};
};

TEST_F(KernelTest, Folders) {
  EXPECT_STREQ(kernel::SysFolder(), "/sys");
  EXPECT_STREQ(kernel::DeviceFolder(), "/dev");
}

TEST_F(KernelTest, AFileIsOpenedForThisProgramOnly) {
  const zem::testing::TemporaryFolder folder;
  folder.Write("file", {1});
  const std::string path = (folder.path() / "file").string();
  const int descriptor = kernel::Open(path.c_str(), O_RDWR);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_ACCMODE, O_RDWR);
  kernel::Close(descriptor);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(kernel::Open((path + "/none").c_str(), O_RDWR), -ENOTDIR);
}

TEST_F(KernelTest, ARequestAndItsAnswer) {
  int waiting = 0;
  EXPECT_EQ(kernel::Control(pipe(), FIONREAD, &waiting), 0);
  EXPECT_EQ(waiting, 3);
  winsize size = {};
  EXPECT_EQ(kernel::Control(pipe(), TIOCGWINSZ, &size), -ENOTTY);
}

TEST_F(KernelTest, AnInterruptedRequestIsBegunAgain) {
  for (const bool held : {false, true}) {
    int asked = 0;
    answerControl = [&] { return ++asked < 3 ? EINTR : 0; };
    int waiting = 0;
    EXPECT_EQ(held ? kernel::ControlWithSignalsHeld(pipe(), FIONREAD, &waiting)
                   : kernel::Control(pipe(), FIONREAD, &waiting),
              0);
    EXPECT_EQ(waiting, 3);
    EXPECT_EQ(asked, 3);
  }
}

TEST_F(KernelTest, SignalsAreHeldForTheRequestOnly) {
  bool during = false;
  answerControl = [&] {
    during = IsBlocked(SIGINT) && IsBlocked(SIGALRM);
    return EIO;
  };
  EXPECT_EQ(kernel::ControlWithSignalsHeld(pipe(), FIONREAD, nullptr), -EIO);
  EXPECT_TRUE(during);
  EXPECT_FALSE(IsBlocked(SIGINT));
  EXPECT_EQ(kernel::Control(pipe(), FIONREAD, nullptr), -EIO);
  EXPECT_FALSE(during);
}

// A mask that the caller has set before is the one that it has afterwards.
TEST_F(KernelTest, TheCallersOwnMaskComesBack) {
  sigset_t own;
  sigset_t before;
  sigemptyset(&own);
  sigaddset(&own, SIGUSR2);
  ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &own, &before), 0);
  int waiting = 0;
  EXPECT_EQ(kernel::ControlWithSignalsHeld(pipe(), FIONREAD, &waiting), 0);
  EXPECT_TRUE(IsBlocked(SIGUSR2));
  EXPECT_FALSE(IsBlocked(SIGINT));
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
