// What passed between hosts and a simulated camera, one JSON object a line.
#pragma once

#include <memory>
#include <string>

#include "simulator/camera.h"

namespace zem::simulator {

// Appends each of the camera's transfers to the file at `path` (UTF-8), from now on and as long as
// the camera lives; each is in the file before the host goes on. Throws std::invalid_argument when
// the file cannot be opened.
void LogTransfers(Camera& camera, const std::string& path);

}  // namespace zem::simulator
