// Several pieces of work at once.
#pragma once

#include <functional>
#include <vector>

namespace zemctl {

// Runs each on a thread of its own, with COM, and comes back when all are done. They throw nothing.
void RunSideBySide(const std::vector<std::function<void()>>& work);

}  // namespace zemctl
