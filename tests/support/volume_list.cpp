#include "tests/support/volume_list.h"

#include <utility>

#include "platform/simulated/simulated_platform.h"
#include "simulator/volume.h"

namespace zem::simulator {

using platform::simulated::VolumeAnswer;
using platform::simulated::VolumeRequest;

void ListVolume(std::shared_ptr<BootLoader> bootLoader) {
  const auto volume = std::make_shared<Volume>(std::move(bootLoader));
  platform::simulated::TheSystem().openVolume = [volume](const std::wstring& path) -> VolumeAnswer {
    std::uint32_t error = 0;
    void* const opened = volume->IsNamed(path) ? volume->Open(error) : nullptr;
    if (opened == nullptr) {
      return nullptr;
    }
    const std::shared_ptr<void> handle(opened, [volume](void* closed) { volume->Close(closed); });
    return [volume, handle](const VolumeRequest& request) -> std::optional<std::uint32_t> {
      auto* const block = static_cast<std::uint8_t*>(request.block);
      std::uint32_t returned = 0;
      const std::uint32_t failure =
          volume->Control(handle.get(), request.code, {block, request.inputLength},
                          {block, request.outputLength}, returned);
      return failure == 0 ? std::nullopt : std::optional(failure);
    };
  };
}

}  // namespace zem::simulator
