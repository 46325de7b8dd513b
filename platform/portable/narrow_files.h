// Files of a system whose paths are UTF-8.
#pragma once

#include <cstdio>

namespace zem::platform {

// std::fopen by a wide path and a wide mode. Null also for a path or mode that is too long.
std::FILE* OpenNarrow(const wchar_t* path, const wchar_t* mode);

}  // namespace zem::platform
