#include "tools/zemctl/frame/progress.h"

#include <algorithm>
#include <cstdio>

#include "tools/zemctl/frame/console.h"

namespace zemctl {

Progress::Progress(bool silent, const std::string& label)
    : silent_(silent),
      label_(label.empty() ? "" : label + ": "),
      terminal_(label.empty() && IsTerminal(stderr)) {}

Progress::~Progress() {
  // An operation that was left half way ends its line.
  if (!silent_ && terminal_ && !phase_.empty()) {
    std::fputc('\n', stderr);
  }
}

void Progress::Begin(const std::string& phase, Share share) {
  if (share.from == 0) {
    Complete();
  } else {
    Reach(share_.to);
  }
  phase_ = phase;
  share_ = share;
  percent_ = share.from;
  bytes_.clear();
  Draw();
}

void Progress::Update(std::uint32_t percent) {
  Reach(share_.from + std::min<std::uint32_t>(percent, 100) * (share_.to - share_.from) / 100);
}

void Progress::UpdateBytes(std::uint64_t done, std::uint64_t whole) {
  bytes_ = " (" + std::to_string(done) + " of " + std::to_string(whole) + " bytes)";
  Update(whole == 0 ? 0 : static_cast<std::uint32_t>(done * 100 / whole));
}

void Progress::Reach(std::uint32_t percent) {
  if (phase_.empty() || percent <= percent_) {
    return;
  }
  const bool nextTenth = percent / 10 != percent_ / 10;
  percent_ = percent;
  if (terminal_ || nextTenth) {
    Draw();
  }
}

void Progress::Complete() {
  if (phase_.empty()) {
    return;
  }
  Reach(share_.to);
  if (!silent_ && terminal_) {
    std::fputc('\n', stderr);
  }
  phase_.clear();
}

void Progress::Say(const std::string& sentence) {
  if (!silent_) {
    std::fprintf(stderr, "%s%s%s\n", terminal_ && !phase_.empty() ? "\n" : "", label_.c_str(),
                 sentence.c_str());
    std::fflush(stderr);
  }
}

void Progress::Draw() const {
  if (silent_) {
    return;
  }
  constexpr int kBarWidth = 40;
  const int filled = static_cast<int>(percent_) * kBarWidth / 100;
  if (terminal_) {
    std::fprintf(stderr, "\r%-12s [%s%s] %3u %%%s", phase_.c_str(),
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kBarWidth - filled), ' ').c_str(), percent_,
                 bytes_.c_str());
  } else {
    std::fprintf(stderr, "%s%s: %u %%%s\n", label_.c_str(), phase_.c_str(), percent_,
                 bytes_.c_str());
  }
  std::fflush(stderr);
}

}  // namespace zemctl
