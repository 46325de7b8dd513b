// Counted COM objects, for whoever implements an interface of platform/com.h.
#pragma once

#include <atomic>

#include "platform/com.h"

namespace zem {

// IUnknown's counting for a class that implements `Interfaces`. Born with one reference.
template <class... Interfaces>
class CountedObject : public Interfaces... {
 public:
  CountedObject() = default;
  CountedObject(const CountedObject&) = delete;
  CountedObject& operator=(const CountedObject&) = delete;

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
  virtual ~CountedObject() = default;

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

}  // namespace zem
