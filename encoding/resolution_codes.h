// The one-byte codes by which the Skype unit and the vendor unit name a resolution.
#pragma once

#include <cstdint>

namespace zem {

// What a resolution is started with. The three know different resolutions, and two of them name one
// differently, deliberately: callers depend on it.
enum class StartKind { kMode, kIndexType0, kIndexType1 };

// The code of a resolution; 0 for one that this kind of start does not know.
std::uint8_t ResolutionCode(StartKind kind, std::uint32_t width, std::uint32_t height);

}  // namespace zem
