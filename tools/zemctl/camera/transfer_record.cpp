#include "tools/zemctl/camera/transfer_record.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "device/extension_units.h"
#include "simulator/system_results.h"
#include "tools/zemctl/camera/extension_unit_names.h"

namespace zemctl {
namespace {

namespace results = zem::simulator;
namespace selector = zem::vendor_selector;

// For so long a camera may fail every transfer before it counts as gone.
constexpr std::uint64_t kLongestSilenceMilliseconds = 3000;

struct SelectorName {
  std::uint32_t selector;
  const char* name;
};

// What the vendor unit's controls are for.
constexpr std::array<SelectorName, 14> kVendorSelectors = {{
    {selector::kIspCommand, "ISP command"},
    {selector::kIspReply, "reply to an ISP command"},
    {selector::kBulkData, "data"},
    {selector::kVcpCommand, "VCP command"},
    {selector::kVcpReply, "reply to a VCP command, or status"},
    {selector::kIspExtendedCommand, "extended ISP command"},
    {selector::kIspExtendedReply, "reply to an extended ISP command"},
    {selector::kMemoryRead, "memory or flash"},
    {selector::kMemoryWrite, "memory"},
    {selector::kDeviceInfo, "device information"},
    {selector::kSlowFlashRead, "flash, serial number or format list"},
    {selector::kFastBulkData, "data"},
    {selector::kVcpExtendedCommand, "extended VCP command"},
    {selector::kNvmem, "non-volatile memory"},
}};

std::string UnitName(const GUID& id) {
  if (id == zem::IID_IAMVideoProcAmp) {
    return "video control";
  }
  if (id == zem::IID_IAMCameraControl) {
    return "camera control";
  }
  const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(),
                                        [&](const NamedUnit& each) { return each.id == id; });
  return unit != kUnits.end() ? unit->name : "unit";
}

}  // namespace

std::string NameOf(const Transfer& transfer) {
  if (!transfer.isAddressed) {
    return "addressing the " + UnitName(transfer.unit) + " unit";
  }
  std::string text = std::string(transfer.isSet ? "set " : "get ") + UnitName(transfer.unit) + " " +
                     std::to_string(transfer.selector);
  if (transfer.unit == zem::IID_IAMVideoProcAmp || transfer.unit == zem::IID_IAMCameraControl) {
    return text;
  }
  text += " (";
  for (const SelectorName& known : kVendorSelectors) {
    if (transfer.unit == zem::VendorXu && known.selector == transfer.selector) {
      text += std::string(known.name) + ", ";
    }
  }
  return text + std::to_string(transfer.length) + (transfer.length == 1 ? " byte)" : " bytes)");
}

std::string FailureOf(const Transfer& transfer) {
  std::array<char, 16> code = {};
  std::snprintf(code.data(), code.size(), " (0x%08X)", static_cast<unsigned>(transfer.result));
  const char* meaning = "the transfer failed";
  if (transfer.result == kStoppedResult) {
    return "stopped by the user";
  }
  if (MeansGone(transfer.result)) {
    meaning = "the camera is gone";
  } else if (transfer.result == results::kGenFailureResult) {
    meaning = "the camera did not carry it out";
  } else if (IsUnknownControl(transfer.result)) {
    meaning = "the camera has no such control";
  }
  return meaning + std::string(code.data());
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
