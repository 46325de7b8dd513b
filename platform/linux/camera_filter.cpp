#include "platform/linux/camera_filter.h"

#include <linux/usb/video.h>
#include <linux/uvcvideo.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "platform/any_null.h"
#include "platform/bytes.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/com_unused.h"
#include "platform/linux/camera_controls.h"
#include "platform/linux/errors.h"

namespace zem::platform {
namespace {

constexpr ULONG kGetTopology = 0x10000001;
constexpr ULONG kSetTopology = 0x10000002;

// Node types by kind of entity, as Windows names them.
consteval GUID MakeVideoNodeType(ULONG number) {
  return {number, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
}
constexpr GUID kInputTerminalType = MakeVideoNodeType(0xDFF229E2);
constexpr GUID kOutputTerminalType = MakeVideoNodeType(0xDFF229E3);
constexpr GUID kSelectorType = MakeVideoNodeType(0xDFF229E4);
constexpr GUID kProcessingType = MakeVideoNodeType(0xDFF229E5);
constexpr GUID kCameraTerminalNodeType = MakeVideoNodeType(0xDFF229E6);
constexpr GUID kDeviceSpecificType = {
    0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};

const GUID& NodeType(const VideoEntity& entity) {
  switch (entity.kind) {
    case EntityKind::kInputTerminal:
      return entity.terminalType == kCameraTerminalType ? kCameraTerminalNodeType
                                                        : kInputTerminalType;
    case EntityKind::kOutputTerminal:
      return kOutputTerminalType;
    case EntityKind::kSelectorUnit:
      return kSelectorType;
    case EntityKind::kProcessingUnit:
      return kProcessingType;
    case EntityKind::kExtensionUnit:
    case EntityKind::kEncodingUnit:
      break;
  }
  return kDeviceSpecificType;
}

// Requests to one extension unit.
class UnitControls {
 public:
  UnitControls(const DeviceFile& file, std::uint8_t unit) : file_(file), unit_(unit) {}

  // The control's own length; negative is an errno value.
  int Length(std::uint8_t selector) const {
    std::uint8_t length[2] = {};
    const int result = Query(UVC_GET_LEN, selector, length, sizeof(length));
    return result < 0 ? result : LoadLe16(length);
  }

  // Moves `length` bytes, the control's own length. The bytes that moved, which are fewer when the
  // camera answers with less; negative is an errno value.
  int Move(std::uint8_t query, std::uint8_t selector, std::uint8_t* data, int length) const {
    const int result = Query(query, selector, data, static_cast<std::uint16_t>(length));
    return result == 0 ? length : result;
  }

 private:
  int Query(std::uint8_t query, std::uint8_t selector, std::uint8_t* data,
            std::uint16_t length) const {
    uvc_xu_control_query request = {unit_, selector, query, length, data};
    return file_.Control(UVCIOC_CTRL_QUERY, &request);
  }

  const DeviceFile& file_;
  std::uint8_t unit_;
};

// IKsControl of one node, over `file`, which `owner` keeps open. A node that does not exist has one
// too, without an entity: its requests are what fails.
class NodeControl : public PropertiesOnlyControl<CountedObject<IKsControl>> {
 public:
  NodeControl(IUnknown* owner, const DeviceFile& file, const VideoEntity* entity, DWORD node)
      : owner_(ComPtr<IUnknown>::Share(owner)), file_(file), entity_(entity), node_(node) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IKsControl>(this, IID_IKsControl, iid, object);
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    if (AnyNull(property, bytesReturned)) {
      return E_POINTER;
    }
    KSP_NODE request = {};
    if (propertyLength != sizeof(request)) {
      return ResultOfError(kInvalidParameter);
    }
    std::memcpy(&request, property, sizeof(request));
    if (entity_ == nullptr || entity_->kind != EntityKind::kExtensionUnit ||
        request.NodeId != node_) {
      return ResultOfError(kNotFound);
    }
    if (!(request.Property.Set == entity_->extension)) {
      return ResultOfError(kSetNotFound);
    }
    return request.Property.Id == 0
               ? ReadInformation(*entity_, request.Property.Flags, data, dataLength, bytesReturned)
               : MoveControl(*entity_, request.Property, static_cast<std::uint8_t*>(data),
                             dataLength, bytesReturned);
  }

 private:
  // The unit's information block is its GUID.
  static HRESULT ReadInformation(const VideoEntity& unit, ULONG flags, void* data, ULONG dataLength,
                                 ULONG* bytesReturned) {
    if (flags != kGetTopology) {
      return ResultOfError(kInvalidParameter);
    }
    *bytesReturned = sizeof(unit.extension);
    if (dataLength < sizeof(unit.extension)) {
      return ResultOfError(kMoreData);
    }
    if (data == nullptr) {
      return ResultOfError(kNoAccess);
    }
    std::memcpy(data, &unit.extension, sizeof(unit.extension));
    return S_OK;
  }

  HRESULT MoveControl(const VideoEntity& unit, const KSPROPERTY& property, std::uint8_t* data,
                      ULONG dataLength, ULONG* bytesReturned) const {
    *bytesReturned = 0;
    if (data == nullptr && dataLength > 0) {
      return ResultOfError(kNoAccess);
    }
    const bool isSet = property.Flags == kSetTopology;
    if (property.Id > 0xFF || (!isSet && property.Flags != kGetTopology)) {
      return ResultOfError(kNotFound);
    }
    const UnitControls controls(file_, unit.id);
    const auto selector = static_cast<std::uint8_t>(property.Id);
    const int length = controls.Length(selector);
    if (length < 0) {
      return ResultOfErrno(length);
    }
    if (dataLength < static_cast<ULONG>(length)) {
      *bytesReturned = static_cast<ULONG>(length);
      return ResultOfError(kMoreData);
    }
    const int moved = controls.Move(isSet ? UVC_SET_CUR : UVC_GET_CUR, selector, data, length);
    if (moved < 0) {
      return ResultOfErrno(moved);
    }
    *bytesReturned = static_cast<ULONG>(moved);
    return S_OK;
  }

  ComPtr<IUnknown> owner_;
  const DeviceFile& file_;
  const VideoEntity* entity_;
  DWORD node_;
};

class CameraFilter
    : public NodesOnlyTopology<StreamlessFilter<CountedObject<IBaseFilter, IKsTopologyInfo>>> {
 public:
  CameraFilter(DeviceFile file, const VideoTopology& topology)
      : file_(std::move(file)), topology_(topology) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IAMVideoProcAmp || iid == IID_IAMCameraControl) {
      const bool present = iid == IID_IAMVideoProcAmp ? HasProcessingUnit() : HasCameraTerminal();
      return present ? MakeCameraControls(AsUnknown(), file_, iid, object) : E_NOINTERFACE;
    }
    if (iid == IID_IKsTopologyInfo) {
      *object = static_cast<IKsTopologyInfo*>(this);
    } else if (iid == IID_IBaseFilter || iid == IID_IUnknown) {
      *object = static_cast<IBaseFilter*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

  // ---- IKsTopologyInfo ----

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    if (count == nullptr) {
      return E_POINTER;
    }
    *count = static_cast<DWORD>(topology_.count);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    const VideoEntity* const entity = EntityAt(node);
    if (type == nullptr) {
      return E_POINTER;
    }
    *type = entity != nullptr ? NodeType(*entity) : GUID{};
    return entity != nullptr ? S_OK : ResultOfError(kNotFound);
  }

  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (!(iid == IID_IKsControl)) {
      return E_NOINTERFACE;
    }
    auto* const control = new (std::nothrow) NodeControl(AsUnknown(), file_, EntityAt(node), node);
    if (control == nullptr) {
      return ResultOfError(kOutOfMemory);
    }
    *object = static_cast<IKsControl*>(control);
    return S_OK;
  }

