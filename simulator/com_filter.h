// A filter without streams: what every simulated device is to the system besides its own
// interfaces.
#pragma once

#include "simulator/com_object.h"

namespace zem::simulator {

template <class... Interfaces>
class StreamlessFilter : public ComObject<IBaseFilter, Interfaces...> {
 public:
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* /*classId*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stop() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Pause() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME /*start*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetState(DWORD /*timeoutMs*/, FILTER_STATE* /*state*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* /*clock*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** /*clock*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** /*pins*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR /*id*/, IPin** /*pin*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* /*info*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* /*graph*/, LPCWSTR /*name*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* /*info*/) override { return E_NOTIMPL; }
};

}  // namespace zem::simulator
