#include "tools/zemctl/camera/long_wait.h"

#include <algorithm>
#include <utility>

namespace zemctl {
namespace {

// Shorter ones are between two looks of the library's own.
constexpr unsigned kPartMilliseconds = 500;

thread_local const LongWait* longWait = nullptr;

}  // namespace

LongWait::LongWait(std::function<bool()> isWorthwhile)
    : isWorthwhile_(std::move(isWorthwhile)), before_(std::exchange(longWait, this)) {}

LongWait::~LongWait() { longWait = before_; }

void LongWait::Sleep(unsigned milliseconds, const std::function<void(unsigned)>& wait) {
  if (longWait == nullptr || milliseconds < kPartMilliseconds) {
    wait(milliseconds);
    return;
  }
  while (milliseconds > 0 && longWait->isWorthwhile_()) {
    const unsigned part = std::min(milliseconds, kPartMilliseconds);
    wait(part);
    milliseconds -= part;
  }
}

}  // namespace zemctl
