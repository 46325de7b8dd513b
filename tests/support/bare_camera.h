// A camera filter that lives on the stack, allocates nothing and does as little as COM allows: for
// counting what the library itself does, and for answering requests by hand.
#pragma once

#include <cstring>

#include "platform/com.h"

namespace zem::testing {

class BareCamera : public IBaseFilter, public IKsTopologyInfo, public IKsControl {
 public:
  virtual ~BareCamera() = default;

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

  // ---- Never called ----

  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD, GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD, KSTOPOLOGY_CONNECTION*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD, WCHAR*, DWORD, DWORD*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, LPVOID, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, LPVOID, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stop() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Pause() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetState(DWORD, FILTER_STATE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR, IPin**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph*, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR*) override { return E_NOTIMPL; }
};

}  // namespace zem::testing
