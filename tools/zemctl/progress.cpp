#include "tools/zemctl/progress.h"

#include <io.h>

#include <algorithm>
#include <cstdio>

namespace zemctl {

Progress::Progress(bool silent) : silent_(silent), terminal_(_isatty(_fileno(stderr)) != 0) {}

Progress::~Progress() {
  // An operation that was left half way ends its line.
  if (!silent_ && terminal_ && !phase_.empty()) {
    std::fputc('\n', stderr);
  }
}

void Progress::Begin(const std::string& phase) {
  Complete();
  phase_ = phase;
  percent_ = 0;
  Draw();
}

void Progress::Update(std::uint32_t percent) {
  const std::uint32_t reached = std::min<std::uint32_t>(percent, 100);
  if (phase_.empty() || reached <= percent_) {
    return;
  }
  const bool nextTenth = reached / 10 != percent_ / 10;
  percent_ = reached;
  if (terminal_ || nextTenth) {
    Draw();
  }
}

void Progress::Complete() {
  if (phase_.empty()) {
    return;
  }
  Update(100);
  if (!silent_ && terminal_) {
    std::fputc('\n', stderr);
  }
  phase_.clear();
}

void Progress::Draw() const {
  if (silent_) {
    return;
  }
  constexpr int kBarWidth = 40;
  const int filled = static_cast<int>(percent_) * kBarWidth / 100;
  if (terminal_) {
    std::fprintf(stderr, "\r%-12s [%s%s] %3u %%", phase_.c_str(),
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kBarWidth - filled), ' ').c_str(), percent_);
  } else {
    std::fprintf(stderr, "%s: %u %%\n", phase_.c_str(), percent_);
  }
  std::fflush(stderr);
}

}  // namespace zemctl
