#include "tools/zemctl/camera/serials.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "device/extension_units.h"

namespace zemctl {
namespace {

namespace selector = zem::vendor_selector;

// The command by which a camera makes its sensor's serial number ready.
constexpr std::uint8_t kPrepareSerial0 = 0x19;
constexpr std::uint8_t kPrepareSerial1 = 0x81;

std::string InLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

std::string Replacement(std::size_t number) { return "left-out-" + std::to_string(number); }

}  // namespace

void SerialFilter::TakeOut(TraceEvent& event) {
  if (auto* const run = std::get_if<TracedRun>(&event)) {
    for (std::string& argument : run->command) {
      argument = WithoutInstance(argument);
    }
    run->serialsLeftOut = true;
  } else if (auto* const list = std::get_if<TracedDevices>(&event)) {
    for (TracedDevice& device : list->devices) {
      for (std::optional<std::string>* const text : {&device.path, &device.devicePath}) {
        if (*text) {
          **text = WithoutInstance(**text);
        }
      }
      if (device.place) {
        *device.place = WithoutKnownInstance(*device.place);
      }
    }
  } else if (auto* const opening = std::get_if<TracedOpening>(&event)) {
    opening->path = WithoutInstance(opening->path);
  } else if (auto* const traced = std::get_if<TracedTransfer>(&event)) {
    TakeOutReply(*traced);
  }
}

// The instance is what follows the second '#', up to the next one: \\?\usb#vid_...#INSTANCE#{...}.
std::string SerialFilter::WithoutInstance(const std::string& text) {
  const std::size_t first = text.find('#');
  const std::size_t second = first == std::string::npos ? first : text.find('#', first + 1);
  if (second == std::string::npos) {
    return text;
  }
  const std::size_t end = std::min(text.find('#', second + 1), text.size());
  const std::string instance = InLowerCase(text.substr(second + 1, end - second - 1));
  const std::size_t number = instances_.try_emplace(instance, instances_.size() + 1).first->second;
  return text.substr(0, second + 1) + Replacement(number) + text.substr(end);
}

// A place may be an instance, where the system tells no better one.
std::string SerialFilter::WithoutKnownInstance(const std::string& text) const {
  const auto known = instances_.find(InLowerCase(text));
  return known != instances_.end() ? Replacement(known->second) : text;
}

void SerialFilter::TakeOutReply(TracedTransfer& traced) {
  Transfer& transfer = traced.transfer;
  bool& isNext = isSerialNext_[traced.camera];
  if (transfer.Is(zem::VendorXu, selector::kVcpCommand, true)) {
    isNext = transfer.bytes.size() > 1 && transfer.bytes[0] == kPrepareSerial0 &&
             transfer.bytes[1] == kPrepareSerial1;
  } else if (isNext && transfer.Is(zem::VendorXu, selector::kSensorSerial, false)) {
    std::fill(transfer.bytes.begin(), transfer.bytes.end(), std::uint8_t{0});
    traced.leftOut = true;
  }
}

}  // namespace zemctl
