// What every export line uses: the handle's device, and the checks made before anything is sent.
#pragma once

#include <type_traits>

#include "device/device_handle.h"
#include "include/ZemUVCExtApi.h"
#include "platform/result.h"

namespace zem {

// Runs `operation(filter, arguments...)` on the handle's device. A null handle gives kNoDevice, and
// then a null pointer among the arguments kRefused; either way nothing is sent.
template <class Operation, class... Arguments>
ZemResult OnDevice(void* handle, Operation operation, Arguments... arguments) {
  if (handle == nullptr) {
    return kNoDevice;
  }
  [[maybe_unused]] const auto isNull = [](auto argument) {
    if constexpr (std::is_pointer_v<decltype(argument)>) {
      return argument == nullptr;
    } else {
      return false;
    }
  };
  if ((isNull(arguments) || ...)) {
    return kRefused;
  }
  return operation(static_cast<DeviceHandle*>(handle)->filter, arguments...);
}

}  // namespace zem
