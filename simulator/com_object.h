// Counted objects and the gate that every call on them passes.
#pragma once

#include <atomic>

#include "platform/com.h"

namespace zem::simulator {

// Sees each call that a host makes on the simulated system's objects, before it is carried out, and
// may refuse it. Sees the result of each transfer, and may change it.
class CallGate {
 public:
  virtual ~CallGate() = default;
  // `call` is the method's name. A negative result refuses the call and is what the host gets; a
  // positive one is what it gets instead of 0.
  virtual HRESULT Enter(const char* call) = 0;

  // A transfer to or from a control of an extension unit has come to `result`; what is returned is
  // what the host gets.
  virtual HRESULT EndTransfer(HRESULT result) { return result; }
};

// Passes the gate, if there is one.
inline HRESULT Enter(CallGate* gate, const char* call) {
  return gate != nullptr ? gate->Enter(call) : S_OK;
}

inline HRESULT EndTransfer(CallGate* gate, HRESULT result) {
  return gate != nullptr ? gate->EndTransfer(result) : result;
}

// The result of a call that has passed the gate with `entered`: the call's own, but what the gate
// said instead of 0.
inline HRESULT GatedResult(HRESULT entered, HRESULT own) { return own == S_OK ? entered : own; }

// Whether the host gave a null pointer where the object has to write.
template <class... Pointers>
bool AnyNull(const Pointers*... pointers) {
  return ((pointers == nullptr) || ...);
}

// Objects that have not been released for the last time.
inline std::atomic<int> liveComObjects = 0;

// IUnknown's counting for a class that implements `Interfaces`. Born with one reference.
template <class... Interfaces>
class ComObject : public Interfaces... {
 public:
  ComObject() { ++liveComObjects; }
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  ULONG references() const { return references_; }

 protected:
  virtual ~ComObject() { --liveComObjects; }

 private:
  std::atomic<ULONG> references_ = 1;
};

// QueryInterface for an object with one interface besides IUnknown.
template <class Interface, class Object>
HRESULT QueryOne(Object* self, const GUID& own, REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  const bool known = iid == own || iid == IID_IUnknown;
  *object = known ? static_cast<Interface*>(self) : nullptr;
  if (!known) {
    return E_NOINTERFACE;
  }
  self->AddRef();
  return S_OK;
}

}  // namespace zem::simulator
