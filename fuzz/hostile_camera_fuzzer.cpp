// A camera and volumes whose answers come from the fuzzer (bytes, results, counts, a sudden end),
// and whole operations of the library on them, with arguments from the fuzzer: no request outside
// the caller's memory, none beyond the operation's bound, and nothing is left when all is closed.
#include <sanitizer/asan_interface.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/scsi.h"
#include "platform/simulated/simulated_platform.h"
#include "romboot/rom_boot_config.h"
#include "simulator/device_list.h"
#include "tests/support/operations.h"
#include "tests/support/whole_camera.h"

namespace {

using zem::platform::simulated::OpenedVolume;
using zem::platform::simulated::TheSystem;
using zem::platform::simulated::VolumeAnswer;
using zem::platform::simulated::VolumeRequest;
using zem::testing::Call;
using zem::testing::Ground;
using zem::testing::Operation;
using zem::testing::StandardRequest;

constexpr auto kGone = static_cast<HRESULT>(0x8007048FU);

void Require(bool holds, const char* name, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "%s: %s\n", name, what);
    std::abort();
  }
}

// The fuzzer's bytes: answers are taken from the front, arguments from the back.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool empty() const { return rest_.empty(); }

  std::uint8_t Front() {
    if (rest_.empty()) {
      return 0;
    }
    const std::uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }

  std::uint8_t Back() {
    if (rest_.empty()) {
      return 0;
    }
    const std::uint8_t byte = rest_.back();
    rest_ = rest_.first(rest_.size() - 1);
    return byte;
  }

  // Fills the front of `bytes`, and says how much of it.
  std::size_t Take(std::span<std::uint8_t> bytes) {
    const std::size_t count = std::min(bytes.size(), rest_.size());
    std::copy_n(rest_.begin(), count, bytes.begin());
    rest_ = rest_.subspan(count);
    return count;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

class FuzzedChoices final : public zem::testing::Choices {
 public:
  explicit FuzzedChoices(Input& input) : input_(input) {}

  // The first byte: 0 for the usual number, then how many bytes it has.
  std::uint64_t Number(std::uint64_t usual, std::uint64_t most) override {
    const unsigned width = input_.Back() % 5;
    if (width == 0) {
      return std::min(usual, most);
    }
    std::uint64_t number = 0;
    for (unsigned index = 0; index < width; ++index) {
      number = number << 8 | input_.Back();
    }
    return most == ~std::uint64_t{} ? number : number % (most + 1);
  }

  bool LeftOut() override { return input_.Back() == 0xFF; }

  void Fill(std::span<std::uint8_t> bytes) override {
    const std::size_t count = std::min<std::size_t>(input_.Back() % 64, bytes.size());
    for (std::size_t index = 0; index < count; ++index) {
      bytes[index] = input_.Back();
    }
  }

 private:
  Input& input_;
};

// How the devices answer when the fuzzer's bytes have come to their end.
enum class After : std::uint8_t { kGone, kIdle, kBusy };

// How a request ends.
struct Answer {
  bool isDone = true;
  bool isWritten = true;  // the bytes, also of a request that fails
  HRESULT result = S_OK;
  std::uint32_t error = 0;
  std::uint32_t count = 0;  // as reported, when it is not the request's own
  bool hasCount = false;
};

// What all devices have in common.
class Answers {
 public:
  explicit Answers(Input& input) : input_(input) {}

  void Begin(After after, std::uint32_t milliseconds) {
    after_ = after;
    milliseconds_ = milliseconds;
  }

  // Until then the devices are healthy.
  bool isHostile = false;
  std::uint64_t requests = 0;

  Answer Next() {
    ++requests;
    Answer answer;
    if (!isHostile) {
      return answer;
    }
    TheSystem().clockMilliseconds += milliseconds_;
    if (input_.empty() && after_ == After::kGone) {
      isGone_ = true;
    }
    if (isGone_) {
      return {.isDone = false, .isWritten = false, .result = kGone, .error = 1167};
    }
    const std::uint8_t how = input_.Front();
    switch (how & 7) {
      case 3:
        return {.isDone = false, .isWritten = false, .result = E_FAIL, .error = 31};
      case 4:
        return {.isDone = false, .result = static_cast<HRESULT>(0x8007001FU), .error = 121};
      case 5:
        answer.result = static_cast<HRESULT>(input_.Front());
        break;
      case 6:
        isGone_ = true;
        return {.isDone = false, .isWritten = false, .result = kGone, .error = 1167};
      default:
        break;
    }
    if ((how & 8) != 0) {
      answer.hasCount = true;
      // Up to 1 MB: as much memory is taken for a chunk of data.
      for (unsigned index = 0; index < (how >> 6); ++index) {
        answer.count = (answer.count << 8 | input_.Front()) & 0xFFFFF;
      }
    }
    return answer;
  }

  // The bytes of an answer, over what a healthy device says.
  void Fill(std::span<std::uint8_t> bytes) {
    if (!isHostile) {
      return;
    }
    if (input_.empty()) {
      std::fill(bytes.begin(), bytes.end(), after_ == After::kBusy ? 0xFF : 0x00);
      return;
    }
    const std::size_t count = std::min<std::size_t>(input_.Front() % 64, bytes.size());
    input_.Take(bytes.first(count));
  }

 private:
  Input& input_;
  After after_ = After::kGone;
  std::uint32_t milliseconds_ = 0;
  bool isGone_ = false;
};

bool IsCallers(const void* data, std::size_t length) {
  return data == nullptr || __asan_region_is_poisoned(const_cast<void*>(data), length) == nullptr;
}

// A camera that is a microphone, too.
class HostileCamera final : public zem::testing::WholeCamera {
 public:
  HostileCamera(Answers& answers, Input& input) : answers_(answers), input_(input) {}

  void Begin(std::uint8_t shape) {
    nodeCount = shape & 7;
    unitNode_ = shape >> 3 & 7;
    oddTopology_ = shape >> 6;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (answers_.isHostile && oddTopology_ == 3 && input_.Front() >= 0xF0) {
      return input_.Front() % 2 != 0 ? E_FAIL : S_OK;
    }
    return WholeCamera::QueryInterface(iid, object);
  }

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    if (answers_.isHostile && oddTopology_ == 2 && input_.Front() >= 0xF0) {
      return E_FAIL;
    }
    return BareCamera::get_NumNodes(count);
  }

  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    ++nodesOpened;
    *object = nullptr;
    if (answers_.isHostile && oddTopology_ >= 2 && input_.Front() >= 0xF0) {
      return input_.Front() % 2 != 0 ? E_FAIL : S_OK;
    }
    return node > nodeCount ? E_FAIL : BareCamera::CreateNodeInstance(node, iid, object);
  }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    Require(IsCallers(data, length), "request", "memory that is not the caller's");
    if (request.Property.Id == 0) {
      return Information(request, data, length, bytesReturned);
    }
    const Answer answer = answers_.Next();
    const bool isGet = (request.Property.Flags & 1) != 0;
    if (isGet && answer.isWritten && data != nullptr) {
      answers_.Fill({static_cast<std::uint8_t*>(data), length});
    }
    *bytesReturned = answer.hasCount ? answer.count : answer.isDone ? length : 0;
    return answer.result;
  }

  HRESULT Standard(const StandardRequest& request) override {
    const Answer answer = answers_.Next();
    for (LONG* const place : request.places) {
      if (answer.isWritten && place != nullptr) {
        answers_.Fill({reinterpret_cast<std::uint8_t*>(place), sizeof(*place)});
      }
    }
    return answer.result;
  }

  std::uint64_t nodesOpened = 0;

 private:
  HRESULT Information(const KSP_NODE& request, void* data, ULONG length, ULONG* bytesReturned) {
    *bytesReturned = sizeof(GUID) + 8;
    if (answers_.isHostile && oddTopology_ == 1) {
      *bytesReturned = input_.Front() * 3U;
    }
    if (data != nullptr && length >= sizeof(GUID) && request.NodeId == unitNode_) {
      std::memcpy(data, &request.Property.Set, sizeof(GUID));
    }
    return S_OK;
  }

  Answers& answers_;
  Input& input_;
  DWORD unitNode_ = 0;
  unsigned oddTopology_ = 0;
};

