#include "tools/zemctl/camera/transfer_record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "device/extension_units.h"
#include "include/ZemUVCResults.h"
#include "simulator/system_results.h"
#include "tools/zemctl/camera/extension_unit_names.h"

namespace zemctl {
namespace {

namespace results = zem::simulator;
namespace selector = zem::vendor_selector;

// For so long a camera may fail every transfer before it counts as gone.
constexpr std::uint64_t kLongestSilenceMilliseconds = 3000;

struct SelectorName {
  const GUID& unit;
  std::uint32_t selector;
  const char* name;
};

// What the units' controls are for.
const std::array kSelectors = std::to_array<SelectorName>({
    {zem::VendorXu, selector::kIspCommand, "ISP command"},
    {zem::VendorXu, selector::kIspReply, "reply to an ISP command"},
    {zem::VendorXu, selector::kBulkData, "data"},
    {zem::VendorXu, selector::kVcpCommand, "VCP command"},
    {zem::VendorXu, selector::kVcpReply, "reply to a VCP command, or status"},
    {zem::VendorXu, selector::kIspExtendedCommand, "extended ISP command"},
    {zem::VendorXu, selector::kIspExtendedReply, "reply to an extended ISP command"},
    {zem::VendorXu, selector::kMemoryRead, "memory or flash"},
    {zem::VendorXu, selector::kMemoryWrite, "memory"},
    {zem::VendorXu, selector::kDeviceInfo, "device information"},
    {zem::VendorXu, selector::kSlowFlashRead, "flash, serial number or format list"},
    {zem::VendorXu, selector::kFastBulkData, "data"},
    {zem::VendorXu, selector::kVcpExtendedCommand, "extended VCP command"},
    {zem::VendorXu, selector::kVcpExtendedReply, "reply to an extended VCP command"},
    {zem::VendorXu, selector::kNvmem, "non-volatile memory"},
    {zem::H264Xu, zem::h264_selector::kProbe, "probe"},
    {zem::H264Xu, zem::h264_selector::kCommit, "commit"},
    {zem::SkypeXu, zem::skype_selector::kVersion, "version, or resolution"},
    {zem::SkypeXu, zem::skype_selector::kH264Switch, "H.264 switch"},
    {zem::TirellaXu, zem::tirella_selector::kLed, "LED"},
    {zem::TirellaXu, zem::tirella_selector::kNvmem, "non-volatile memory"},
    {zem::OrvaXu, zem::orva_selector::kVersion, "version"},
    {zem::OrvaXu, zem::orva_selector::kBuildDay, "build day"},
    {zem::OrvaXu, zem::orva_selector::kStreamId, "stream"},
    {zem::OrvaXu, zem::orva_selector::kEndpointSetting, "endpoint setting"},
    {zem::OrvaXu, zem::orva_selector::kProbe, "probe"},
    {zem::OrvaXu, zem::orva_selector::kCommit, "commit"},
    {zem::OrvaXu, zem::orva_selector::kToggleLayer, "layer"},
    {zem::EncodingUnitXu, 1, "video resolution"},
    {zem::EncodingUnitXu, 2, "frame interval"},
    {zem::EncodingUnitXu, 3, "rate control"},
    {zem::EncodingUnitXu, 4, "sync frame"},
    {zem::EncodingUnitXu, 5, "long-term reference frame"},
    {zem::EncodingUnitXu, 6, "priority id"},
    {zem::EncodingUnitXu, 7, "start layer"},
    {zem::EncodingUnitXu, 8, "stop layer"},
    {zem::StreamProbeXu, zem::stream_probe_selector::kProbe, "probe"},
    {zem::StreamProbeXu, zem::stream_probe_selector::kCommit, "commit"},
});

}  // namespace

std::string UnitName(const GUID& id) {
  if (id == zem::IID_IAMVideoProcAmp) {
    return "video control";
  }
  if (id == zem::IID_IAMCameraControl) {
    return "camera control";
  }
  if (id == zem::IID_IAMAudioInputMixer) {
    return "microphone level";
  }
  const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(),
                                        [&](const NamedUnit& each) { return each.id == id; });
  return unit != kUnits.end() ? unit->name : "unit";
}

std::string ControlName(const Transfer& transfer) {
  const auto* const known =
      std::find_if(kSelectors.begin(), kSelectors.end(), [&](const SelectorName& each) {
        return each.unit == transfer.unit && each.selector == transfer.selector;
      });
  return known != kSelectors.end() ? known->name : "";
}

Transfer LevelTransfer(double level) {
  Transfer transfer;
  transfer.unit = zem::IID_IAMAudioInputMixer;
  transfer.isSet = true;
  transfer.values = {static_cast<std::int32_t>(std::lround(level * 100))};
  return transfer;
}

std::string NameOf(const Transfer& transfer) {
  if (!transfer.isAddressed) {
    return "addressing the " + UnitName(transfer.unit) + " unit";
  }
  std::string text = std::string(transfer.isSet ? "set " : "get ") + UnitName(transfer.unit) + " " +
                     std::to_string(transfer.selector);
  if (transfer.isStandardControl()) {
    return text;
  }
  text += " (";
  if (const std::string control = ControlName(transfer); !control.empty()) {
    text += control + ", ";
  }
  return text + std::to_string(transfer.length) + (transfer.length == 1 ? " byte)" : " bytes)");
}

std::string FailureOf(const Transfer& transfer) {
  if (transfer.isShort()) {
    return "it brought " + std::to_string(transfer.moved) + " of " +
           std::to_string(transfer.length) + " bytes";
  }
  std::array<char, 16> code = {};
  std::snprintf(code.data(), code.size(), " (0x%08X)", static_cast<unsigned>(transfer.result));
  if (transfer.result == kStoppedResult) {
    return "stopped by the user";
  }
  const char* const known = ZemTransferFailureText(transfer.result);
  const std::string meaning = known != nullptr ? known : "the transfer failed";
  return meaning + code.data();
}

bool MeansGone(HRESULT result) {
  constexpr auto kNoLongerThere = static_cast<HRESULT>(0x80070037U);
  return result == results::kNotConnectedResult || result == kNoLongerThere;
}

bool IsUnknownControl(HRESULT result) {
  return result == results::kNotFoundResult || result == results::kSetNotFoundResult;
}

std::string TransferRecord::Extent() const {
  if (taken_ == 0) {
    return "it was sent nothing";
  }
  return "it took " + std::to_string(taken_) +
         (taken_ == 1 ? " transfer, " : " transfers, the last of them ") + lastTaken_;
}

void TransferRecord::Add(Transfer transfer) {
  const std::uint64_t now = clock_();
  transfer.milliseconds = now - start_;
  if (!transfer.hasFailed()) {
    isFailing_ = false;
  } else if (!std::exchange(isFailing_, true)) {
    failingSince_ = now;
  }
  isGone_ = isGone_ || MeansGone(transfer.result) ||
            (isFailing_ && now - failingSince_ >= kLongestSilenceMilliseconds);
  wasStopped_ = wasStopped_ || transfer.result == kStoppedResult;
  if (transfer.isSet && !transfer.hasFailed()) {
    ++taken_;
    lastTaken_ = NameOf(transfer);
  }
  transfers_.push_back(std::move(transfer));
  if (observer_) {
    observer_(transfers_.back());
  }
}

}  // namespace zemctl
