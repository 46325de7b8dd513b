// The microphone: found by its display name, and its recording level.
#pragma once

#include "platform/com.h"

namespace zem {

// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h.

// Leaves *audio untouched on failure. COM is initialised for the calling thread and stays so.
HRESULT OpenAudioInput(const wchar_t* displayName, IBaseFilter** audio);

// REQUIRES: `audio` and *audio are not null. COM is deliberately left alone.
void CloseAudioInput(IBaseFilter** audio);

// `volume` in percent of the full level. A null `audio` is a success that does nothing.
HRESULT SetAudioVolume(IBaseFilter* audio, int volume);

}  // namespace zem
