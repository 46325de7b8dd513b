// The methods of the interfaces that the library never calls. Each template is a layer between an
// object and its counting: `Base` is the counted object with that interface.
#pragma once

#include "platform/com.h"

namespace zem {

// A filter without streams.
template <class Base>
class StreamlessFilter : public Base {
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

// A moniker that has a name and can be bound.
template <class Base>
class BoundOnlyMoniker : public Base {
 public:
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* /*classId*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Load(IStream* /*stream*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Save(IStream* /*stream*/, BOOL /*clearDirty*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* /*size*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reduce(IBindCtx* /*context*/, DWORD /*howFar*/, IMoniker** /*toLeft*/,
                                   IMoniker** /*reduced*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ComposeWith(IMoniker* /*right*/, BOOL /*onlyIfNotGeneric*/,
                                        IMoniker** /*composite*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Enum(BOOL /*forward*/, IEnumMoniker** /*enumerator*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE IsEqual(IMoniker* /*other*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Hash(DWORD* /*hash*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsRunning(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                      IMoniker* /*newlyRunning*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                                FILETIME* /*time*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Inverse(IMoniker** /*inverse*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CommonPrefixWith(IMoniker* /*other*/, IMoniker** /*prefix*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RelativePathTo(IMoniker* /*other*/, IMoniker** /*relative*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                             LPOLESTR /*name*/, ULONG* /*eaten*/,
                                             IMoniker** /*out*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE IsSystemMoniker(DWORD* /*kind*/) override { return E_NOTIMPL; }
};

// An enumerator that is read from its start to its end.
template <class Base>
class ForwardEnumerator : public Base {
 public:
  HRESULT STDMETHODCALLTYPE Skip(ULONG /*count*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IEnumMoniker** /*clone*/) override { return E_NOTIMPL; }
};

// A topology that tells its nodes only.
template <class Base>
class NodesOnlyTopology : public Base {
 public:
  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) override { return None(count); }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD /*index*/, GUID* /*category*/) override {
    return kNothingThere;
  }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) override { return None(count); }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD /*index*/,
                                               KSTOPOLOGY_CONNECTION* /*connection*/) override {
    return kNothingThere;
  }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD /*node*/, WCHAR* /*name*/, DWORD /*size*/,
                                         DWORD* /*nameLength*/) override {
    return kNothingThere;
  }

 private:
  static constexpr auto kNothingThere = static_cast<HRESULT>(0x80070490U);

  static HRESULT None(DWORD* count) {
    if (count == nullptr) {
      return E_POINTER;
    }
    *count = 0;
    return S_OK;
  }
};

// A node's control that takes properties only.
template <class Base>
class PropertiesOnlyControl : public Base {
 public:
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD /*method*/, ULONG /*methodLength*/, LPVOID /*data*/,
                                     ULONG /*dataLength*/, ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT /*event*/, ULONG /*eventLength*/, LPVOID /*data*/,
                                    ULONG /*dataLength*/, ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }
};

// A mixer that has a level only.
template <class Base>
class LevelOnlyMixer : public Base {
 public:
  HRESULT STDMETHODCALLTYPE put_Enable(BOOL /*enable*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Enable(BOOL* /*enable*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Mono(BOOL /*mono*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Mono(BOOL* /*mono*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Pan(double /*pan*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Pan(double* /*pan*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Loudness(BOOL /*loudness*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Loudness(BOOL* /*loudness*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Treble(double /*treble*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Treble(double* /*treble*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_TrebleRange(double* /*range*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Bass(double /*bass*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Bass(double* /*bass*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_BassRange(double* /*range*/) override { return E_NOTIMPL; }
};

}  // namespace zem
