// Time, for what waits. In a replay nothing is waited for: time goes on by as much at once.
#pragma once

#include <cstdint>

namespace zemctl {

// Milliseconds of a clock that never goes back.
std::uint64_t SteadyClock();

// The same; in a replay what was waited for.
std::uint64_t WaitingClock();

void Wait(std::uint32_t milliseconds);

}  // namespace zemctl
