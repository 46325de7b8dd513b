// Users other than root, without and with the project's rules for udev.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/linux/platform_results.h"

namespace {

using zem::testing::BecomeUser;
using zem::testing::kAccessDeniedResult;
using zem::testing::kInRomBoot;
using zem::testing::PluggedCamera;
using zem::testing::RunProgram;
using zem::testing::WriteText;

// Members of the group "video", and of no group.
constexpr uid_t kOperator = 1000;
constexpr uid_t kGuest = 1001;

// Calls a function as a user; what it returns.
ZemResult AsUser(uid_t user, const std::function<ZemResult()>& call) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    BecomeUser(user);
    const ZemResult result = call();
    _exit(write(ends[1], &result, sizeof(result)) == sizeof(result) ? 0 : 1);
  }
  ZemResult result = 0;
  close(ends[1]);
  EXPECT_EQ(read(ends[0], &result, sizeof(result)), static_cast<ssize_t>(sizeof(result)));
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return result;
}

ZemResult UseCamera() {
  void* camera = nullptr;
  const ZemResult opened = ZEMAPI_OpenDevice(0, &camera);
  unsigned short value = 0;
  return opened != 0 ? opened : ZEMAPI_GetRegister(camera, 0, &value);
}

ZemResult UseBootLoader() {
  void* device = ZEMROMAPI_OpenDevice(1);
  unsigned char value = 0;
  return device == nullptr ? -1 : ZEMROMAPI_ReadRegister(device, 0, &value);
}

class Users : public ::testing::Test {
 protected:
  ~Users() override {
    std::filesystem::remove_all("/run/udev/rules.d");
    std::filesystem::remove_all("/run/systemd/seats");
    Reload();
  }

  static void InstallRules() {
    EXPECT_EQ(RunProgram("mkdir -p /run/udev/rules.d && "
                         "cp /zem/60-zem-cameras.rules /run/udev/rules.d")
                  .status,
              0);
    Reload();
  }

  // As the login manager says that a user is at the machine.
  static void SeatUser(uid_t user) {
    std::filesystem::create_directories("/run/systemd/seats");
    WriteText("/run/systemd/seats/seat0",
              "IS_SEAT0=1\nACTIVE=1\nACTIVE_UID=" + std::to_string(user) + "\n");
  }

 private:
  static void Reload() { EXPECT_EQ(RunProgram("udevadm control --reload").status, 0); }
};

TEST_F(Users, WithoutRulesTheBootLoaderIsRootsAlone) {
  {
    const PluggedCamera plugged;
    EXPECT_EQ(AsUser(kOperator, UseCamera), 0) << "the system's own rule for the group";
    EXPECT_EQ(AsUser(kGuest, UseCamera), kAccessDeniedResult);
  }
  const PluggedCamera plugged(kInRomBoot);
  EXPECT_EQ(AsUser(0, UseBootLoader), 0);
  EXPECT_EQ(AsUser(kOperator, UseBootLoader), -1);
  EXPECT_EQ(AsUser(kGuest, UseBootLoader), -1);
}

TEST_F(Users, WithRulesTheGroupHasBoth) {
  InstallRules();
  {
    const PluggedCamera plugged;
    EXPECT_EQ(AsUser(kOperator, UseCamera), 0);
    EXPECT_EQ(AsUser(kGuest, UseCamera), kAccessDeniedResult);
  }
  const PluggedCamera plugged(kInRomBoot);
  EXPECT_EQ(AsUser(kOperator, UseBootLoader), 0);
  EXPECT_EQ(AsUser(kGuest, UseBootLoader), -1);
}

TEST_F(Users, WithRulesWhoeverIsAtTheMachineHasBoth) {
  InstallRules();
  SeatUser(kGuest);
  {
    const PluggedCamera plugged;
    EXPECT_EQ(AsUser(kGuest, UseCamera), 0);
  }
  const PluggedCamera plugged(kInRomBoot);
  EXPECT_EQ(AsUser(kGuest, UseBootLoader), 0);
}

TEST_F(Users, RulesLeaveOtherCamerasAlone) {
  InstallRules();
  const PluggedCamera plugged(R"({"cameras": [{"vendorId": 4660}], "bootLoader": {}})");
  EXPECT_EQ(AsUser(kOperator, UseBootLoader), -1);
}

}  // namespace
