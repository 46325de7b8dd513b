// The interfaces of platform/com.h for systems without the Windows SDK: the same names, the same
// method order, and nothing that the library does not use.
#pragma once

#include <cstdint>
#include <cstring>

#include "include/ZemUVCExtApi.h"

#define STDMETHODCALLTYPE

using HRESULT = int32_t;
using LONG = int32_t;
using ULONG = uint32_t;
using DWORD = uint32_t;
using WORD = uint16_t;
using BOOL = int32_t;
using LONGLONG = int64_t;
using WCHAR = wchar_t;
using OLECHAR = wchar_t;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPOLESTR = wchar_t*;
using LPCOLESTR = const wchar_t*;
using BSTR = wchar_t*;
using LPVOID = void*;
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using VARTYPE = uint16_t;

inline bool operator==(const GUID& left, const GUID& right) {
  return std::memcmp(&left, &right, sizeof(GUID)) == 0;
}

// NOLINTBEGIN(bugprone-macro-parentheses)
#define SUCCEEDED(result) (static_cast<HRESULT>(result) >= 0)
#define FAILED(result) (static_cast<HRESULT>(result) < 0)
// NOLINTEND(bugprone-macro-parentheses)

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_BSTR = 8;

struct VARIANT {
  VARTYPE vt;
  BSTR bstrVal;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

union ULARGE_INTEGER {
  uint64_t QuadPart;
};

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;

 protected:
  ~IUnknown() = default;
};

// ---- Device enumeration ----

struct IBindCtx;
struct IEnumMoniker;
struct IErrorLog;
struct IStream;

struct IPersist : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) = 0;
};

struct IPersistStream : IPersist {
  virtual HRESULT STDMETHODCALLTYPE IsDirty() = 0;
  virtual HRESULT STDMETHODCALLTYPE Load(IStream* stream) = 0;
  virtual HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) = 0;
};

struct IMoniker : IPersistStream {
  virtual HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx* context, IMoniker* toLeft, REFIID iid,
                                                 void** object) = 0;
  virtual HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx* context, IMoniker* toLeft, REFIID iid,
                                                  void** object) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reduce(IBindCtx* context, DWORD howFar, IMoniker** toLeft,
                                           IMoniker** reduced) = 0;
  virtual HRESULT STDMETHODCALLTYPE ComposeWith(IMoniker* right, BOOL onlyIfNotGeneric,
                                                IMoniker** composite) = 0;
  virtual HRESULT STDMETHODCALLTYPE Enum(BOOL forward, IEnumMoniker** enumerator) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsEqual(IMoniker* other) = 0;
  virtual HRESULT STDMETHODCALLTYPE Hash(DWORD* hash) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsRunning(IBindCtx* context, IMoniker* toLeft,
                                              IMoniker* newlyRunning) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IBindCtx* context, IMoniker* toLeft,
                                                        FILETIME* time) = 0;
  virtual HRESULT STDMETHODCALLTYPE Inverse(IMoniker** inverse) = 0;
  virtual HRESULT STDMETHODCALLTYPE CommonPrefixWith(IMoniker* other, IMoniker** prefix) = 0;
  virtual HRESULT STDMETHODCALLTYPE RelativePathTo(IMoniker* other, IMoniker** relative) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx* context, IMoniker* toLeft,
                                                   LPOLESTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx* context, IMoniker* toLeft,
                                                     LPOLESTR name, ULONG* eaten,
                                                     IMoniker** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsSystemMoniker(DWORD* kind) = 0;
};

struct IEnumMoniker : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, IMoniker** monikers, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumMoniker** clone) = 0;
};

struct ICreateDevEnum : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID category,
                                                          IEnumMoniker** enumerator,
                                                          DWORD flags) = 0;
};

struct IPropertyBag : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog* log) = 0;
  virtual HRESULT STDMETHODCALLTYPE Write(LPCOLESTR name, VARIANT* value) = 0;
};

// ---- The camera ----

struct IEnumPins;
struct IFilterGraph;
struct IPin;
struct IReferenceClock;
struct FILTER_INFO;
using REFERENCE_TIME = LONGLONG;
enum FILTER_STATE { State_Stopped, State_Paused, State_Running };

struct IMediaFilter : IPersist {
  virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
  virtual HRESULT STDMETHODCALLTYPE Pause() = 0;
  virtual HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetState(DWORD timeoutMs, FILTER_STATE* state) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) = 0;
};

struct IBaseFilter : IMediaFilter {
  virtual HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) = 0;
  virtual HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) = 0;
};

struct KSPROPERTY {
  GUID Set;
  ULONG Id;
  ULONG Flags;
};
using PKSPROPERTY = KSPROPERTY*;
using PKSMETHOD = KSPROPERTY*;
using PKSEVENT = KSPROPERTY*;

struct KSP_NODE {
  KSPROPERTY Property;
  ULONG NodeId;
  ULONG Reserved;
};

struct IKsControl : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG propertyLength,
                                               LPVOID data, ULONG dataLength,
                                               ULONG* bytesReturned) = 0;
  virtual HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG methodLength, LPVOID data,
                                             ULONG dataLength, ULONG* bytesReturned) = 0;
  virtual HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG eventLength, LPVOID data,
                                            ULONG dataLength, ULONG* bytesReturned) = 0;
};

struct KSTOPOLOGY_CONNECTION;

// ---- Standard controls ----

struct IAMVideoProcAmp : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum,
                                             LONG* step, LONG* defaultValue, LONG* capsFlags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) = 0;
};

struct IAMCameraControl : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum,
                                             LONG* step, LONG* defaultValue, LONG* capsFlags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) = 0;
};

struct IAMAudioInputMixer : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE put_Enable(BOOL enable) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Enable(BOOL* enable) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Mono(BOOL mono) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Mono(BOOL* mono) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_MixLevel(double level) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MixLevel(double* level) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Pan(double pan) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Pan(double* pan) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Loudness(BOOL loudness) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Loudness(BOOL* loudness) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Treble(double treble) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Treble(double* treble) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_TrebleRange(double* range) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Bass(double bass) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Bass(double* bass) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BassRange(double* range) = 0;
};

#include "platform/ks_topology_info.h"
