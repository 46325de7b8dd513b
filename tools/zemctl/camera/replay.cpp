#include "tools/zemctl/camera/replay.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "device/extension_units.h"
#include "device/property_request.h"
#include "simulator/com_filter.h"
#include "simulator/com_microphone.h"
#include "simulator/system_results.h"
#include "tools/zemctl/camera/trace_words.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

constexpr HRESULT kGoneResult = zem::simulator::kNotConnectedResult;

bool IsInOrder(const TraceEvent& event) {
  return std::holds_alternative<TracedOpening>(event) ||
         std::holds_alternative<TracedTransfer>(event) ||
         std::holds_alternative<TracedCommand>(event);
}

std::string QuestionOf(const TracedVolume& volume) { return "volume " + volume.drive; }

std::string QuestionOf(const TracedDevices& list) { return list.isAudio ? "audio" : "video"; }

std::string QuestionOf(std::uint32_t camera, const Lookup& lookup) {
  // The type of a node is an answer, the other ids belong to the question.
  const bool isAnswer = lookup.what == Lookup::What::kNodeType;
  return std::to_string(camera) + " " + std::to_string(static_cast<int>(lookup.what)) + " " +
         std::to_string(lookup.node) + " " + (isAnswer ? "" : GuidText(lookup.id)) + " " +
         std::to_string(lookup.length);
}

bool IsSame(const ScsiCommand& expected, const ScsiCommand& came) {
  return expected.drive == came.drive && expected.cdb == came.cdb && expected.isIn == came.isIn &&
         expected.length == came.length && (came.isIn || expected.data == came.data);
}

bool IsSame(const TracedTransfer& expected, std::uint32_t camera, const Transfer& came) {
  const Transfer& transfer = expected.transfer;
  if (expected.camera != camera || transfer.isAddressed != came.isAddressed) {
    return false;
  }
  if (!came.isAddressed) {
    return true;
  }
  return transfer.unit == came.unit && transfer.node == came.node &&
         transfer.selector == came.selector && transfer.isSet == came.isSet &&
         transfer.isRange == came.isRange && transfer.length == came.length &&
         (!came.isSet || (transfer.values == came.values && transfer.bytes == came.bytes));
}

}  // namespace

Replay::Replay(std::vector<TraceLine> lines) : lines_(std::move(lines)) {
  for (std::size_t index = 0; index < lines_.size(); ++index) {
    const TraceEvent& event = lines_[index].event;
    if (IsInOrder(event)) {
      inOrder_.push_back(index);
    } else if (const auto* const list = std::get_if<TracedDevices>(&event)) {
      questions_[QuestionOf(*list)].lines.push_back(index);
    } else if (const auto* const volume = std::get_if<TracedVolume>(&event)) {
      questions_[QuestionOf(*volume)].lines.push_back(index);
    } else if (const auto* const traced = std::get_if<TracedLookup>(&event)) {
      questions_[QuestionOf(traced->camera, traced->lookup)].lines.push_back(index);
    }
  }
}

void Replay::Differ(std::size_t line, const std::string& came) {
  if (difference_) {
    return;
  }
  difference_ = line < lines_.size()
                    ? "line " + std::to_string(line + 1) + ": expected " + Words(lines_[line].event)
                    : "the trace ends with line " + std::to_string(lines_.size());
  *difference_ += ", came " + came;
}

void Replay::LackAnswer(const std::string& came) {
  if (!difference_) {
    difference_ = "the trace has no answer to " + came;
  }
}

void Replay::ExpectEnd() {
  if (next_ < inOrder_.size()) {
    Differ(inOrder_[next_], "the end of the run");
  }
}

template <class Event>
const Event* Replay::Answer(Answers& answers) {
  ++answers.asked;
  const auto numberOf = [&](std::size_t at) {
    return std::get<Event>(lines_[answers.lines[at]].event).number;
  };
  while (answers.next + 1 < answers.lines.size() && numberOf(answers.next + 1) <= answers.asked) {
    ++answers.next;
  }
  if (difference_ || answers.lines.empty()) {
    return nullptr;
  }
  return &std::get<Event>(lines_[answers.lines[answers.next]].event);
}

