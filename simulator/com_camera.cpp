#include "simulator/com_camera.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "simulator/com_controls.h"
#include "simulator/com_filter.h"
#include "simulator/system_results.h"

namespace zem::simulator {
namespace {

constexpr ULONG kGetTopology = 0x10000001;
constexpr ULONG kSetTopology = 0x10000002;

// Type of an extension unit's node ("device specific").
constexpr GUID kExtensionNodeType = {
    0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};

// IKsControl of one node.
class NodeControl : public PropertiesOnlyControl<ComObject<IKsControl>> {
 public:
  NodeControl(std::shared_ptr<Camera> camera, CallGate* gate, DWORD node)
      : camera_(std::move(camera)), gate_(gate), node_(node) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IKsControl>(this, IID_IKsControl, iid, object);
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    const HRESULT entered = Enter(gate_, "KsProperty");
    if (FAILED(entered)) {
      return entered;
    }
    if (AnyNull(property, bytesReturned)) {
      return E_POINTER;
    }
    KSP_NODE request = {};
    if (propertyLength != sizeof(request)) {
      return kInvalidParameterResult;
    }
    std::memcpy(&request, property, sizeof(request));
    return GatedResult(
        entered, CarryOut(request, static_cast<std::uint8_t*>(data), dataLength, bytesReturned));
  }

 private:
  HRESULT CarryOut(const KSP_NODE& request, std::uint8_t* data, ULONG dataLength,
                   ULONG* bytesReturned) {
    const ExtensionUnit* const unit = camera_->UnitAt(node_);
    if (unit == nullptr || request.NodeId != node_) {
      return kNotFoundResult;
    }
    if (!(request.Property.Set == unit->id())) {
      return kSetNotFoundResult;
    }
    return request.Property.Id == 0
               ? ReadInformation(*unit, request, data, dataLength, bytesReturned)
               : MoveControl(request, data, dataLength, bytesReturned);
  }

  // The unit's information block: its GUID and the number of its controls.
  static HRESULT ReadInformation(const ExtensionUnit& unit, const KSP_NODE& request, void* data,
                                 ULONG dataLength, ULONG* bytesReturned) {
    std::array<std::uint8_t, sizeof(GUID) + 4> information = {};
    if (request.Property.Flags != kGetTopology) {
      return kInvalidParameterResult;
    }
    std::memcpy(information.data(), &unit.id(), sizeof(GUID));
    *bytesReturned = static_cast<ULONG>(information.size());
    if (dataLength < information.size()) {
      return kMoreDataResult;
    }
    if (data == nullptr) {
      return kNoAccessResult;
    }
    std::memcpy(data, information.data(), information.size());
    return S_OK;
  }

  HRESULT MoveControl(const KSP_NODE& request, std::uint8_t* data, ULONG dataLength,
                      ULONG* bytesReturned) {
    if (data == nullptr && dataLength > 0) {
      return kNoAccessResult;
    }
    const auto selector = static_cast<std::uint16_t>(request.Property.Id);
    std::uint32_t moved = 0;
    Outcome outcome = Outcome::kNoSuchControl;
    if (request.Property.Flags == kSetTopology) {
      outcome = camera_->Set(node_, selector, {data, dataLength});
      moved = outcome == Outcome::kDone ? dataLength : 0;
    } else if (request.Property.Flags == kGetTopology) {
      outcome = camera_->Get(node_, selector, {data, dataLength}, moved);
    }
    *bytesReturned = moved;
    return EndTransfer(gate_, ResultOf(outcome));
  }

  std::shared_ptr<Camera> camera_;
  CallGate* gate_;
  DWORD node_;
};

// What stands for IVideoProcAmp of the processing unit's node: it can be held and released. No host
// here calls its methods.
class ProcessingNode : public ComObject<IUnknown> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IUnknown>(this, IID_IVideoProcAmp, iid, object);
  }
};

class CameraFilter : public NodesOnlyTopology<StreamlessFilter<IKsTopologyInfo>> {
 public:
  CameraFilter(std::shared_ptr<Camera> camera, CallGate* gate)
      : camera_(std::move(camera)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    HRESULT entered = S_OK;
    if (iid == IID_IKsTopologyInfo) {
      entered = Enter(gate_, "QueryInterface(IKsTopologyInfo)");
      if (FAILED(entered)) {
        return entered;
      }
      *object = static_cast<IKsTopologyInfo*>(this);
    } else if (iid == IID_IBaseFilter || iid == IID_IUnknown) {
      *object = static_cast<IBaseFilter*>(this);
    } else {
      return QueryControls(camera_, gate_, iid, object);
    }
    AddRef();
    return entered;
  }

  // ---- IKsTopologyInfo ----

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    const HRESULT entered = Enter(gate_, "get_NumNodes");
    if (FAILED(entered)) {
      return entered;
    }
    if (count == nullptr) {
      return E_POINTER;
    }
    *count = static_cast<DWORD>(camera_->nodeCount());
    return entered;
  }

  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    const HRESULT entered = Enter(gate_, "get_NodeType");
    if (FAILED(entered)) {
      return entered;
    }
    if (type == nullptr) {
      return E_POINTER;
    }
    *type = camera_->UnitAt(node) != nullptr ? kExtensionNodeType : GUID{};
    return entered;
  }

  // Any node id will do: a request to a node that does not exist is what fails.
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    const HRESULT entered = Enter(gate_, "CreateNodeInstance");
    if (FAILED(entered)) {
      return entered;
    }
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IVideoProcAmp && camera_->IsProcessingNode(node)) {
      *object = static_cast<IUnknown*>(new ProcessingNode());
      return entered;
    }
    if (!(iid == IID_IKsControl)) {
      return E_NOINTERFACE;
    }
    *object = static_cast<IKsControl*>(new NodeControl(camera_, gate_, node));
    return entered;
  }

 private:
  std::shared_ptr<Camera> camera_;
  CallGate* gate_;
};

}  // namespace

IBaseFilter* MakeCameraFilter(std::shared_ptr<Camera> camera, CallGate* gate) {
  return new CameraFilter(std::move(camera), gate);
}

HRESULT ResultOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDone:
      return S_OK;
    case Outcome::kNoSuchControl:
      return kNotFoundResult;
    case Outcome::kWrongLength:
      return kMoreDataResult;
    case Outcome::kInvalidValue:
      return kInvalidParameterResult;
    case Outcome::kFailed:
      return kGenFailureResult;
    case Outcome::kSilent:
      return kTimedOutResult;
    case Outcome::kUnplugged:
      return kNotConnectedResult;
  }
  return kGenFailureResult;
}

}  // namespace zem::simulator
