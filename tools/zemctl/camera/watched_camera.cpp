#include "tools/zemctl/camera/watched_camera.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "device/extension_units.h"
#include "device/property_request.h"
#include "simulator/com_microphone.h"
#include "simulator/com_object.h"

namespace zemctl {
namespace {

using zem::ComPtr;
using zem::simulator::ComObject;
using zem::simulator::QueryOne;
using Watcher = std::shared_ptr<CameraWatcher>;

constexpr std::uint8_t kBurnFailedStatus = 0x82;

Transfer Describe(const KSP_NODE& request, const void* data, ULONG dataLength,
                  const ULONG* bytesReturned, HRESULT result) {
  Transfer transfer;
  transfer.unit = request.Property.Set;
  transfer.node = request.NodeId;
  transfer.selector = request.Property.Id;
  transfer.isSet = request.Property.Flags == static_cast<ULONG>(zem::Direction::kSet);
  transfer.length = dataLength;
  transfer.moved = bytesReturned != nullptr ? *bytesReturned : 0;
  transfer.result = result;
  if (const auto* const bytes = static_cast<const std::uint8_t*>(data)) {
    transfer.bytes.assign(
        bytes, bytes + (transfer.isSet ? dataLength : std::min<ULONG>(transfer.moved, dataLength)));
  }
  return transfer;
}

Lookup DescribeLookup(const KSP_NODE& request, const void* data, ULONG dataLength,
                      const ULONG* bytesReturned, HRESULT result) {
  Lookup lookup{Lookup::What::kInformation, request.NodeId, request.Property.Set, dataLength};
  lookup.count = bytesReturned != nullptr ? *bytesReturned : 0;
  lookup.result = result;
  if (const auto* const bytes = static_cast<const std::uint8_t*>(data);
      bytes && SUCCEEDED(result)) {
    lookup.bytes.assign(bytes, bytes + std::min<ULONG>(lookup.count, dataLength));
  }
  return lookup;
}

// IKsControl of one node.
class WatchedNode : public ComObject<IKsControl> {
 public:
  // `wanted` becomes the unit that was asked for last.
  WatchedNode(ComPtr<IKsControl> node, Watcher watcher, std::shared_ptr<GUID> wanted)
      : node_(std::move(node)), watcher_(std::move(watcher)), wanted_(std::move(wanted)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IKsControl>(this, zem::IID_IKsControl, iid, object);
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    KSP_NODE request = {};
    const auto pass = [&] {
      return node_->KsProperty(property, propertyLength, data, dataLength, bytesReturned);
    };
    if (property == nullptr || propertyLength != sizeof(request)) {
      return pass();
    }
    std::memcpy(&request, property, sizeof(request));
    *wanted_ = request.Property.Set;
    if (request.Property.Id == 0) {
      const HRESULT result = pass();
      watcher_->Add(DescribeLookup(request, data, dataLength, bytesReturned, result));
      return result;
    }
    const HRESULT result = watcher_->mustStop() ? kStoppedResult : pass();
    const Transfer transfer = Describe(request, data, dataLength, bytesReturned, result);
    watcher_->Add(transfer);
    return EndsWait(transfer) && AnswerFailedBurn(data, dataLength, bytesReturned) ? S_OK : result;
  }

  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG methodLength, LPVOID data,
                                     ULONG dataLength, ULONG* bytesReturned) override {
    return node_->KsMethod(method, methodLength, data, dataLength, bytesReturned);
  }

  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG eventLength, LPVOID data,
                                    ULONG dataLength, ULONG* bytesReturned) override {
    return node_->KsEvent(event, eventLength, data, dataLength, bytesReturned);
  }

 private:
  bool EndsWait(const Transfer& transfer) const {
    return transfer.hasFailed() && watcher_->endsWaits() &&
           transfer.Is(zem::VendorXu, zem::vendor_selector::kVcpReply, false);
  }

  static bool AnswerFailedBurn(void* data, ULONG dataLength, ULONG* bytesReturned) {
    if (data == nullptr || dataLength == 0 || bytesReturned == nullptr) {
      return false;
    }
    std::memset(data, 0, dataLength);
    *static_cast<std::uint8_t*>(data) = kBurnFailedStatus;
    *bytesReturned = dataLength;
    return true;
  }

