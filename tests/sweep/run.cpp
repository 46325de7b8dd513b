#include "tests/sweep/run.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

#include "romboot/rom_boot_config.h"
#include "simulator/boot_loader.h"
#include "simulator/device_list.h"
#include "tests/support/allocation_count.h"
#include "tests/support/device_test.h"
#include "tests/sweep/devices.h"

namespace zem::testing::sweep {
namespace {

using platform::simulated::System;
using platform::simulated::TheSystem;

constexpr const wchar_t* kDevicePath = L"path";
constexpr const wchar_t* kMicrophone = L"microphone";
constexpr const wchar_t* kVolumePath = L"\\\\.\\F:";

// The number that the next file to be opened gets.
int NextFile() {
  const int file = dup(STDERR_FILENO);
  close(file);
  return file;
}

// Whether more files are open than when `next` was the next one's number. A sanitizer that limits
// the memory opens one for a moment now and then, on a thread of its own.
bool IsFileLeft(int next) {
  constexpr int kLooks = 100;
  for (int look = 0; look < kLooks; ++look) {
    if (NextFile() <= next) {
      return false;
    }
    sched_yield();
  }
  return true;
}

// The usual arguments, but for data that is like no answer; keeps an eye on the memory that the
// library gets.
class WatchedChoices final : public UsualChoices {
 public:
  struct Memory {
    std::span<std::uint8_t> bytes;
    Use use;
    Bytes before;
  };

  void Fill(std::span<std::uint8_t> bytes) override {
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0x91});
  }

  void Give(std::span<std::uint8_t> bytes, Use use) override {
    memory.push_back({bytes, use, {bytes.begin(), bytes.end()}});
  }

  std::vector<Memory> memory;
};

simulator::BootLoaderOptions HealthyBootLoader() {
  using simulator::StorageType;
  simulator::BootLoaderOptions options;
  options.storages = {{}};
  for (const StorageType type : {StorageType::kEmmc, StorageType::kSpiNand,
                                 StorageType::kParallelNand, StorageType::kDram}) {
    options.storages.push_back({type, 0x10000, ""});
  }
  return options;
}

