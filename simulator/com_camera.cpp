#include "simulator/com_camera.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "simulator/com_controls.h"
#include "simulator/com_filter.h"

namespace zem::simulator {
namespace {

// Win32 errors in HRESULT form, as the platform's class driver reports them.
constexpr auto kNoAccess = static_cast<HRESULT>(0x800703E6U);
constexpr auto kInvalidParameter = static_cast<HRESULT>(0x80070057U);
constexpr auto kMoreData = static_cast<HRESULT>(0x800700EAU);
constexpr auto kGenFailure = static_cast<HRESULT>(0x8007001FU);
constexpr auto kNotConnected = static_cast<HRESULT>(0x8007048FU);
constexpr auto kNotFound = static_cast<HRESULT>(0x80070490U);
constexpr auto kSetNotFound = static_cast<HRESULT>(0x80070492U);

constexpr ULONG kGetTopology = 0x10000001;
constexpr ULONG kSetTopology = 0x10000002;

// Type of an extension unit's node ("device specific").
constexpr GUID kExtensionNodeType = {
    0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};

// IKsControl of one node.
class NodeControl : public ComObject<IKsControl> {
 public:
  NodeControl(std::shared_ptr<Camera> camera, CallGate* gate, DWORD node)
      : camera_(std::move(camera)), gate_(gate), node_(node) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IKsControl>(this, IID_IKsControl, iid, object);
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    if (const HRESULT refused = Enter(gate_, "KsProperty"); FAILED(refused)) {
      return refused;
    }
    KSP_NODE request = {};
    if (propertyLength != sizeof(request)) {
      return kInvalidParameter;
    }
    std::memcpy(&request, property, sizeof(request));
    const ExtensionUnit* const unit = camera_->UnitAt(node_);
    if (unit == nullptr || request.NodeId != node_) {
      return kNotFound;
    }
    if (!(request.Property.Set == unit->id())) {
      return kSetNotFound;
    }
    if (request.Property.Id == 0) {
      return ReadInformation(*unit, request, data, dataLength, bytesReturned);
    }
    return MoveControl(request, static_cast<std::uint8_t*>(data), dataLength, bytesReturned);
  }

  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD /*method*/, ULONG /*methodLength*/, LPVOID /*data*/,
                                     ULONG /*dataLength*/, ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT /*event*/, ULONG /*eventLength*/, LPVOID /*data*/,
                                    ULONG /*dataLength*/, ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }

 private:
  // The unit's information block: its GUID and the number of its controls.
  static HRESULT ReadInformation(const ExtensionUnit& unit, const KSP_NODE& request, void* data,
                                 ULONG dataLength, ULONG* bytesReturned) {
    std::array<std::uint8_t, sizeof(GUID) + 4> information = {};
    if (request.Property.Flags != kGetTopology) {
      return kInvalidParameter;
    }
    std::memcpy(information.data(), &unit.id(), sizeof(GUID));
    *bytesReturned = static_cast<ULONG>(information.size());
    if (dataLength < information.size()) {
      return kMoreData;
    }
    std::memcpy(data, information.data(), information.size());
    return S_OK;
  }

  HRESULT MoveControl(const KSP_NODE& request, std::uint8_t* data, ULONG dataLength,
                      ULONG* bytesReturned) {
    if (data == nullptr && dataLength > 0) {
      return kNoAccess;
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
    return ResultOf(outcome);
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

class CameraFilter : public StreamlessFilter<IKsTopologyInfo> {
 public:
  CameraFilter(std::shared_ptr<Camera> camera, CallGate* gate)
      : camera_(std::move(camera)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (iid == IID_IKsTopologyInfo) {
      if (const HRESULT refused = Enter(gate_, "QueryInterface(IKsTopologyInfo)");
          FAILED(refused)) {
        return refused;
      }
      *object = static_cast<IKsTopologyInfo*>(this);
    } else if (iid == IID_IBaseFilter || iid == IID_IUnknown) {
      *object = static_cast<IBaseFilter*>(this);
    } else {
      return QueryControls(camera_, gate_, iid, object);
    }
    AddRef();
    return S_OK;
  }

  // ---- IKsTopologyInfo ----

  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD /*index*/, GUID* /*category*/) override {
    return kNotFound;
  }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD /*index*/,
                                               KSTOPOLOGY_CONNECTION* /*connection*/) override {
    return kNotFound;
  }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD /*node*/, WCHAR* /*name*/, DWORD /*size*/,
                                         DWORD* /*nameLength*/) override {
    return kNotFound;
  }

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    if (const HRESULT refused = Enter(gate_, "get_NumNodes"); FAILED(refused)) {
      return refused;
    }
    *count = static_cast<DWORD>(camera_->nodeCount());
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    if (const HRESULT refused = Enter(gate_, "get_NodeType"); FAILED(refused)) {
      return refused;
    }
    *type = camera_->UnitAt(node) != nullptr ? kExtensionNodeType : GUID{};
    return S_OK;
  }

  // Any node id will do: a request to a node that does not exist is what fails.
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    if (const HRESULT refused = Enter(gate_, "CreateNodeInstance"); FAILED(refused)) {
      return refused;
    }
    *object = nullptr;
    if (iid == IID_IVideoProcAmp && camera_->IsProcessingNode(node)) {
      *object = static_cast<IUnknown*>(new ProcessingNode());
      return S_OK;
    }
    if (!(iid == IID_IKsControl)) {
      return E_NOINTERFACE;
    }
    *object = static_cast<IKsControl*>(new NodeControl(camera_, gate_, node));
    return S_OK;
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
      return kNotFound;
    case Outcome::kWrongLength:
      return kMoreData;
    case Outcome::kInvalidValue:
      return kInvalidParameter;
    case Outcome::kFailed:
      return kGenFailure;
    case Outcome::kUnplugged:
      return kNotConnected;
  }
  return kGenFailure;
}

}  // namespace zem::simulator