// What stands behind a drive letter: a boot loader, or the storage of an updater.
struct HostileVolume {
  Answers& answers;
  bool isUpdater;

  std::optional<std::uint32_t> operator()(const VolumeRequest& request) const {
    constexpr std::size_t kData = 92;
    auto* const block = static_cast<std::uint8_t*>(request.block);
    const Answer answer = answers.Next();
    if (request.code == IOCTL_SCSI_PASS_THROUGH) {
      Require(request.outputLength >= kData && IsCallers(block, request.outputLength), "volume",
              "a reply outside of its block");
      if (answer.isWritten) {
        const std::span<std::uint8_t> reply(block + kData, request.outputLength - kData);
        constexpr std::size_t kCdb = 36;
        Say(reply, block[kCdb] == 0x12, block[kCdb + 3] == 0x01);
        answers.Fill(reply);
      }
    } else {
      SCSI_PASS_THROUGH_DIRECT header;
      std::memcpy(&header, block, sizeof(header));
      Require(IsCallers(header.DataBuffer, header.DataTransferLength), "volume",
              "data that is not the caller's");
    }
    return answer.isDone ? std::nullopt : std::optional(answer.error);
  }

 private:
  void Say(std::span<std::uint8_t> reply, bool isInquiry, bool isIdentify) const {
    if (isInquiry && reply.size() > 3) {
      reply[3] = 1;
    } else if (isIdentify && reply.size() >= 12) {
      if (isUpdater) {
        std::memcpy(&reply[9], "ZEM", 3);
      } else {
        reply[0] = 0xAA;
        reply[1] = 0x55;
      }
    }
  }
};