 private:
  IUnknown* AsUnknown() { return static_cast<IBaseFilter*>(this); }

  const VideoEntity* EntityAt(DWORD node) const {
    return node < topology_.count ? &topology_.entities[node] : nullptr;
  }

  bool HasProcessingUnit() const {
    return Has(
        [](const VideoEntity& entity) { return entity.kind == EntityKind::kProcessingUnit; });
  }
  bool HasCameraTerminal() const {
    return Has([](const VideoEntity& entity) {
      return entity.kind == EntityKind::kInputTerminal &&
             entity.terminalType == kCameraTerminalType;
    });
  }

  template <class Condition>
  bool Has(Condition condition) const {
    return std::any_of(topology_.all().begin(), topology_.all().end(), condition);
  }

  DeviceFile file_;
  VideoTopology topology_;
};

}  // namespace

HRESULT BindCamera(const VideoDevice& device, IBaseFilter** filter) {
  *filter = nullptr;
  DeviceFile file = device.Open();
  if (!file) {
    return ResultOfErrno(file.descriptor());
  }
  VideoTopology topology;
  if (!device.ReadTopology(topology)) {
    return ResultOfError(kOutOfMemory);
  }
  *filter = new (std::nothrow) CameraFilter(std::move(file), topology);
  return *filter != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

}  // namespace zem::platform