class World final : public Wire {
 public:
  World(const Operation& operation, const Plan& plan, const Recording* played, Recording* made,
        const Schedule& schedule)
      : operation_(operation), plan_(plan), made_(made), follower_(plan, played, schedule) {
    System& system = TheSystem();
    sendAddressDivider = 0;
    stage_.displayName = DisplayName(0x5A45, 0x8C00);
    stage_.devicePath = kDevicePath;
    stage_.microphoneName = kMicrophone;
    stage_.filter = &camera_;
    system.createDeviceEnumerator = [this](ICreateDevEnum** enumerator) {
      *enumerator = simulator::MakeDeviceEnumerator(
          {Listed(stage_.displayName, CLSID_VideoInputDeviceCategory),
           Listed(stage_.microphoneName, CLSID_AudioInputDeviceCategory)},
          nullptr);
      return S_OK;
    };
    system.openVolume = [this](const std::wstring& path) -> platform::simulated::VolumeAnswer {
      return path == kVolumePath && !follower_.isGone() ? SweptVolume(*this) : nullptr;
    };
    if (made_ != nullptr) {
      healthyCamera_ = MakeHealthyCamera(plan.isProtected);
      if (!plan.before.empty()) {
        AskCamera(*healthyCamera_, {Request::Way::kSet, Request::Target::kVendor, 4, 8},
                  plan.before);
      }
      bootLoader_ = std::make_unique<simulator::BootLoader>(HealthyBootLoader());
      bootLoader_->selected = simulator::StorageType::kSerialFlash;
      bootLoader_->loadBuffer.resize(kSectorSize);
    }
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  RunOutcome Run() {
    Prepare();
    const System& system = TheSystem();
    start_ = system.clockMilliseconds;
    const int com = system.ComBalance();
    const int references = camera_.references;
    const auto volumes = static_cast<int>(system.OpenVolumePaths().size());
    const int file = NextFile();
    RunOperation();
    isRunning_ = false;
    Require(!IsFileLeft(file), "a file is left open");
    Require(system.ComBalance() - com == follower_.reads() + binds_ + plan_.com,
            "COM is initialised " + std::to_string(system.ComBalance() - com) + " times, not " +
                std::to_string(follower_.reads() + binds_ + plan_.com));
    const bool isClosed = operation_.ground == Ground::kDevice && stage_.device == nullptr;
    Require(camera_.references - references == (isClosed ? -1 : 0),
            std::to_string(camera_.references - references) + " references are left");
    Require(static_cast<int>(system.OpenVolumePaths().size()) - volumes == follower_.volumes(),
            "volumes that are open: " + std::to_string(system.OpenVolumePaths().size()));
    Close();
    complaints_.insert(complaints_.end(), follower_.complaints().begin(),
                       follower_.complaints().end());
    return {std::move(complaints_), follower_.requests()};
  }

  Answer Ask(const Request& request, std::span<const std::uint8_t> sent) override {
    if (!isRunning_) {
      return {Fault::kNone, AnswerToSearch(request)};
    }
    Answer answer = follower_.Next(request, sent, TheSystem().clockMilliseconds - start_,
                                   TheSystem().debuggerLines.size());
    if (answer.fault == Fault::kGone) {
      TheSystem().clockMilliseconds += kGoneMilliseconds;
    }
    if (made_ != nullptr) {
      answer.bytes = AskHealthy(request, sent);
      made_->transfers.push_back({{sent.begin(), sent.end()}, answer.bytes});
    }
    return answer;
  }

  bool isGone() const override { return follower_.isGone(); }

 private:
  void Require(bool holds, std::string what) {
    if (!holds) {
      complaints_.push_back(std::move(what));
    }
  }

  simulator::ListedDevice Listed(const std::wstring& name, const GUID& category) {
    simulator::ListedDevice device;
    device.displayName = name;
    device.devicePath = kDevicePath;
    device.category = category;
    device.bind = [this]() -> IBaseFilter* {
      ++binds_;
      camera_.AddRef();
      return &camera_;
    };
    return device;
  }

  void Prepare() {
    if (operation_.ground == Ground::kDevice) {
      Require(ZEMAPI_OpenDeviceBySourceFilter(&camera_, &stage_.device) == 0, "no handle");
    }
    if (operation_.ground == Ground::kSession) {
      stage_.session = ZEMROMAPI_OpenDevice(1);
      Require(stage_.session != nullptr, "no session");
    }
    binds_ = 0;
    TheSystem().debuggerLines.clear();
    isRunning_ = true;
  }

  void RunOperation() {
    WatchedChoices choices;
    Call call(stage_, choices);
    const ZemResult result = operation_.run(call);
    follower_.Finish(result, TheSystem().clockMilliseconds - start_, TheSystem().debuggerLines);
    Require(follower_.requests() <= operation_.bound.Of(call.length()),
            "more requests than its bound");
    std::size_t output = 0;
    for (const WatchedChoices::Memory& memory : choices.memory) {
      const Bytes after(memory.bytes.begin(), memory.bytes.end());
      if (memory.use == Choices::Use::kRead) {
        Require(after == memory.before, "what the library only reads is changed");
        continue;
      }
      if (made_ != nullptr) {
        made_->outputs.push_back(after);
        made_->changed.push_back(after != memory.before);
      }
      follower_.CheckOutput(output++, memory.before, after);
    }
  }

  void Close() {
    ZEMAPI_CloseDevice(&stage_.device);
    Require(camera_.references == 1, "references are left behind the closing");
    if (stage_.session != nullptr) {
      const bool isOpen = static_cast<ZemRomBootConfig*>(stage_.session)->scsi.volume != nullptr;
      const std::size_t open = TheSystem().OpenVolumePaths().size();
      ZEMROMAPI_CloseDevice(&stage_.session);
      Require(TheSystem().OpenVolumePaths().size() + (isOpen ? 1 : 0) == open,
              "the session's volume is left open");
    }
    Require(simulator::liveComObjects == 0, "objects are left");
    Require(TheSystem().invalidVolumeCalls == 0, "a volume is used that is not open");
  }

  // Of a boot loader, to the inquiry and to identify.
  static Bytes AnswerToSearch(const Request& request) {
    Bytes answer(request.length);
    if (request.number == 0x12) {
      answer.at(3) = 1;
    } else {
      answer.at(0) = 0xAA;
      answer.at(1) = 0x55;
    }
    return answer;
  }

  Bytes AskHealthy(const Request& request, std::span<const std::uint8_t> sent) {
    constexpr std::size_t kCdb = 16;
    if (request.target != Request::Target::kVolume) {
      const std::optional<Bytes> answer = AskCamera(*healthyCamera_, request, sent);
      Require(answer.has_value(), "the simulated camera refuses " + TextOf(request));
      return answer.value_or(Bytes());
    }
    Bytes data = request.IsRead() ? Bytes(request.length) : Bytes(sent.begin() + kCdb, sent.end());
    const simulator::ScsiResult result =
        bootLoader_->Execute(sent.first(kCdb), request.IsRead(), data);
    Require(result.outcome == simulator::ScsiOutcome::kDone,
            "the simulated boot loader refuses " + TextOf(request));
    return request.IsRead() ? data : Bytes();
  }

  const Operation& operation_;
  const Plan& plan_;
  Recording* const made_;
  Follower follower_;
  std::shared_ptr<simulator::Camera> healthyCamera_;
  std::unique_ptr<simulator::BootLoader> bootLoader_;
  SweptCamera camera_{*this};
  Stage stage_;
  std::uint32_t start_ = 0;
  int binds_ = 0;
  bool isRunning_ = false;
  std::vector<std::string> complaints_;
};

}  // namespace

RunOutcome Record(const Operation& operation, const Plan& plan, Recording& recording) {
  platform::simulated::Reset();
  RunOutcome outcome = World(operation, plan, nullptr, &recording, {}).Run();
  platform::simulated::Reset();
  return outcome;
}

RunOutcome Play(const Operation& operation, const Plan& plan, const Recording& recording,
                const Schedule& schedule) {
  platform::simulated::Reset();
  const std::uint64_t before = LiveBytes();
  RunOutcome outcome = World(operation, plan, &recording, nullptr, schedule).Run();
  platform::simulated::Reset();
  if (outcome.complaints.empty() && LiveBytes() != before) {
    outcome.complaints.push_back(std::to_string(LiveBytes() - before) + " bytes are left");
  }
  return outcome;
}

}  // namespace zem::testing::sweep
