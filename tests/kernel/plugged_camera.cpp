#include "tests/kernel/plugged_camera.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace zem::testing {
namespace {

constexpr const char* kLog = "/tmp/wire.log";
constexpr const char* kOptions = "/tmp/options.json";

// Whether the kernel has let go of every device that was plugged in: it does not take the next one
// at a port before.
bool PortsAreFree() {
  std::istringstream status(ReadText("/sys/devices/platform/vhci_hcd.0/status"));
  std::string line;
  std::getline(status, line);
  while (std::getline(status, line)) {
    std::istringstream fields(line);
    std::string hub;
    std::string port;
    std::string state;
    fields >> hub >> port >> state;
    if (state != "004") {
      return false;
    }
  }
  return true;
}

// Starts a program; the child's end of `prepare` never returns.
pid_t Start(const std::function<void()>& prepare) {
  const pid_t child = fork();
  if (child == 0) {
    prepare();
    _exit(127);
  }
  return child;
}

// "0a 00" of "0a00".
std::string SpacedBytes(const std::string& digits) {
  std::string text;
  for (std::size_t index = 0; index + 1 < digits.size(); index += 2) {
    text += " " + digits.substr(index, 2);
  }
  return text;
}

// What TakeTransfers tells of a line of zem-usb-camera's log; empty for another request.
std::string TransferOf(const std::string& line) {
  std::istringstream words(line);
  std::string camera;
  std::string kind;
  words >> camera >> kind;
  if (kind == "scsi") {
    std::string cdb;
    std::string direction;
    std::string result;
    std::string data;
    words >> cdb >> direction >> result >> data;
    return "scsi" + SpacedBytes(cdb) + " " + direction + SpacedBytes(data);
  }
  std::string setup;
  std::string direction;
  std::string unit;
  std::string selector;
  std::string sent;
  std::string result;
  std::string answer;
  words >> setup >> direction >> unit >> selector >> sent >> result >> answer;
  const bool isSet = setup.starts_with("2101");
  if ((!isSet && !setup.starts_with("a181")) || setup.substr(8, 2) != "00" || unit == "0") {
    return {};
  }
  return (isSet ? "set " : "get ") + unit + "." + selector + SpacedBytes(isSet ? sent : answer);
}

// udev's notes about device files, named by their type and number, and what is there while it has
// anything to do.
constexpr const char* kNotes = "/run/udev/data";
constexpr const char* kWork = "/run/udev/queue";

bool IsUdevIdle() { return !std::filesystem::exists(kWork); }

// Whether a class has devices, and udev has made their files what they will be: the kernel has made
// them a moment before. The note comes before the last of the rules has run, and only then is udev
// idle.
bool HasReadyFiles(const std::string& devices) {
  const Lines names = EntriesOf(devices);
  return !names.empty() && std::all_of(names.begin(), names.end(), [&](const std::string& name) {
    std::istringstream text(ReadText(devices + "/" + name + "/dev"));
    std::string number;
    text >> number;
    return std::filesystem::exists(std::string(kNotes) + "/c" + number);
  }) && IsUdevIdle();
}

// Whether nothing is plugged in, for the kernel and for udev: a note that stays would be taken for
// that of the next device. 81 and 21 are the types of the files of the two classes.
bool IsNothingThere() {
  return EntriesOf(kCameras).empty() && EntriesOf(kStorages).empty() &&
         EntriesOf(kNotes, "c81:").empty() && EntriesOf(kNotes, "c21:").empty() && IsUdevIdle();
}

}  // namespace

bool WaitUntil(const std::function<bool()>& condition) {
  constexpr auto kLimit = std::chrono::seconds(20);
  constexpr auto kPause = std::chrono::milliseconds(5);
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

Lines EntriesOf(const std::string& folder, const std::string& prefix) {
  Lines names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(prefix)) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  EXPECT_TRUE(file.good()) << path;
}

void BecomeUser(uid_t user) {
  const passwd* const entry = getpwuid(user);
  if (entry == nullptr || initgroups(entry->pw_name, entry->pw_gid) != 0 ||
      setgid(entry->pw_gid) != 0 || setuid(user) != 0) {
    _exit(126);
  }
}

ProgramResult RunProgram(const std::string& command, uid_t user) {
  const pid_t child = Start([&] {
    const int output = open("/tmp/program.out", O_CREAT | O_TRUNC | O_WRONLY, 0644);
    const int errors = open("/tmp/program.err", O_CREAT | O_TRUNC | O_WRONLY, 0644);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    BecomeUser(user);
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
  });
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), ReadText("/tmp/program.out"),
          ReadText("/tmp/program.err")};
}

Lines HeadsOf(Lines transfers) {
  constexpr std::size_t kShown = 55;
  for (std::string& transfer : transfers) {
    if (transfer.size() > kShown + 30) {
      transfer = transfer.substr(0, kShown) + " ... " + std::to_string(transfer.size());
    }
  }
  return transfers;
}

bool IsCameraThere() { return HasReadyFiles(kCameras) && !EntriesOf("/dev/v4l/by-path").empty(); }

bool IsCameraGone() { return EntriesOf("/sys/bus/media/devices").empty(); }

bool IsStorageThere() { return HasReadyFiles(kStorages) && !EntriesOf("/dev", "sg").empty(); }

PluggedCamera::PluggedCamera(const std::string& options) {
  EXPECT_TRUE(WaitUntil(PortsAreFree));
  WriteText(kOptions, options);
  WriteText(kLog, "");
  program_ = Start([] {
    dup2(open("/tmp/camera.out", O_CREAT | O_TRUNC | O_WRONLY, 0644), STDOUT_FILENO);
    execl("/zem/zem-usb-camera", "zem-usb-camera", "--attach", "--simulator-options", kOptions,
          "--log", kLog, nullptr);
  });
  EXPECT_TRUE(WaitUntil([] { return IsCameraThere() || IsStorageThere(); }));
}

PluggedCamera::~PluggedCamera() { Unplug(); }

void PluggedCamera::Unplug() {
  if (program_ < 0) {
    return;
  }
  kill(program_, SIGTERM);
  waitpid(program_, nullptr, 0);
  program_ = -1;
  EXPECT_TRUE(WaitUntil(IsNothingThere));
}

Lines PluggedCamera::TakeTransfers() {
  std::istringstream log(ReadText(kLog));
  Lines transfers;
  std::string line;
  std::size_t number = 0;
  while (std::getline(log, line)) {
    if (number++ >= taken_) {
      if (const std::string transfer = TransferOf(line); !transfer.empty()) {
        transfers.push_back(transfer);
      }
    }
  }
  taken_ = number;
  return transfers;
}

}  // namespace zem::testing
