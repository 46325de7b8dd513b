#include "tests/sweep/devices.h"

#include <algorithm>
#include <cstring>

#include "device/extension_units.h"
#include "platform/scsi.h"
#include "simulator/options.h"

namespace zem::testing::sweep {
namespace {

using Target = Request::Target;
using Way = Request::Way;

// The units by target.
constexpr std::array<GUID, 7> kUnits = {VendorXu, H264Xu,         SkypeXu,      TirellaXu,
                                        OrvaXu,   EncodingUnitXu, StreamProbeXu};
// Nodes before the first unit, of which the second is a processing unit.
constexpr DWORD kPlainNodes = 2;

// How many bytes are moved, as the device says: of a write this is a number only.
std::uint32_t Fill(const Answer& answer, bool isRead, std::span<std::uint8_t> data) {
  const auto length = static_cast<std::uint32_t>(data.size());
  switch (answer.fault) {
    case Fault::kFails:
    case Fault::kGone:
    case Fault::kBusy:
    case Fault::kStaysBusy:
      return 0;
    case Fault::kFailsFull:
    case Fault::kGarbage:
      if (isRead) {
        std::fill(data.begin(), data.end(), kGarbageByte);
      }
      return isRead || answer.fault == Fault::kFailsFull ? length : 0x7FFF;
    case Fault::kShort: {
      const std::size_t count = isRead && length > 1 ? 1 : 0;
      std::copy_n(answer.bytes.begin(), std::min(count, answer.bytes.size()), data.begin());
      return static_cast<std::uint32_t>(count);
    }
    default:
      if (!isRead) {
        return length;
      }
      std::copy_n(answer.bytes.begin(), std::min(answer.bytes.size(), data.size()), data.begin());
      return static_cast<std::uint32_t>(answer.bytes.size());
  }
}

}  // namespace

SweptCamera::SweptCamera(Wire& wire) : wire_(wire) {
  nodeCount = kPlainNodes + static_cast<DWORD>(kUnits.size());
}

HRESULT SweptCamera::CreateNodeInstance(DWORD node, REFIID iid, void** object) {
  const bool isProcessing = iid == IID_IVideoProcAmp && node == 1;
  if (!(iid == IID_IKsControl) && !isProcessing) {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  return WholeCamera::CreateNodeInstance(node, iid, object);
}

HRESULT SweptCamera::Request(const KSP_NODE& request, void* data, ULONG length,
                             ULONG* bytesReturned) {
  const auto unit = std::find(kUnits.begin(), kUnits.end(), request.Property.Set);
  const auto target = static_cast<std::size_t>(unit - kUnits.begin());
  if (unit == kUnits.end() || request.NodeId != kPlainNodes + target) {
    return E_FAIL;
  }
  if (request.Property.Id == 0) {
    *bytesReturned = sizeof(GUID) + 4;
    if (data != nullptr && length >= sizeof(GUID)) {
      std::memcpy(data, &*unit, sizeof(GUID));
    }
    return S_OK;
  }
  const bool isRead = (request.Property.Flags & 1) != 0;
  const std::span<std::uint8_t> bytes(static_cast<std::uint8_t*>(data), length);
  const Answer answer = wire_.Ask({isRead ? Way::kGet : Way::kSet, static_cast<Target>(target),
                                   static_cast<std::uint16_t>(request.Property.Id), length},
                                  isRead ? std::span<std::uint8_t>() : bytes);
  *bytesReturned = Fill(answer, isRead, bytes);
  return ResultOf(answer.fault);
}

HRESULT SweptCamera::Standard(const StandardRequest& request) {
  static constexpr std::array<Target, 3> kTargets = {Target::kAmplifier, Target::kTerminal,
                                                     Target::kMixer};
  static constexpr std::array<Way, 3> kWays = {Way::kGet, Way::kSet, Way::kRange};
  const Way way = kWays.at(static_cast<std::size_t>(request.way));
  const std::size_t numbers = way == Way::kRange ? 5 : 2;
  Bytes bytes(numbers * sizeof(LONG));
  for (std::size_t index = 0; index < numbers; ++index) {
    const LONG number = way == Way::kSet ? request.given[index] : *request.places[index];
    std::memcpy(&bytes[index * sizeof(LONG)], &number, sizeof(LONG));
  }
  const Answer answer = wire_.Ask(
      {way, kTargets.at(static_cast<std::size_t>(request.target)),
       static_cast<std::uint16_t>(request.property), static_cast<std::uint32_t>(bytes.size())},
      way == Way::kSet ? bytes : Bytes{});
  Fill(answer, way != Way::kSet, bytes);
  for (std::size_t index = 0; way != Way::kSet && index < numbers; ++index) {
    std::memcpy(request.places[index], &bytes[index * sizeof(LONG)], sizeof(LONG));
  }
  return ResultOf(answer.fault);
}

std::shared_ptr<simulator::Camera> MakeHealthyCamera(bool isProtected) {
  using Chip = simulator::VendorSettings::Chip;
  simulator::CameraOptions options;
  options.vendor.chip = isProtected ? Chip::k517x : Chip::k516x;
  options.h264Unit = true;
  options.skypeUnit = true;
  options.tirellaUnit = true;
  options.orvaUnit = true;
  options.encodingUnit = true;
  options.streamProbeUnit = true;
  options.h264Formats = {{2, 1, 1280, 720, 320, 180}, {1, 2, 640, 480}};
  auto camera = simulator::MakeCamera(options);
  Bytes ready(70);
  for (std::size_t index = 0; index < ready.size(); ++index) {
    ready[index] = static_cast<std::uint8_t>(0xB0 + index);
  }
  simulator::KeptMemory memory = camera->SaveMemory();
  memory["data"] = ready;
  camera->LoadMemory(memory);
  return camera;
}

std::optional<Bytes> AskCamera(simulator::Camera& camera, const Request& request,
                               std::span<const std::uint8_t> sent) {
  using simulator::ControlFamily;
  using simulator::Outcome;
  const auto numbers = [](std::initializer_list<std::int32_t> values) {
    Bytes bytes(values.size() * sizeof(std::int32_t));
    std::memcpy(bytes.data(), std::data(values), bytes.size());
    return bytes;
  };
  if (request.IsTransfer()) {
    std::size_t node = 0;
    while (camera.UnitAt(node) == nullptr ||
           !(camera.UnitAt(node)->id() == kUnits.at(static_cast<std::size_t>(request.target)))) {
      if (++node == camera.nodeCount()) {
        return std::nullopt;
      }
    }
    if (!request.IsRead()) {
      return camera.Set(node, request.number, sent) == Outcome::kDone ? std::optional(Bytes())
                                                                      : std::nullopt;
    }
    Bytes bytes(request.length);
    std::uint32_t reported = 0;
    const Outcome outcome = camera.Get(node, request.number, bytes, reported);
    bytes.resize(reported);
    return outcome == Outcome::kDone ? std::optional(bytes) : std::nullopt;
  }
  if (request.target == Target::kMixer) {
    return Bytes();
  }
  const auto family = request.target == Target::kAmplifier ? ControlFamily::kVideoProcessing
                                                           : ControlFamily::kCameraTerminal;
  simulator::ControlSetting setting;
  simulator::ControlRange range;
  switch (request.way) {
    case Way::kRange:
      if (camera.GetControlRange(family, request.number, range) != Outcome::kDone) {
        return std::nullopt;
      }
      return numbers({range.minimum, range.maximum, range.step, range.defaultValue, range.flags});
    case Way::kGet:
      if (camera.GetControl(family, request.number, setting) != Outcome::kDone) {
        return std::nullopt;
      }
      return numbers({setting.value, setting.flags});
    default:
      std::memcpy(&setting.value, sent.data(), sizeof(setting.value));
      std::memcpy(&setting.flags, sent.data() + sizeof(setting.value), sizeof(setting.flags));
      return camera.SetControl(family, request.number, setting) == Outcome::kDone
                 ? std::optional(Bytes())
                 : std::nullopt;
  }
}

platform::simulated::VolumeAnswer SweptVolume(Wire& wire) {
  return
      [&wire](const platform::simulated::VolumeRequest& request) -> std::optional<std::uint32_t> {
        constexpr std::size_t kCdb = 36;
        constexpr std::uint8_t kInquiry = 0x12;
        auto* const block = static_cast<std::uint8_t*>(request.block);
        const bool isRead = request.code == IOCTL_SCSI_PASS_THROUGH;
        std::span<std::uint8_t> data;
        if (isRead) {
          SCSI_PASS_THROUGH header;
          std::memcpy(&header, block, sizeof(header));
          data = {block + header.DataBufferOffset, header.DataTransferLength};
        } else {
          SCSI_PASS_THROUGH_DIRECT header;
          std::memcpy(&header, block, sizeof(header));
          data = {static_cast<std::uint8_t*>(header.DataBuffer), header.DataTransferLength};
        }
        const std::uint8_t command = block[kCdb] == kInquiry ? kInquiry : block[kCdb + 3];
        // The command counts as sent, too: it says where the data goes.
        Bytes sent(block + kCdb, block + kCdb + 16);
        if (!isRead) {
          sent.insert(sent.end(), data.begin(), data.end());
        }
        const Answer answer = wire.Ask({isRead ? Way::kIn : Way::kOut, Target::kVolume, command,
                                        static_cast<std::uint32_t>(data.size())},
                                       sent);
        Fill(answer, isRead, data);
        const std::uint32_t error = ErrorOf(answer.fault);
        return error != 0 ? std::optional(error) : std::nullopt;
      };
}

}  // namespace zem::testing::sweep