template <class Event>
const Event* Replay::Next(const std::string& came) {
  if (difference_) {
    return nullptr;
  }
  const std::size_t line = next_ < inOrder_.size() ? inOrder_[next_] : lines_.size();
  const auto* const event =
      line < lines_.size() ? std::get_if<Event>(&lines_[line].event) : nullptr;
  if (event == nullptr) {
    Differ(line, came);
    return nullptr;
  }
  return event;
}

TracedDevices Replay::ListDevices(bool isAudio) {
  TracedDevices list;
  list.isAudio = isAudio;
  const auto* const answer = Answer<TracedDevices>(questions_[QuestionOf(list)]);
  if (answer == nullptr) {
    LackAnswer(std::string("a look at the system's ") + (isAudio ? "audio" : "video") + " devices");
    list.result = kGoneResult;
    return list;
  }
  return *answer;
}

std::string Replay::PlaceOf(const std::string& devicePath) const {
  for (const TraceLine& line : lines_) {
    if (const auto* const list = std::get_if<TracedDevices>(&line.event)) {
      for (const TracedDevice& device : list->devices) {
        if (device.devicePath == devicePath) {
          return device.place.value_or("");
        }
      }
    }
  }
  return "";
}

TracedOpening Replay::Open(const std::string& path) {
  TracedOpening opening{0, path, S_OK};
  const std::string came = Words(opening);
  const auto* const expected = Next<TracedOpening>(came);
  if (expected != nullptr && expected->path != path) {
    Differ(inOrder_[next_], came);
  }
  if (expected == nullptr || difference_) {
    opening.result = kGoneResult;
    return opening;
  }
  milliseconds_ = lines_[inOrder_[next_++]].milliseconds;
  return *expected;
}

HRESULT Replay::Ask(std::uint32_t camera, Lookup& lookup) {
  const auto* const answer = Answer<TracedLookup>(questions_[QuestionOf(camera, lookup)]);
  if (answer == nullptr) {
    LackAnswer(Words(TracedLookup{camera, 1, lookup}));
    return kGoneResult;
  }
  lookup = answer->lookup;
  return lookup.result;
}

VolumeOpening Replay::OpenVolume(const std::string& drive) {
  TracedVolume volume;
  volume.drive = drive;
  const auto* const answer = Answer<TracedVolume>(questions_[QuestionOf(volume)]);
  if (answer == nullptr) {
    LackAnswer("a look for the volume " + drive);
  }
  return answer != nullptr ? answer->opening : volume.opening;
}

void Replay::Execute(ScsiCommand& command) {
  constexpr std::uint32_t kNotThere = 1167;
  const std::string came = Words(TracedCommand{command});
  const auto* const expected = Next<TracedCommand>(came);
  if (expected != nullptr && !IsSame(expected->command, command)) {
    Differ(inOrder_[next_], came);
  }
  if (expected == nullptr || difference_) {
    command.error = kNotThere;
    return;
  }
  milliseconds_ = lines_[inOrder_[next_++]].milliseconds;
  command = expected->command;
}

HRESULT Replay::Carry(std::uint32_t camera, Transfer& transfer) {
  const std::string came = Words(TracedTransfer{camera, transfer, false});
  const auto* const expected = Next<TracedTransfer>(came);
  if (expected != nullptr && !IsSame(*expected, camera, transfer)) {
    Differ(inOrder_[next_], came);
  }
  if (expected == nullptr || difference_) {
    return kGoneResult;
  }
  milliseconds_ = lines_[inOrder_[next_++]].milliseconds;
  transfer = expected->transfer;
  return transfer.result;
}

std::shared_ptr<Replay>& ThreadReplay() {
  thread_local std::shared_ptr<Replay> replay;
  return replay;
}

