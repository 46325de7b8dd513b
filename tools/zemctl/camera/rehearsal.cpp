#include "tools/zemctl/camera/rehearsal.h"

#include <memory>

#include "device/extension_units.h"
#include "simulator/com_camera.h"
#include "simulator/vendor_unit.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

using zem::simulator::Camera;
using zem::simulator::Outcome;
using zem::simulator::VendorSettings;
using zem::simulator::VendorUnit;

// Blocks up to this length are commands, and worth showing.
constexpr std::size_t kLongestBlock = 8;

constexpr std::uint8_t kTransferCode = 0x01;
constexpr std::uint8_t kAct = 0x01;

// Idle, and in favour of everything but a burn.
class WillingUnit : public VendorUnit {
 public:
  explicit WillingUnit(const VendorSettings& settings)
      : VendorUnit(settings), highSpeed_(settings.data.highSpeed) {}

  Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) override {
    switch (selector) {
      case zem::vendor_selector::kVcpCommand:
        static_cast<void>(VendorUnit::Set(selector, bytes));
        return bytes.size() > 1 && bytes[0] == kTransferCode && bytes[1] == kAct ? Outcome::kFailed
                                                                                 : Outcome::kDone;
      case zem::vendor_selector::kBulkData:
      case zem::vendor_selector::kFastBulkData:
        return Outcome::kDone;
      default:
        return VendorUnit::Set(selector, bytes);
    }
  }

  Outcome Get(std::uint16_t selector, std::size_t length,
              std::vector<std::uint8_t>& bytes) override {
    if (selector == zem::vendor_selector::kVcpReply) {
      bytes.assign(length, 0);
      return Outcome::kDone;
    }
    if (selector == zem::vendor_selector::kBulkData && highSpeed_) {
      // There is as much as is asked for: the data control takes that much, too.
      bytes.assign(length, 0);
      return Outcome::kDone;
    }
    return VendorUnit::Get(selector, length, bytes);
  }

 private:
  bool highSpeed_;
};

void Note(const Transfer& transfer, std::vector<RehearsedTransfer>& transfers) {
  RehearsedTransfer noted = {
      transfer.isSet, static_cast<std::uint16_t>(transfer.selector), transfer.length, 1, {}};
  if (transfer.isSet && transfer.length <= kLongestBlock) {
    noted.block = transfer.bytes;
  }
  if (!transfers.empty()) {
    RehearsedTransfer& last = transfers.back();
    if (noted.length > kLongestBlock && last.isSet == noted.isSet &&
        last.selector == noted.selector && last.length == noted.length) {
      ++last.count;
      return;
    }
  }
  transfers.push_back(std::move(noted));
}

}  // namespace

std::vector<RehearsedTransfer> Rehearse(const RehearsedCamera& settings,
                                        const std::function<void(const Session& session)>& call) {
  VendorSettings vendor;
  vendor.chip = settings.is517x ? VendorSettings::Chip::k517x : VendorSettings::Chip::k516x;
  vendor.data.highSpeed = settings.highSpeed;
  const auto camera = std::make_shared<Camera>();
  camera->AddUnit(std::make_unique<WillingUnit>(vendor));
  std::vector<RehearsedTransfer> transfers;
  const Session session(
      zem::ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeCameraFilter(camera, nullptr)));
  session.SetObserver([&](const Transfer& transfer) { Note(transfer, transfers); });
  call(session);
  return transfers;
}

void ReportRehearsal(const std::vector<RehearsedTransfer>& transfers, Report& report) {
  Report rows = Report::array();
  for (const RehearsedTransfer& transfer : transfers) {
    rows.push_back({{"transfer", std::string(transfer.isSet ? "set" : "get") + " vendor " +
                                     std::to_string(transfer.selector)},
                    {"count", transfer.count},
                    {"bytes", transfer.length},
                    {"block", HexText(transfer.block)}});
  }
  report["transfers"] = rows;
}

}  // namespace zemctl
