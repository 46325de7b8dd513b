#include "tools/zemctl/updates/image_transfers.h"

#include <algorithm>

#include "device/extension_units.h"

namespace zemctl {
namespace {

namespace selector = zem::vendor_selector;

constexpr std::uint8_t kTransferCode = 0x01;
constexpr std::uint8_t kAct = 0x01;

constexpr std::uint8_t kIdleStatus = 0x00;
constexpr std::uint8_t kFailedStatus = 0x82;

}  // namespace

void ImageTransfers::OnTransfer(const Transfer& transfer) {
  if (transfer.hasFailed()) {
    return;
  }
  const auto& bytes = transfer.bytes;
  if (transfer.Is(zem::VendorXu, selector::kBulkData, true) ||
      transfer.Is(zem::VendorXu, selector::kFastBulkData, true)) {
    sent_ += transfer.length;
  } else if (transfer.Is(zem::VendorXu, selector::kVcpCommand, true)) {
    ordered_ = ordered_ || (bytes.size() > 1 && bytes[0] == kTransferCode && bytes[1] == kAct);
  } else if (ordered_ && transfer.Is(zem::VendorXu, selector::kVcpReply, false)) {
    seenBurning_ =
        seenBurning_ || (!bytes.empty() && bytes[0] != kIdleStatus && bytes[0] != kFailedStatus);
  }
}

std::uint32_t ImageTransfers::sentPercent() const {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(sent_, length_) * 100 / length_);
}

}  // namespace zemctl