namespace {

using zem::ComPtr;
using zem::NodesOnlyTopology;
using zem::PropertiesOnlyControl;
using zem::simulator::AnyNull;
using zem::simulator::ComObject;
using zem::simulator::QueryOne;
using zem::simulator::StreamlessFilter;
using Source = std::shared_ptr<Replay>;

class ReplayedNode : public PropertiesOnlyControl<ComObject<IKsControl>> {
 public:
  ReplayedNode(Source replay, std::uint32_t camera) : replay_(std::move(replay)), camera_(camera) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IKsControl>(this, zem::IID_IKsControl, iid, object);
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    KSP_NODE request = {};
    if (AnyNull(property, bytesReturned) || propertyLength != sizeof(request)) {
      return zem::simulator::kInvalidParameterResult;
    }
    std::memcpy(&request, property, sizeof(request));
    auto* const bytes = static_cast<std::uint8_t*>(data);
    return request.Property.Id == 0 ? Inform(request, bytes, dataLength, *bytesReturned)
                                    : Move(request, bytes, dataLength, *bytesReturned);
  }

 private:
  static void CopyTo(std::uint8_t* data, ULONG length, const std::vector<std::uint8_t>& bytes) {
    if (data != nullptr) {
      std::copy_n(bytes.begin(), std::min<std::size_t>(length, bytes.size()), data);
    }
  }

  HRESULT Inform(const KSP_NODE& request, std::uint8_t* data, ULONG length, ULONG& moved) {
    Lookup lookup{Lookup::What::kInformation, request.NodeId, request.Property.Set, length};
    const HRESULT result = replay_->Ask(camera_, lookup);
    CopyTo(data, length, lookup.bytes);
    moved = lookup.count;
    return result;
  }

  HRESULT Move(const KSP_NODE& request, std::uint8_t* data, ULONG length, ULONG& moved) {
    Transfer transfer;
    transfer.unit = request.Property.Set;
    transfer.node = request.NodeId;
    transfer.selector = request.Property.Id;
    transfer.isSet = request.Property.Flags == static_cast<ULONG>(zem::Direction::kSet);
    transfer.length = length;
    if (transfer.isSet && data != nullptr) {
      transfer.bytes.assign(data, data + length);
    }
    const HRESULT result = replay_->Carry(camera_, transfer);
    if (!transfer.isSet) {
      CopyTo(data, length, transfer.bytes);
    }
    moved = transfer.moved;
    return result;
  }

  Source replay_;
  std::uint32_t camera_;
};

// What can be held and released.
class ReplayedObject : public ComObject<IUnknown> {
 public:
  explicit ReplayedObject(const GUID& id) : id_(id) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IUnknown>(this, id_, iid, object);
  }

 private:
  GUID id_;
};

template <class Interface>
class ReplayedControls : public ComObject<Interface> {
 public:
  ReplayedControls(Source replay, std::uint32_t camera, const GUID& id)
      : replay_(std::move(replay)), camera_(camera), id_(id) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<Interface>(this, id_, iid, object);
  }

  HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                     LONG* defaultValue, LONG* flags) override {
    Transfer transfer = Begin(property);
    transfer.isRange = true;
    return Answer(transfer, minimum, maximum, step, defaultValue, flags);
  }

  HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
    Transfer transfer = Begin(property);
    transfer.isSet = true;
    transfer.values = {value, flags};
    return replay_->Carry(camera_, transfer);
  }

  HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
    Transfer transfer = Begin(property);
    return Answer(transfer, value, flags);
  }

 private:
  Transfer Begin(LONG property) const {
    Transfer transfer;
    transfer.unit = id_;
    transfer.selector = static_cast<std::uint32_t>(property);
    return transfer;
  }

  template <class... Outputs>
  HRESULT Answer(Transfer& transfer, Outputs*... outputs) {
    const HRESULT result = replay_->Carry(camera_, transfer);
    std::size_t at = 0;
    const auto give = [&](LONG* output) {
      if (SUCCEEDED(result) && output != nullptr && at < transfer.values.size()) {
        *output = transfer.values[at];
      }
      ++at;
    };
    (give(outputs), ...);
    return result;
  }

  Source replay_;
  std::uint32_t camera_;
  GUID id_;
};