  ComPtr<IKsControl> node_;
  Watcher watcher_;
  std::shared_ptr<GUID> wanted_;
};

// Either interface of the standard controls has these three methods in this order.
template <class Interface>
class WatchedControls : public ComObject<Interface> {
 public:
  WatchedControls(ComPtr<Interface> controls, const GUID& id, Watcher watcher)
      : controls_(std::move(controls)), id_(id), watcher_(std::move(watcher)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<Interface>(this, id_, iid, object);
  }

  HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                     LONG* defaultValue, LONG* flags) override {
    Transfer transfer = Begin(property);
    transfer.isRange = true;
    return End(
        std::move(transfer),
        [&] { return controls_->GetRange(property, minimum, maximum, step, defaultValue, flags); },
        minimum, maximum, step, defaultValue, flags);
  }

  HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
    Transfer transfer = Begin(property);
    transfer.isSet = true;
    transfer.values = {value, flags};
    return End(std::move(transfer), [&] { return controls_->Set(property, value, flags); });
  }

  HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
    return End(
        Begin(property), [&] { return controls_->Get(property, value, flags); }, value, flags);
  }

 private:
  Transfer Begin(LONG property) const {
    Transfer transfer;
    transfer.unit = id_;
    transfer.selector = static_cast<std::uint32_t>(property);
    return transfer;
  }

  // `outputs` are what the caller gets; it may leave some out.
  template <class Pass, class... Outputs>
  HRESULT End(Transfer transfer, Pass pass, const Outputs*... outputs) {
    const HRESULT result = watcher_->mustStop() ? kStoppedResult : pass();
    transfer.result = result;
    if (SUCCEEDED(result)) {
      (transfer.values.push_back(outputs != nullptr ? *outputs : 0), ...);
    }
    watcher_->Add(std::move(transfer));
    return result;
  }

  ComPtr<Interface> controls_;
  GUID id_;
  Watcher watcher_;
};

class WatchedFilter : public ComObject<IBaseFilter, IKsTopologyInfo> {
 public:
  WatchedFilter(ComPtr<IBaseFilter> camera, Watcher watcher)
      : camera_(std::move(camera)), watcher_(std::move(watcher)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
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
    return camera_->QueryInterface(iid, object);
  }

  // ---- IBaseFilter ----

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override { return camera_->GetClassID(id); }
  HRESULT STDMETHODCALLTYPE Stop() override { return camera_->Stop(); }
  HRESULT STDMETHODCALLTYPE Pause() override { return camera_->Pause(); }
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override { return camera_->Run(start); }
  HRESULT STDMETHODCALLTYPE GetState(DWORD timeout, FILTER_STATE* state) override {
    return camera_->GetState(timeout, state);
  }
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override {
    return camera_->SetSyncSource(clock);
  }
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override {
    return camera_->GetSyncSource(clock);
  }
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override { return camera_->EnumPins(pins); }
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override {
    return camera_->FindPin(id, pin);
  }
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override {
    return camera_->QueryFilterInfo(info);
  }
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override {
    return camera_->JoinFilterGraph(graph, name);
  }
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override {
    return camera_->QueryVendorInfo(info);
  }

