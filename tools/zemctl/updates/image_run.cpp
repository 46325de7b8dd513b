#include "tools/zemctl/updates/image_run.h"

#include <algorithm>

namespace zemctl {
namespace {

// Shares of the whole: the rest is for what is verified afterwards.
constexpr Progress::Share kSend = {0, 70};
constexpr Progress::Share kBurn = {70, 90};

// Number of times that the wait after the burn order reports.
constexpr std::uint32_t kCountdown = 10;

}  // namespace

ImageRun::ImageRun(const ImageProcedure& procedure, std::span<const unsigned char> image,
                   const ImageParameters& parameters, Progress& progress)
    : procedure_(procedure),
      length_(static_cast<std::uint32_t>(image.size())),
      padded_(image.begin(), image.end()),
      parameters_(parameters),
      progress_(progress),
      image_(length_) {
  padded_.resize(padded_.size() + kLongestChunk);
}

CallOutcome ImageRun::Run(const Session& session) {
  progress_.Begin("send", kSend);
  session.SetObserver([this](const Transfer& transfer) { image_.OnTransfer(transfer); });
  CallOutcome outcome = Observe(
      session, procedure_, padded_.data(), length_,
      [](std::uint32_t value, std::uint64_t user) {
        reinterpret_cast<ImageRun*>(user)->OnValue(value);
      },
      reinterpret_cast<std::uint64_t>(this), parameters_);
  session.SetObserver(nullptr);
  return outcome;
}

void ImageRun::OnValue(std::uint32_t value) {
  if (!burning_) {
    progress_.Update(image_.sentPercent());
  }
  if (!burning_ && (image_.complete() || image_.ordered())) {
    burning_ = true;
    progress_.Begin("burn", kBurn);
  }
  if (image_.ordered()) {
    // ZEMAPI_UpdateFW_517x counts its wait down.
    progress_.Update((kCountdown - std::min(value, kCountdown)) * 100 / kCountdown);
  }
}

}  // namespace zemctl
