#include "simulator/com_microphone.h"

#include <utility>

#include "simulator/com_filter.h"

namespace zem::simulator {
namespace {

class MicrophoneFilter : public LevelOnlyMixer<StreamlessFilter<IAMAudioInputMixer>> {
 public:
  MicrophoneFilter(std::shared_ptr<Microphone> microphone, CallGate* gate)
      : microphone_(std::move(microphone)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    HRESULT entered = S_OK;
    if (iid == IID_IAMAudioInputMixer) {
      entered = Enter(gate_, "QueryInterface(IAMAudioInputMixer)");
      if (FAILED(entered)) {
        return entered;
      }
      if (!microphone_->mixer) {
        return E_NOINTERFACE;
      }
      *object = static_cast<IAMAudioInputMixer*>(this);
    } else if (iid == IID_IBaseFilter || iid == IID_IUnknown) {
      *object = static_cast<IBaseFilter*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return entered;
  }

  HRESULT STDMETHODCALLTYPE put_MixLevel(double level) override {
    const HRESULT entered = Enter(gate_, "put_MixLevel");
    if (SUCCEEDED(entered) && microphone_->onLevel) {
      return GatedResult(entered, microphone_->onLevel(level));
    }
    if (SUCCEEDED(entered)) {
      microphone_->mixLevel = level;
    }
    return entered;
  }

  HRESULT STDMETHODCALLTYPE get_MixLevel(double* level) override {
    if (level == nullptr) {
      return E_POINTER;
    }
    *level = microphone_->mixLevel;
    return S_OK;
  }

 private:
  std::shared_ptr<Microphone> microphone_;
  CallGate* gate_;
};

}  // namespace

IBaseFilter* MakeMicrophoneFilter(std::shared_ptr<Microphone> microphone, CallGate* gate) {
  return new MicrophoneFilter(std::move(microphone), gate);
}

}  // namespace zem::simulator