  // ---- IKsTopologyInfo: nobody has it before the camera's own has been had ----

  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) override {
    return topology_->get_NumCategories(count);
  }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) override {
    return topology_->get_Category(index, category);
  }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) override {
    return topology_->get_NumConnections(count);
  }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index,
                                               KSTOPOLOGY_CONNECTION* connection) override {
    return topology_->get_ConnectionInfo(index, connection);
  }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node, WCHAR* name, DWORD size,
                                         DWORD* nameLength) override {
    return topology_->get_NodeName(node, name, size, nameLength);
  }
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    const HRESULT result = topology_->get_NumNodes(count);
    Lookup lookup{Lookup::What::kNodes};
    lookup.count = SUCCEEDED(result) && count != nullptr ? *count : 0;
    lookup.result = result;
    watcher_->Add(lookup);
    return result;
  }
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    const HRESULT result = topology_->get_NodeType(node, type);
    Lookup lookup{Lookup::What::kNodeType, node};
    if (SUCCEEDED(result) && type != nullptr) {
      lookup.id = *type;
    }
    lookup.result = result;
    watcher_->Add(lookup);
    return result;
  }

  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    if (object == nullptr || !(iid == zem::IID_IKsControl)) {
      const HRESULT result = topology_->CreateNodeInstance(node, iid, object);
      NoteInterface(Lookup::What::kNode, node, iid, result);
      return result;
    }
    *object = nullptr;
    ComPtr<IKsControl> control;
    const HRESULT result = topology_->CreateNodeInstance(node, iid, control.ReceiveVoid());
    NoteInterface(Lookup::What::kNode, node, iid, Granted(result, control.get()));
    if (FAILED(result) || !control) {
      NoteUnaddressed(node, Granted(result, control.get()));
      return result;
    }
    *object = static_cast<IKsControl*>(new WatchedNode(std::move(control), watcher_, wanted_));
    return result;
  }

 private:
  HRESULT GiveTopology(void** object) {
    *object = nullptr;
    ComPtr<IKsTopologyInfo> topology;
    const HRESULT result =
        camera_->QueryInterface(zem::IID_IKsTopologyInfo, topology.ReceiveVoid());
    NoteInterface(Lookup::What::kInterface, 0, zem::IID_IKsTopologyInfo,
                  Granted(result, topology.get()));
    if (FAILED(result) || !topology) {
      NoteUnaddressed(0, Granted(result, topology.get()));
      return result;
    }
    topology_ = std::move(topology);
    *object = static_cast<IKsTopologyInfo*>(this);
    AddRef();
    return result;
  }

  template <class Interface>
  HRESULT GiveControls(const GUID& id, void** object) {
    *object = nullptr;
    ComPtr<Interface> controls;
    const HRESULT result = camera_->QueryInterface(id, controls.ReceiveVoid());
    NoteInterface(Lookup::What::kInterface, 0, id, Granted(result, controls.get()));
    if (SUCCEEDED(result) && controls) {
      *object = static_cast<Interface*>(
          new WatchedControls<Interface>(std::move(controls), id, watcher_));
    }
    return result;
  }

  // Nobody does more with it than set the level.
  HRESULT GiveMixer(void** object) {
    *object = nullptr;
    ComPtr<IAMAudioInputMixer> mixer;
    const HRESULT result =
        camera_->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid());
    NoteInterface(Lookup::What::kInterface, 0, zem::IID_IAMAudioInputMixer,
                  Granted(result, mixer.get()));
    if (FAILED(result) || !mixer) {
      return result;
    }
    const auto microphone = std::make_shared<zem::simulator::Microphone>();
    const auto held = std::make_shared<ComPtr<IAMAudioInputMixer>>(std::move(mixer));
    microphone->onLevel = [held, watcher = watcher_](double level) {
      Transfer transfer = LevelTransfer(level);
      transfer.result = (*held)->put_MixLevel(level);
      const HRESULT put = transfer.result;
      watcher->Add(std::move(transfer));
      return put;
    };
    const auto filter =
        ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeMicrophoneFilter(microphone, nullptr));
    return filter->QueryInterface(zem::IID_IAMAudioInputMixer, object);
  }

  // An interface that is granted without a pointer is none.
  static HRESULT Granted(HRESULT result, const void* pointer) {
    return SUCCEEDED(result) && pointer == nullptr ? E_NOINTERFACE : result;
  }

  void NoteInterface(Lookup::What what, DWORD node, const GUID& id, HRESULT result) {
    Lookup lookup{what, node, id};
    lookup.result = result;
    watcher_->Add(lookup);
  }

  // No transfer was possible.
  void NoteUnaddressed(DWORD node, HRESULT result) {
    Transfer transfer;
    transfer.unit = *wanted_;
    transfer.node = node;
    transfer.isAddressed = false;
    transfer.result = result;
    watcher_->Add(std::move(transfer));
  }

  ComPtr<IBaseFilter> camera_;
  ComPtr<IKsTopologyInfo> topology_;
  Watcher watcher_;
  std::shared_ptr<GUID> wanted_ = std::make_shared<GUID>();
};

}  // namespace

ComPtr<IBaseFilter> Watch(ComPtr<IBaseFilter> camera, std::shared_ptr<CameraWatcher> watcher) {
  return ComPtr<IBaseFilter>::Adopt(new WatchedFilter(std::move(camera), std::move(watcher)));
}

}  // namespace zemctl
