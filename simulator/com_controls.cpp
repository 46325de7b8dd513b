#include "simulator/com_controls.h"

#include <string>
#include <utility>

#include "simulator/com_camera.h"

namespace zem::simulator {
namespace {

// Either interface has these three methods in this order.
template <class Interface, ControlFamily family>
class ControlInterface : public ComObject<Interface> {
 public:
  ControlInterface(std::shared_ptr<Camera> camera, CallGate* gate, const char* name,
                   const GUID& iid)
      : camera_(std::move(camera)), gate_(gate), name_(name), iid_(iid) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<Interface>(this, iid_, iid, object);
  }

  HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                     LONG* defaultValue, LONG* flags) override {
    const HRESULT entered = Pass("GetRange");
    if (FAILED(entered)) {
      return entered;
    }
    if (AnyNull(minimum, maximum, step, defaultValue, flags)) {
      return E_POINTER;
    }
    ControlRange range;
    const Outcome outcome = camera_->GetControlRange(family, property, range);
    if (outcome == Outcome::kDone) {
      *minimum = range.minimum;
      *maximum = range.maximum;
      *step = range.step;
      *defaultValue = range.defaultValue;
      *flags = range.flags;
    }
    return GatedResult(entered, ResultOf(outcome));
  }

  HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
    const HRESULT entered = Pass("Set");
    if (FAILED(entered)) {
      return entered;
    }
    return GatedResult(entered, ResultOf(camera_->SetControl(family, property, {value, flags})));
  }

  HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
    const HRESULT entered = Pass("Get");
    if (FAILED(entered)) {
      return entered;
    }
    if (AnyNull(value, flags)) {
      return E_POINTER;
    }
    ControlSetting setting;
    const Outcome outcome = camera_->GetControl(family, property, setting);
    if (outcome == Outcome::kDone) {
      *value = setting.value;
      *flags = setting.flags;
    }
    return GatedResult(entered, ResultOf(outcome));
  }

 private:
  HRESULT Pass(const char* method) const {
    return Enter(gate_, (std::string(name_) + "::" + method).c_str());
  }

  std::shared_ptr<Camera> camera_;
  CallGate* gate_;
  const char* name_;
  GUID iid_;
};

template <class Interface, ControlFamily family>
HRESULT Make(const std::shared_ptr<Camera>& camera, CallGate* gate, const char* name,
             const GUID& iid, void** object) {
  const std::string call = std::string("QueryInterface(") + name + ")";
  const HRESULT entered = Enter(gate, call.c_str());
  if (FAILED(entered)) {
    return entered;
  }
  if (!camera->HasControls(family)) {
    return E_NOINTERFACE;
  }
  *object =
      static_cast<Interface*>(new ControlInterface<Interface, family>(camera, gate, name, iid));
  return entered;
}

}  // namespace

HRESULT QueryControls(const std::shared_ptr<Camera>& camera, CallGate* gate, REFIID iid,
                      void** object) {
  *object = nullptr;
  if (iid == IID_IAMVideoProcAmp) {
    return Make<IAMVideoProcAmp, ControlFamily::kVideoProcessing>(camera, gate, "IAMVideoProcAmp",
                                                                  iid, object);
  }
  if (iid == IID_IAMCameraControl) {
    return Make<IAMCameraControl, ControlFamily::kCameraTerminal>(camera, gate, "IAMCameraControl",
                                                                  iid, object);
  }
  return E_NOINTERFACE;
}

}  // namespace zem::simulator
