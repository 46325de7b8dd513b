// The standard controls of a camera: its video processing amplifier (IAMVideoProcAmp) and its
// camera terminal (IAMCameraControl). `Controls` is one of these two interfaces.
//
// Each function makes one call on the interface and hands its arguments and result on unchanged; a
// device without the interface gives kDeviceRefused.
#pragma once

#include "platform/com_ptr.h"

namespace zem {

// The interface of the device's controls; null when it has none.
template <class Controls>
ComPtr<Controls> AskForControls(IBaseFilter* filter);

template <class Controls>
HRESULT GetControl(IBaseFilter* filter, LONG property, LONG* value, LONG* flags);

template <class Controls>
HRESULT SetControl(IBaseFilter* filter, LONG property, LONG value, LONG flags);

template <class Controls>
HRESULT GetControlRange(IBaseFilter* filter, LONG property, LONG* minimum, LONG* maximum,
                        LONG* step, LONG* defaultValue, LONG* capsFlags);

// Asks the nodes of the device, one after another, for IVideoProcAmp, until *videoProcAmp is not
// null; the caller's to release. The result is that of the last request, 0 when there are no nodes.
// *videoProcAmp is deliberately not cleared first.
HRESULT GetVideoProcAmpNode(IBaseFilter* filter, void** videoProcAmp);

}  // namespace zem
