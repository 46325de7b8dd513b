// A filter without streams: what every simulated device is to the system besides its own
// interfaces.
#pragma once

#include "platform/com_unused.h"
#include "simulator/com_object.h"

namespace zem::simulator {

template <class... Interfaces>
using StreamlessFilter = zem::StreamlessFilter<ComObject<IBaseFilter, Interfaces...>>;

}  // namespace zem::simulator
