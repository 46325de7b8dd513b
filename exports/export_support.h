// What every export line uses: the handle's device, and the checks made before anything is sent.
//
// A pointer that goes on to an operation stands at the call as Required(pointer) or
// MaybeNull(pointer); a bare one does not compile.
#pragma once

#include <type_traits>

#include "device/device_handle.h"
#include "include/ZemUVCExtApi.h"
#include "platform/any_null.h"
#include "platform/result.h"

namespace zem {

// A pointer without which nothing is done: a null one gives kRefused.
template <class T>
struct Required {
  explicit Required(T* given) : pointer(given) {}
  T* pointer;
};

// A pointer that goes on as it is, null or not.
template <class T>
struct MaybeNull {
  explicit MaybeNull(T* given) : pointer(given) {}
  T* pointer;
};

template <class Argument>
bool IsMissing(const Argument& /*argument*/) {
  return false;
}
template <class T>
bool IsMissing(const Required<T>& argument) {
  return argument.pointer == nullptr;
}

// The argument as the operation takes it.
template <class Argument>
Argument Bare(const Argument& argument) {
  static_assert(!std::is_pointer_v<Argument>, "say Required(pointer) or MaybeNull(pointer)");
  return argument;
}
template <class T>
T* Bare(const Required<T>& argument) {
  return argument.pointer;
}
template <class T>
T* Bare(const MaybeNull<T>& argument) {
  return argument.pointer;
}

// Runs `operation(target, arguments...)`, unless a required pointer is null.
template <class Target, class Operation, class... Arguments>
ZemResult RunOn(Target& target, Operation operation, Arguments... arguments) {
  return (IsMissing(arguments) || ...) ? kRefused : operation(target, Bare(arguments)...);
}

// Runs `operation(filter, arguments...)` on the handle's device. A null handle gives kNoDevice, and
// then a required pointer that is null kRefused; either way nothing is sent.
template <class Operation, class... Arguments>
ZemResult OnDevice(void* handle, Operation operation, Arguments... arguments) {
  return handle != nullptr
             ? RunOn(static_cast<DeviceHandle*>(handle)->filter, operation, arguments...)
             : kNoDevice;
}

// The same for what needs the handle's whole record: runs `operation(device, arguments...)`.
template <class Operation, class... Arguments>
ZemResult OnHandle(void* handle, Operation operation, Arguments... arguments) {
  return handle != nullptr ? RunOn(*static_cast<DeviceHandle*>(handle), operation, arguments...)
                           : kNoDevice;
}

// The same for the calls without a handle: each access to a control opens the default camera and
// releases it again.
template <class Operation, class... Arguments>
ZemResult OnDefaultCamera(Operation operation, Arguments... arguments) {
  IBaseFilter* const none = nullptr;
  return RunOn(none, operation, arguments...);
}

}  // namespace zem
