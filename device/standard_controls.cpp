#include "device/standard_controls.h"

#include "platform/result.h"

namespace zem {
namespace {

// Defined for the two interfaces only: any other has no id here and does not compile.
template <class Controls>
struct InterfaceOf;
template <>
struct InterfaceOf<IAMVideoProcAmp> {
  static constexpr const GUID& kId = IID_IAMVideoProcAmp;
};
template <>
struct InterfaceOf<IAMCameraControl> {
  static constexpr const GUID& kId = IID_IAMCameraControl;
};

}  // namespace

template <class Controls>
ComPtr<Controls> AskForControls(IBaseFilter* filter) {
  ComPtr<Controls> controls;
  if (FAILED(filter->QueryInterface(InterfaceOf<Controls>::kId, controls.ReceiveVoid()))) {
    // Whatever a failed request left there is no reference.
    static_cast<void>(controls.Detach());
  }
  return controls;
}

template <class Controls>
HRESULT GetControl(IBaseFilter* filter, LONG property, LONG* value, LONG* flags) {
  const auto controls = AskForControls<Controls>(filter);
  return controls ? controls->Get(property, value, flags) : kDeviceRefused;
}

template <class Controls>
HRESULT SetControl(IBaseFilter* filter, LONG property, LONG value, LONG flags) {
  const auto controls = AskForControls<Controls>(filter);
  return controls ? controls->Set(property, value, flags) : kDeviceRefused;
}

template <class Controls>
HRESULT GetControlRange(IBaseFilter* filter, LONG property, LONG* minimum, LONG* maximum,
                        LONG* step, LONG* defaultValue, LONG* capsFlags) {
  const auto controls = AskForControls<Controls>(filter);
  return controls ? controls->GetRange(property, minimum, maximum, step, defaultValue, capsFlags)
                  : kDeviceRefused;
}

template ComPtr<IAMVideoProcAmp> AskForControls(IBaseFilter*);
template HRESULT GetControl<IAMVideoProcAmp>(IBaseFilter*, LONG, LONG*, LONG*);
template HRESULT SetControl<IAMVideoProcAmp>(IBaseFilter*, LONG, LONG, LONG);
template HRESULT GetControlRange<IAMVideoProcAmp>(IBaseFilter*, LONG, LONG*, LONG*, LONG*, LONG*,
                                                  LONG*);

template ComPtr<IAMCameraControl> AskForControls(IBaseFilter*);
template HRESULT GetControl<IAMCameraControl>(IBaseFilter*, LONG, LONG*, LONG*);
template HRESULT SetControl<IAMCameraControl>(IBaseFilter*, LONG, LONG, LONG);
template HRESULT GetControlRange<IAMCameraControl>(IBaseFilter*, LONG, LONG*, LONG*, LONG*, LONG*,
                                                   LONG*);

HRESULT GetVideoProcAmpNode(IBaseFilter* filter, void** videoProcAmp) {
  ComPtr<IKsTopologyInfo> topology;
  HRESULT result = filter->QueryInterface(IID_IKsTopologyInfo, topology.ReceiveVoid());
  if (FAILED(result)) {
    return result;
  }
  if (!topology) {
    return E_NOINTERFACE;
  }
  DWORD nodeCount = 0;
  if (result = topology->get_NumNodes(&nodeCount); FAILED(result)) {
    return result;
  }
  result = S_OK;
  for (DWORD node = 0; node < nodeCount; ++node) {
    result = topology->CreateNodeInstance(node, IID_IVideoProcAmp, videoProcAmp);
    if (*videoProcAmp != nullptr) {
      break;
    }
  }
  return result;
}

}  // namespace zem
