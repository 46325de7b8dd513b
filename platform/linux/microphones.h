// The sound cards of this machine that record, and their recording level over ALSA's control
// interface.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "platform/com.h"
#include "platform/linux/device_file.h"
#include "platform/linux/usb_device.h"

namespace zem::platform {

struct Microphone {
  unsigned card = 0;
  std::optional<UsbInterface> usb;  // of a card that is a USB device

  DeviceFile Open() const;
  // "usb#vid_5a45&pid_8c00&mi_02#1-1.2"; "sound#ID" with the card's ALSA id where it is no USB one.
  PathText DisplayName() const;
  PathText DevicePath() const;
  PathText FriendlyName() const;
};

// In the order of their numbers. Nothing when there is no memory.
struct MicrophoneList {
  std::unique_ptr<Microphone[]> devices;
  std::size_t count = 0;
};
MicrophoneList ListMicrophones();

// Opens the card. *filter gets one reference, the caller's to release; null on failure.
HRESULT BindMicrophone(const Microphone& device, IBaseFilter** filter);

}  // namespace zem::platform
