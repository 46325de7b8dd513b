// One counted reference to a COM object, given back when the pointer goes out of scope.
#pragma once

#include <utility>

#include "platform/com.h"

namespace zem {

template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ~ComPtr() { Reset(); }

  ComPtr(ComPtr&& other) noexcept : object_(other.Detach()) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) {
      Reset();
      object_ = other.Detach();
    }
    return *this;
  }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;

  // Takes a further reference on `object`, which may be null.
  static ComPtr Share(T* object) {
    if (object != nullptr) {
      object->AddRef();
    }
    return Adopt(object);
  }

  // Takes over a reference that the caller holds on `object`, which may be null.
  static ComPtr Adopt(T* object) {
    ComPtr pointer;
    pointer.object_ = object;
    return pointer;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  // For a call that stores a new reference: releases the present one first.
  T** Receive() {
    Reset();
    return &object_;
  }
  void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }

  // Hands the reference over to the caller.
  [[nodiscard]] T* Detach() { return std::exchange(object_, nullptr); }

  void Reset() {
    if (T* object = Detach()) {
      object->Release();
    }
  }

 private:
  T* object_ = nullptr;
};

}  // namespace zem
