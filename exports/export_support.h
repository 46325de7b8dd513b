// What every export line uses: the handle's device, and the checks made before anything is sent.
#pragma once

#include <type_traits>

#include "device/device_handle.h"
#include "include/ZemUVCExtApi.h"
#include "platform/result.h"

namespace zem {

// Whether a pointer among the arguments is null. A null path is passed over: it stands for a file
// that cannot be opened.
template <class... Arguments>
bool AnyNull(Arguments... arguments) {
  [[maybe_unused]] const auto isNull = [](auto argument) {
    using Argument = decltype(argument);
    if constexpr (std::is_pointer_v<Argument> && !std::is_same_v<Argument, const wchar_t*>) {
      return argument == nullptr;
    } else {
      return false;
    }
  };
  return (isNull(arguments) || ...);
}

// Runs `operation(filter, arguments...)`, unless a null pointer among the arguments makes it
// kRefused.
template <class Operation, class... Arguments>
ZemResult OnFilter(IBaseFilter* filter, Operation operation, Arguments... arguments) {
  return AnyNull(arguments...) ? kRefused : operation(filter, arguments...);
}

// Runs `operation(filter, arguments...)` on the handle's device. A null handle gives kNoDevice, and
// then a null pointer among the arguments kRefused; either way nothing is sent.
template <class Operation, class... Arguments>
ZemResult OnDevice(void* handle, Operation operation, Arguments... arguments) {
  if (handle == nullptr) {
    return kNoDevice;
  }
  return OnFilter(static_cast<DeviceHandle*>(handle)->filter, operation, arguments...);
}

// The same for what needs the handle's whole record: runs `operation(device, arguments...)`.
template <class Operation, class... Arguments>
ZemResult OnHandle(void* handle, Operation operation, Arguments... arguments) {
  return OnDevice(
      handle,
      [handle, operation](IBaseFilter* /*filter*/, Arguments... checked) {
        return operation(*static_cast<DeviceHandle*>(handle), checked...);
      },
      arguments...);
}

// The same for the calls without a handle: each access to a control opens the default camera and
// releases it again.
template <class Operation, class... Arguments>
ZemResult OnDefaultCamera(Operation operation, Arguments... arguments) {
  return OnFilter(nullptr, operation, arguments...);
}

}  // namespace zem
