#include "simulator/simulated_system.h"

#include <array>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>

#include "simulator/com_camera.h"

namespace zem::simulator {
namespace {

// The part of a real camera's device path that its display name and path share.
std::wstring InstanceName(const CameraOptions& options, unsigned usbInterface, std::size_t camera) {
  std::array<char, 128> name = {};
  std::snprintf(name.data(), name.size(), "usb#vid_%04x&pid_%04x&mi_%02x#zem-simulator&%u",
                unsigned{options.vendorId}, unsigned{options.productId}, usbInterface,
                static_cast<unsigned>(camera));
  const std::string_view text = name.data();
  return {text.begin(), text.end()};
}

}  // namespace

void SimulatedSystem::Start(const Options& options, std::unique_ptr<DeviceListing> listing,
                            const ListVolumes& listVolumes) {
  if (options.cameras.size() > kMostCameras) {
    throw std::invalid_argument("more cameras than can be simulated at once");
  }
  lastError_.clear();
  listing_ = std::move(listing);
  for (const CameraOptions& camera : options.cameras) {
    cameras_.push_back(Prepare(camera, cameras_.size()));
  }
  StartBootLoaders(options, listVolumes);
  for (std::size_t camera = 0; camera < cameras_.size(); ++camera) {
    const auto& bootLoader = cameras_[camera].bootLoader;
    const bool isAway = bootLoader && bootLoader->stage() != BootStage::kCamera;
    if (!isAway && FAILED(ListCamera(camera))) {
      throw std::runtime_error("the camera could not be written to the registry");
    }
  }
}

void SimulatedSystem::Stop() {
  lastError_.clear();
  for (const RunningCamera& running : TakeAway()) {
    if (running.camera) {
      SaveState(running.options, *running.camera);
    }
  }
}

void SimulatedSystem::Abandon() { TakeAway(); }

void SimulatedSystem::AssumeDefaultCamera(std::unique_ptr<DeviceListing> listing) {
  listing_ = std::move(listing);
  RunningCamera running = Prepare({}, 0);
  running.camera = MakeCamera({});
  running.microphone = std::make_shared<Microphone>();
  cameras_.push_back(std::move(running));
}

MakeFilter SimulatedSystem::CameraFilter(std::size_t camera) const {
  if (camera >= cameras_.size() || !cameras_[camera].camera) {
    return nullptr;
  }
  return [model = cameras_[camera].camera] { return MakeCameraFilter(model, nullptr); };
}

MakeFilter SimulatedSystem::MicrophoneFilter(std::size_t camera) const {
  if (camera >= cameras_.size() || !cameras_[camera].microphone) {
    return nullptr;
  }
  return [model = cameras_[camera].microphone] { return MakeMicrophoneFilter(model, nullptr); };
}

// A camera and its microphone, not listed yet.
SimulatedSystem::RunningCamera SimulatedSystem::Prepare(const CameraOptions& options,
                                                        std::size_t camera) {
  constexpr unsigned kVideoInterface = 0;
  constexpr unsigned kAudioInterface = 2;
  return {options, InstanceName(options, kVideoInterface, camera),
          InstanceName(options, kAudioInterface, camera)};
}

void SimulatedSystem::StartBootLoaders(const Options& options, const ListVolumes& listVolumes) {
  BootLoaders bootLoaders;
  for (const auto& [camera, bootLoaderOptions] : options.bootLoaders) {
    bootLoaders.push_back(std::make_shared<BootLoader>(bootLoaderOptions));
    if (camera < cameras_.size()) {
      cameras_[camera].bootLoader = bootLoaders.back();
      bootLoaders.back()->SetStageObserver(
          [this, camera = camera](BootStage stage) { FollowStage(camera, stage); });
    }
  }
  volumes_ = listVolumes(bootLoaders);
}

// Puts a camera into the list as a new one, as if it had just been plugged in. Throws when its
// state file cannot be read or written.
HRESULT SimulatedSystem::ListCamera(std::size_t camera) {
  RunningCamera& running = cameras_[camera];
  std::function<void()> enterRomBoot;
  if (running.bootLoader) {
    enterRomBoot = [bootLoader = running.bootLoader] { bootLoader->EnterRomBoot(); };
  }
  running.camera = RestartCamera(running.options, running.camera.get(), std::move(enterRomBoot));
  const HRESULT result =
      listing_->List({camera, CLSID_VideoInputDeviceCategory, running.instanceName,
                      running.options.name, CameraFilter(camera)});
  if (FAILED(result)) {
    return result;
  }
  running.camera->SetUnplugObserver(
      [this, instanceName = running.instanceName, microphoneName = running.microphoneName] {
        Unlist(instanceName, microphoneName);
      });
  running.camera->SetReplugObserver([this, camera] { Replug(camera); });
  return ListMicrophone(camera);
}

HRESULT SimulatedSystem::ListMicrophone(std::size_t camera) {
  RunningCamera& running = cameras_[camera];
  if (!running.options.microphone) {
    return S_OK;
  }
  running.microphone = std::make_shared<Microphone>(Microphone{running.options.mixer});
  return listing_->List({camera, CLSID_AudioInputDeviceCategory, running.microphoneName,
                         running.options.name + " Microphone", MicrophoneFilter(camera)});
}

// In the middle of a host's request: nothing may be thrown into it.
void SimulatedSystem::ListAgain(std::size_t camera) {
  try {
    static_cast<void>(ListCamera(camera));
  } catch (const std::exception& error) {
    lastError_ = error.what();
  }
}

// A camera that was unplugged comes back, once.
void SimulatedSystem::Replug(std::size_t camera) {
  ForgetReplug(cameras_[camera].options);
  ListAgain(camera);
}

// A camera is a video device only while its firmware runs.
void SimulatedSystem::FollowStage(std::size_t camera, BootStage stage) {
  if (stage == BootStage::kCamera) {
    ListAgain(camera);
  } else if (cameras_[camera].camera) {
    cameras_[camera].camera->Unplug();
  }
}

void SimulatedSystem::Unlist(const std::wstring& cameraName, const std::wstring& microphoneName) {
  if (listing_) {
    listing_->Unlist(CLSID_VideoInputDeviceCategory, cameraName);
    listing_->Unlist(CLSID_AudioInputDeviceCategory, microphoneName);
  }
}

std::vector<SimulatedSystem::RunningCamera> SimulatedSystem::TakeAway() {
  volumes_.reset();
  std::vector<RunningCamera> cameras = std::exchange(cameras_, {});
  for (std::size_t camera = 0; camera < cameras.size(); ++camera) {
    const RunningCamera& running = cameras[camera];
    Unlist(running.instanceName, running.microphoneName);
    if (running.bootLoader) {
      running.bootLoader->SetStageObserver(nullptr);
    }
    if (running.camera) {
      // A handle to it may be open still, and the next start's cameras may have its name.
      running.camera->SetUnplugObserver(nullptr);
      running.camera->SetReplugObserver(nullptr);
    }
    if (listing_) {
      listing_->Forget(camera);
    }
  }
  listing_.reset();
  return cameras;
}

}  // namespace zem::simulator
