#include "simulator/usb/plugged_camera.h"

#include <utility>
#include <vector>

namespace zem::simulator::usb {

PluggedCamera::PluggedCamera(std::optional<CameraOptions> camera,
                             std::optional<BootLoaderOptions> bootLoader)
    : options_(std::move(camera)) {
  if (!bootLoader) {
    StartCamera();
    return;
  }
  bootLoader_ = std::make_shared<BootLoader>(*bootLoader);
  bootLoader_->SetStageObserver([this](BootStage stage) { FollowStage(stage); });
  FollowStage(bootLoader_->stage());
}

PluggedCamera::Form PluggedCamera::form() const {
  if (device() == nullptr) {
    return Form::kAway;
  }
  return storage_ != nullptr ? Form::kStorage : Form::kCamera;
}

std::shared_ptr<UsbDevice> PluggedCamera::device() const {
  return device_ != nullptr && !device_->isGone() ? device_ : nullptr;
}

void PluggedCamera::Save() {
  if (camera_ != nullptr) {
    SaveState(*options_, *camera_);
  }
}

// As if it had just been plugged in, with what its state file keeps.
void PluggedCamera::StartCamera() {
  device_.reset();
  if (!options_) {
    return;
  }
  std::function<void()> enterRomBoot;
  if (bootLoader_ != nullptr) {
    enterRomBoot = [bootLoader = bootLoader_.get()] { bootLoader->EnterRomBoot(); };
  }
  camera_ = RestartCamera(*options_, camera_.get(), std::move(enterRomBoot));
  camera_->SetReplugObserver([this] { Replug(); });
  const auto device = std::make_shared<UsbCamera>(*options_, camera_);
  device->SetStreamObserver([this](bool runs) {
    if (streamObserver_) {
      streamObserver_(runs);
    }
  });
  device_ = device;
}

void PluggedCamera::FollowStage(BootStage stage) {
  if (storage_ != nullptr) {
    storage_->Leave();
    storage_.reset();
  } else if (camera_ != nullptr) {
    camera_->Unplug();
  }
  device_.reset();
  switch (stage) {
    case BootStage::kCamera:
      StartCamera();
      break;
    case BootStage::kBootLoader:
    case BootStage::kZemStorage:
      storage_ = std::make_shared<UsbBootLoader>(options_.value_or(CameraOptions()), bootLoader_);
      device_ = storage_;
      break;
    case BootStage::kGone:
      break;
  }
}

// It comes back once.
void PluggedCamera::Replug() {
  ForgetReplug(*options_);
  StartCamera();
}

}  // namespace zem::simulator::usb
