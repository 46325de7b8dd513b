// A camera filter that lives on the stack, allocates nothing and does as little as COM allows: for
// counting what the library itself does, and for answering requests by hand.
#pragma once

#include <cstring>

#include "platform/com_unused.h"

namespace zem::testing {

// What a camera has to have to be one.
class CameraInterfaces : public IBaseFilter, public IKsTopologyInfo, public IKsControl {
 public:
  virtual ~CameraInterfaces() = default;
};

class BareCamera
    : public NodesOnlyTopology<StreamlessFilter<PropertiesOnlyControl<CameraInterfaces>>> {
 public:
  // One property request, for whichever node.
  virtual HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                          ULONG* bytesReturned) = 0;

  DWORD nodeCount = 0;
  int references = 1;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = iid == IID_IKsTopologyInfo ? static_cast<IKsTopologyInfo*>(this) : nullptr;
    return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }

  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    *count = nodeCount;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD /*node*/, GUID* /*type*/) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD /*node*/, REFIID /*iid*/,
                                               void** object) override {
    *object = static_cast<IKsControl*>(this);
    AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG /*propertyLength*/, LPVOID data,
                                       ULONG dataLength, ULONG* bytesReturned) override {
    KSP_NODE request = {};
    std::memcpy(&request, property, sizeof(request));
    return Request(request, data, dataLength, bytesReturned);
  }
};

}  // namespace zem::testing