constexpr const wchar_t* kDisplayName =
    L"@device:pnp:\\\\?\\usb#vid_5a45&pid_8c00&mi_00#1#{65e8773d}\\global";
constexpr const wchar_t* kDevicePath = L"\\\\?\\usb#vid_5a45&pid_8c00";
constexpr const wchar_t* kMicrophone = L"@device:cm:microphone";

// A refused or odd call of the system's list of devices, now and then.
class HostileGate final : public zem::simulator::CallGate {
 public:
  HostileGate(Answers& answers, Input& input) : answers_(answers), input_(input) {}
  HRESULT Enter(const char* /*call*/) override {
    return answers_.isHostile && isOdd && input_.Front() >= 0xF0 ? E_FAIL : S_OK;
  }
  bool isOdd = false;

 private:
  Answers& answers_;
  Input& input_;
};

// The number that the next file to be opened gets.
int NextFile() {
  const int file = dup(STDERR_FILENO);
  close(file);
  return file;
}

class World {
 public:
  World(const std::uint8_t* data, std::size_t size)
      : input_(data, size), answers_(input_), camera_(answers_, input_), gate_(answers_, input_) {
    zem::platform::simulated::Reset();
    zem::sendAddressDivider = 0;
    auto& system = TheSystem();
    system.recordDebuggerLines = false;
    // The log of the encoding unit has a place on the disk.
    system.refuseFile = [](const std::wstring& path) {
      return path.find(L"ZemWrenCmdLog") != std::wstring::npos;
    };
    const std::uint8_t how = input_.Front();
    answers_.Begin(static_cast<After>(how % 3), how % 3 == 2 ? 500 : 1);
    gate_.isOdd = (how & 0x80) != 0;
    camera_.Begin(input_.Front());
    input_.Take(numbers_);
    for (unsigned index = 0; index < (how >> 4 & 3U); ++index) {
      devices_.push_back(Listed(kDisplayName, zem::CLSID_VideoInputDeviceCategory));
    }
    devices_.push_back(Listed(kDisplayName, zem::CLSID_VideoInputDeviceCategory));
    devices_.push_back(Listed(kMicrophone, zem::CLSID_AudioInputDeviceCategory));
    system.createDeviceEnumerator = [this](ICreateDevEnum** enumerator) {
      *enumerator = zem::simulator::MakeDeviceEnumerator(devices_, &gate_);
      return S_OK;
    };
    system.volumes[L"\\\\.\\F:"] = HostileVolume{answers_, false};
    if ((how & 0x40) != 0) {
      system.volumes[L"\\\\.\\G:"] = HostileVolume{answers_, true};
    }
    stage_.filter = &camera_;
    stage_.displayName = kDisplayName;
    stage_.devicePath = kDevicePath;
    stage_.microphoneName = kMicrophone;
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  void Run() {
    const auto operations = zem::testing::Operations();
    // Some in turn, on the same handle and session; a number behind the last one is none.
    for (const std::uint8_t number : numbers_) {
      if (number < operations.size()) {
        Run(operations[number]);
      }
    }
    Close();
    Require(camera_.references == 1 + static_cast<int>(skipped_), last_, "references are left");
    Require(zem::simulator::liveComObjects == 0, last_, "objects are left");
    Require(TheSystem().invalidVolumeCalls == 0, last_, "a volume used that is not open");
    zem::platform::simulated::Reset();
  }

 private:
  zem::simulator::ListedDevice Listed(const wchar_t* name, const GUID& category) {
    return {.displayName = name,
            .devicePath = kDevicePath,
            .category = category,
            .bind = [this]() -> IBaseFilter* {
              camera_.AddRef();
              return &camera_;
            }};
  }

  // Opens what the operation needs, on devices that are healthy as yet.
  void Prepare(Ground ground) {
    answers_.isHostile = false;
    if (ground == Ground::kDevice && stage_.device == nullptr) {
      ZEMAPI_OpenDeviceBySourceFilter(&camera_, &stage_.device);
    }
    if (ground == Ground::kSession && stage_.session == nullptr) {
      stage_.session = ZEMROMAPI_OpenDevice(1);
      Require(stage_.session != nullptr, "session", "a healthy boot loader is not found");
    }
    answers_.isHostile = true;
  }

  void Run(const Operation& operation) {
    last_ = operation.name;
    Prepare(operation.ground);
    answers_.requests = 0;
    camera_.nodesOpened = 0;
    const int file = NextFile();
    {
      FuzzedChoices choices(input_);
      Call call(stage_, choices);
      const int before = camera_.references;
      operation.run(call);
      const std::uint64_t bound = operation.bound.Of(call.length());
      Require(answers_.requests <= bound, last_, "more requests than its bound");
      // A search opens each node of each listed camera once, and a request the one found.
      Require(camera_.nodesOpened <= (bound + 1) * (8 * devices_.size() + 1), last_,
              "more nodes opened than its bound");
      const int left = camera_.references - before;
      Require(left <= static_cast<int>(call.skipped()), last_, "more references than skipped");
      skipped_ += static_cast<unsigned>(std::max(left, 0));
      if (left < 0) {
        Require(stage_.device == nullptr && left == -1, last_, "a reference too few");
      }
    }
    Require(NextFile() == file, last_, "a file is left open");
    // Commands without a volume go nowhere.
    if (stage_.session != nullptr && Volume() == nullptr) {
      ZEMROMAPI_CloseDevice(&stage_.session);
      stage_.session = nullptr;
    }
  }

  void* Volume() const { return static_cast<zem::ZemRomBootConfig*>(stage_.session)->scsi.volume; }

  void Close() {
    ZEMAPI_CloseDevice(&stage_.device);
    if (stage_.session != nullptr) {
      const auto* const volume = static_cast<const OpenedVolume*>(Volume());
      ZEMROMAPI_CloseDevice(&stage_.session);
      Require(!volume->open, last_, "a volume is left open");
    }
  }

  Input input_;
  std::array<std::uint8_t, 4> numbers_ = {0xFF, 0xFF, 0xFF, 0xFF};
  Answers answers_;
  HostileCamera camera_;
  HostileGate gate_;
  std::vector<zem::simulator::ListedDevice> devices_;
  zem::testing::Stage stage_;
  unsigned skipped_ = 0;
  const char* last_ = "nothing";
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  World(data, size).Run();
  return 0;
}