class ReplayedCamera : public NodesOnlyTopology<StreamlessFilter<IKsTopologyInfo>> {
 public:
  ReplayedCamera(Source replay, std::uint32_t camera)
      : replay_(std::move(replay)), camera_(camera) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (iid == zem::IID_IUnknown || iid == zem::IID_IBaseFilter) {
      *object = static_cast<IBaseFilter*>(this);
      AddRef();
      return S_OK;
    }
    if (iid == zem::IID_IKsTopologyInfo) {
      return GiveTopology(object);
    }
    if (iid == zem::IID_IAMVideoProcAmp) {
      return GiveControls<IAMVideoProcAmp>(iid, object);
    }
    if (iid == zem::IID_IAMCameraControl) {
      return GiveControls<IAMCameraControl>(iid, object);
    }
    if (iid == zem::IID_IAMAudioInputMixer) {
      return GiveMixer(object);
    }
    return E_NOINTERFACE;
  }

  // ---- IKsTopologyInfo ----

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    Lookup lookup{Lookup::What::kNodes};
    const HRESULT result = replay_->Ask(camera_, lookup);
    if (SUCCEEDED(result) && count != nullptr) {
      *count = lookup.count;
    }
    return result;
  }

  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    Lookup lookup{Lookup::What::kNodeType, node};
    const HRESULT result = replay_->Ask(camera_, lookup);
    if (SUCCEEDED(result) && type != nullptr) {
      *type = lookup.id;
    }
    return result;
  }

  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    Lookup lookup{Lookup::What::kNode, node, iid};
    const HRESULT result = replay_->Ask(camera_, lookup);
    const bool isControl = iid == zem::IID_IKsControl;
    if (FAILED(result)) {
      return isControl ? Unaddressed(node, result) : result;
    }
    if (isControl) {
      *object = static_cast<IKsControl*>(new ReplayedNode(replay_, camera_));
    } else {
      *object = static_cast<IUnknown*>(new ReplayedObject(iid));
    }
    return result;
  }

 private:
  // A transfer for which the node could not be had has a line of its own.
  HRESULT Unaddressed(DWORD node, HRESULT result) {
    Transfer transfer;
    transfer.node = node;
    transfer.isAddressed = false;
    transfer.result = result;
    static_cast<void>(replay_->Carry(camera_, transfer));
    return result;
  }

  HRESULT Granted(const GUID& id) {
    Lookup lookup{Lookup::What::kInterface, 0, id};
    return replay_->Ask(camera_, lookup);
  }

  HRESULT GiveTopology(void** object) {
    const HRESULT result = Granted(zem::IID_IKsTopologyInfo);
    if (FAILED(result)) {
      return Unaddressed(0, result);
    }
    *object = static_cast<IKsTopologyInfo*>(this);
    AddRef();
    return result;
  }

  template <class Interface>
  HRESULT GiveControls(const GUID& id, void** object) {
    const HRESULT result = Granted(id);
    if (SUCCEEDED(result)) {
      *object = static_cast<Interface*>(new ReplayedControls<Interface>(replay_, camera_, id));
    }
    return result;
  }

  HRESULT GiveMixer(void** object) {
    if (const HRESULT result = Granted(zem::IID_IAMAudioInputMixer); FAILED(result)) {
      return result;
    }
    const auto microphone = std::make_shared<zem::simulator::Microphone>();
    microphone->onLevel = [replay = replay_, camera = camera_](double level) {
      Transfer transfer = LevelTransfer(level);
      return replay->Carry(camera, transfer);
    };
    const auto filter =
        ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeMicrophoneFilter(microphone, nullptr));
    return filter->QueryInterface(zem::IID_IAMAudioInputMixer, object);
  }

  Source replay_;
  std::uint32_t camera_;
};

}  // namespace

ComPtr<IBaseFilter> MakeReplayedCamera(std::shared_ptr<Replay> replay, std::uint32_t camera) {
  return ComPtr<IBaseFilter>::Adopt(new ReplayedCamera(std::move(replay), camera));
}

}  // namespace zemctl
