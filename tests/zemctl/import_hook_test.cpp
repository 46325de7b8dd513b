// Calls of one library led elsewhere, and nobody else's.
#include "simulator/linux/import_hook.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/zemctl/hooked_library.h"

namespace {

using zem::simulator::HeldLibrary;
using zem::simulator::HoldLibrary;
using zem::simulator::ImportHook;

int closed = 0;

int CountClose(int descriptor) {
  closed += descriptor;
  return 0;
}

int CountTwice(int descriptor) {
  closed += 2 * descriptor;
  return 0;
}

TEST(ImportHookTest, LeadsTheCallsOfOneLibrary) {
  const HeldLibrary library = HoldLibrary();
  const int mine = ::dup(0);
  const int its = ::dup(0);
  closed = 0;
  {
    const ImportHook hook(library, "close", CountClose);
    HookedClose(its);
    EXPECT_EQ(closed, its);
    EXPECT_EQ(::close(mine), 0);
    EXPECT_EQ(closed, its);
    {
      const ImportHook above(library, "close", CountTwice);
      EXPECT_EQ(above.Before<int(int)>(), &CountClose);
      HookedClose(its);
      EXPECT_EQ(closed, 3 * its);
    }
    HookedClose(its);
    EXPECT_EQ(closed, 4 * its);
    EXPECT_EQ(hook.Before<int(int)>()(its), 0);
  }
  // It is closed already, by the system itself.
  const int again = ::dup(0);
  EXPECT_EQ(again, its < mine ? its : mine);
  HookedClose(again);
  EXPECT_EQ(closed, 4 * its);
  EXPECT_EQ(::close(again), -1);
}

int AnyProcess() { return 77; }

TEST(ImportHookTest, LeadsFunctionsWhoseAddressIsTaken) {
  const HeldLibrary library = HoldLibrary();
  {
    const ImportHook hook(library, "getpid", AnyProcess);
    EXPECT_EQ(HookedProcess(), 77);
    EXPECT_EQ(hook.Before<int()>()(), ::getpid());
  }
  EXPECT_EQ(HookedProcess(), ::getpid());
}

TEST(ImportHookTest, RefusesWhatIsNotThere) {
  const HeldLibrary library = HoldLibrary();
  EXPECT_THROW(ImportHook(library, "no_such_function", AnyProcess), std::runtime_error);
  EXPECT_THROW(HoldLibrary("libnothing.so.7"), std::runtime_error);
}

// From here on, the system refuses this thread to make memory writable.
bool RefuseProtection() {
  sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_mprotect, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EACCES),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {static_cast<unsigned short>(std::size(filter)), filter};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST(ImportHookTest, TellsThatTheSlotsCannotBeWritten) {
  const HeldLibrary library = HoldLibrary();
  std::string told;
  std::thread([&] {
    if (!RefuseProtection()) {
      told = "no filter";
      return;
    }
    try {
      const ImportHook hook(library, "getpid", AnyProcess);
    } catch (const std::runtime_error& error) {
      told = error.what();
    }
  }).join();
  EXPECT_EQ(told, "the library's import getpid cannot be written: Permission denied");
  EXPECT_EQ(HookedProcess(), ::getpid());
}

}  // namespace
