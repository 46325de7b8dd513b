// A camera on the stack that has everything: nodes, the standard controls, a microphone's level.
// Whoever derives from it answers each request by hand.
#pragma once

#include <array>

#include "tests/support/bare_camera.h"

namespace zem::testing {

// One request to a standard control, or of a level.
struct StandardRequest {
  enum class Target { kAmplifier, kTerminal, kMixer };
  enum class Way { kGet, kSet, kRange };

  Target target;
  Way way;
  LONG property;
  // What is set: value and flags.
  std::array<LONG, 2> given = {};
  // Where what is read goes, null for each that there is not.
  std::array<LONG*, 5> places = {};
};

class WholeCamera : public BareCamera {
 public:
  WholeCamera() {
    amplifier_.camera = this;
    terminal_.camera = this;
    mixer_.camera = this;
  }

  virtual HRESULT Standard(const StandardRequest& request) = 0;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (iid == IID_IKsTopologyInfo) {
      *object = static_cast<IKsTopologyInfo*>(this);
    } else if (iid == IID_IAMVideoProcAmp) {
      *object = static_cast<IAMVideoProcAmp*>(&amplifier_);
    } else if (iid == IID_IAMCameraControl) {
      *object = static_cast<IAMCameraControl*>(&terminal_);
    } else if (iid == IID_IAMAudioInputMixer) {
      *object = static_cast<IAMAudioInputMixer*>(&mixer_);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }

 private:
  template <class Interface>
  struct Part : Interface {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
      return camera->QueryInterface(iid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return camera->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return camera->Release(); }
    WholeCamera* camera = nullptr;
  };

  template <class Interface, StandardRequest::Target kTarget>
  struct Controls : Part<Interface> {
    HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                       LONG* defaultValue, LONG* capsFlags) override {
      return this->camera->Standard({kTarget,
                                     StandardRequest::Way::kRange,
                                     property,
                                     {},
                                     {minimum, maximum, step, defaultValue, capsFlags}});
    }
    HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
      return this->camera->Standard(
          {kTarget, StandardRequest::Way::kSet, property, {value, flags}});
    }
    HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
      return this->camera->Standard(
          {kTarget, StandardRequest::Way::kGet, property, {}, {value, flags}});
    }
  };

  struct Mixer : LevelOnlyMixer<Part<IAMAudioInputMixer>> {
    HRESULT STDMETHODCALLTYPE put_MixLevel(double level) override {
      return this->camera->Standard({StandardRequest::Target::kMixer,
                                     StandardRequest::Way::kSet,
                                     0,
                                     {static_cast<LONG>(level * 100), 0}});
    }
    HRESULT STDMETHODCALLTYPE get_MixLevel(double* /*level*/) override { return E_NOTIMPL; }
  };

  Controls<IAMVideoProcAmp, StandardRequest::Target::kAmplifier> amplifier_;
  Controls<IAMCameraControl, StandardRequest::Target::kTerminal> terminal_;
  Mixer mixer_;
};

}  // namespace zem::testing
