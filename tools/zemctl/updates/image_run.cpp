#include "tools/zemctl/updates/image_run.h"

#include <windows.h>

namespace zemctl {
namespace {

// Shares of the whole: the rest is for what is verified afterwards.
constexpr Progress::Share kSend = {0, 70};
constexpr Progress::Share kBurn = {70, 90};

// How often it is looked whether the person wants to stop while the library waits.
constexpr UINT kTimerMilliseconds = 100;

}  // namespace

ImageRun* ImageRun::running = nullptr;

ImageRun::ImageRun(const ImageProcedure& procedure, std::span<const unsigned char> image,
                   const ImageParameters& parameters, Progress& progress,
                   std::function<void(const ImageWatch&)> stopped)
    : procedure_(procedure),
      length_(static_cast<std::uint32_t>(image.size())),
      padded_(image.begin(), image.end()),
      parameters_(parameters),
      progress_(progress),
      stopped_(std::move(stopped)),
      watch_(length_) {
  padded_.resize(padded_.size() + kLongestChunk);
}

ZemResult ImageRun::Run(void* handle) {
  progress_.Begin("send", kSend);
  // The library dispatches this thread's messages while it polls; a timer's is one.
  running = this;
  const UINT_PTR timer = SetTimer(nullptr, 0, kTimerMilliseconds,
                                  [](HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/,
                                     DWORD /*time*/) { running->OnTimer(); });
  const ZemResult result = procedure_.run(
      handle, padded_.data(), length_,
      [](std::uint32_t value, std::uint64_t user) {
        reinterpret_cast<ImageRun*>(user)->OnValue(value);
      },
      reinterpret_cast<std::uint64_t>(this), parameters_);
  KillTimer(nullptr, timer);
  running = nullptr;
  return result;
}

void ImageRun::OnValue(std::uint32_t value) {
  watch_.OnValue(value);
  if (interrupt_.requested()) {
    stopped_(watch_);
  }
  if (!burning_) {
    progress_.Update(watch_.sentPercent());
  }
  if (!burning_ && (watch_.complete() || watch_.waiting())) {
    burning_ = true;
    progress_.Begin("burn", kBurn);
  }
  progress_.Update(burning_ ? watch_.waitedPercent() : watch_.sentPercent());
}

void ImageRun::OnTimer() {
  // While the image is being sent its own progress is the place to stop.
  if (burning_ && interrupt_.requested()) {
    stopped_(watch_);
  }
}

}  // namespace zemctl
