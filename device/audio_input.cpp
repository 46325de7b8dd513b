#include "device/audio_input.h"

#include "device/discovery.h"
#include "platform/com_ptr.h"
#include "platform/result.h"

namespace zem {

HRESULT OpenAudioInput(const wchar_t* displayName, IBaseFilter** audio) {
  if (audio == nullptr) {
    return kRefused;
  }
  if (displayName == nullptr) {
    return kFail;
  }
  IBaseFilter* found = nullptr;
  const HRESULT result =
      FindDeviceByDisplayName(&found, displayName, &CLSID_AudioInputDeviceCategory);
  if (FAILED(result)) {
    return result;
  }
  *audio = found;
  return S_OK;
}

void CloseAudioInput(IBaseFilter** audio) {
  (*audio)->Release();
  *audio = nullptr;
}

HRESULT SetAudioVolume(IBaseFilter* audio, int volume) {
  if (audio == nullptr) {
    return S_OK;
  }
  ComPtr<IAMAudioInputMixer> mixer;
  const HRESULT asked = audio->QueryInterface(IID_IAMAudioInputMixer, mixer.ReceiveVoid());
  if (FAILED(asked)) {
    return asked;
  }
  // Not clamped: what a level outside 0.0 to 1.0 means is the device's to decide.
  return mixer ? mixer->put_MixLevel(volume / 100.0) : E_NOINTERFACE;
}

}  // namespace zem
