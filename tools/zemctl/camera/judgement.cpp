#include "tools/zemctl/camera/judgement.h"

#include <algorithm>
#include <array>

#include "device/extension_units.h"

namespace zemctl {
namespace {

enum class When {
  kAlways,
  kAsFirst,   // as the first transfer of the call
  kIfAbsent,  // because the camera has no such unit
  kRepeated,  // if the next one is the same and succeeds
};

struct MayFail {
  std::string_view function;  // empty for any
  const GUID& unit;
  std::uint32_t selector;
  bool isSet;
  When when;
};

bool IsLost(const Transfer& transfer) { return transfer.hasFailed() || transfer.isShort(); }

// The transfers that may fail, or bring less than was asked for, although the call did what it
// reports.
const std::array kMayFail = std::to_array<MayFail>({
    // Asks whether there is a 512-byte data control; without an answer the shorter one is used.
    {"", zem::VendorXu, zem::vendor_selector::kFastBulkData, false, When::kAlways},
    // Asks how much the camera moves at once: the number counts, also with a failure.
    {"ZEMAPI_ReadFWData", zem::VendorXu, zem::vendor_selector::kBulkData, false, When::kAsFirst},
    // Without the Skype unit the same is done by commands of the vendor unit; a call that cannot do
    // without it says so.
    {"", zem::SkypeXu, zem::skype_selector::kVersion, false, When::kIfAbsent},
    // A camera knows one of the two commands, and may leave before it has acknowledged it. Whether
    // it came to its boot loader shows when that is looked for.
    {"ZEMAPI_ResetToRomboot", zem::VendorXu, zem::vendor_selector::kVcpCommand, true,
     When::kAlways},
    {"ZEMAPI_ResetToRomboot", zem::VendorXu, zem::vendor_selector::kVcpExtendedCommand, true,
     When::kAlways},
    // The library tries these again by itself.
    {"ZEMAPI_SendData", zem::VendorXu, zem::vendor_selector::kBulkData, true, When::kRepeated},
    {"ZEMAPI_ReadPartialFlashData", zem::VendorXu, zem::vendor_selector::kMemoryRead, false,
     When::kRepeated},
    {"ZEMAPI_ReadPartialFlashData", zem::VendorXu, zem::vendor_selector::kSlowFlashRead, false,
     When::kRepeated},
    // The look whether a burn has come to its end, once in a while.
    {"ZEMAPI_UpdateFW_516x", zem::VendorXu, zem::vendor_selector::kVcpReply, false,
     When::kRepeated},
    {"ZEMAPI_UpdateFlash", zem::VendorXu, zem::vendor_selector::kVcpReply, false, When::kRepeated},
    {"ZEMUVCEXT_UpdateFW_with_progress", zem::VendorXu, zem::vendor_selector::kVcpReply, false,
     When::kRepeated},
    {"ZEMUVCEXT_UpdateFW_with_progressEx", zem::VendorXu, zem::vendor_selector::kVcpReply, false,
     When::kRepeated},
    // They ask whether there is a 64-byte data control; without an answer the shorter one is used.
    {"ZEMUVCEXT_UpdateFW_with_progress", zem::VendorXu, zem::vendor_selector::kBulkData, false,
     When::kAlways},
    {"ZEMUVCEXT_UpdateFW_with_progressEx", zem::VendorXu, zem::vendor_selector::kBulkData, false,
     When::kAlways},
    {"ZEMUVCEXT_UpdateFW_Vision", zem::VendorXu, zem::vendor_selector::kBulkData, false,
     When::kAlways},
    {"ZEMAPI_UpdateCaliData", zem::VendorXu, zem::vendor_selector::kVcpReply, false,
     When::kRepeated},
});

// Whether a further attempt at `transfers[index]` went well in the end.
bool WentWellLater(std::span<const Transfer> transfers, std::size_t index) {
  const Transfer& failed = transfers[index];
  for (const Transfer& next : transfers.subspan(index + 1)) {
    if (!next.Is(failed.unit, failed.selector, failed.isSet) ||
        (failed.isSet && next.bytes != failed.bytes)) {
      return false;
    }
    if (!IsLost(next)) {
      return true;
    }
  }
  return false;
}

bool Excuses(const MayFail& entry, std::string_view function, std::span<const Transfer> transfers,
             std::size_t index) {
  const Transfer& failed = transfers[index];
  const bool isMeant = failed.isAddressed ? failed.Is(entry.unit, entry.selector, entry.isSet)
                                          : failed.unit == entry.unit;
  if (!isMeant || (!entry.function.empty() && entry.function != function)) {
    return false;
  }
  switch (entry.when) {
    case When::kAlways:
      return true;
    case When::kAsFirst:
      return index == 0;
    case When::kIfAbsent:
      return !failed.isAddressed || IsUnknownControl(failed.result);
    case When::kRepeated:
      // Nobody tries again because an answer was too short.
      return failed.hasFailed() && WentWellLater(transfers, index);
  }
  return false;
}

}  // namespace

std::optional<Transfer> FindLoss(std::string_view function, std::span<const Transfer> transfers) {
  for (std::size_t index = 0; index < transfers.size(); ++index) {
    if (IsLost(transfers[index]) &&
        std::none_of(kMayFail.begin(), kMayFail.end(), [&](const MayFail& entry) {
          return Excuses(entry, function, transfers, index);
        })) {
      return transfers[index];
    }
  }
  return std::nullopt;
}

}  // namespace zemctl
