// Whether a call of the library did what it reports.
//
// Some of its functions report success although a transfer failed: a reply that could not be read
// looks like one of zeros, and so does what a short one left out; a burn is ordered though the
// image did not arrive. Callers of the library depend on that; the tool looks at the transfers
// instead.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "tools/zemctl/camera/transfer_record.h"

namespace zemctl {

// The first transfer of a call of `function` that failed or brought less than was asked for, unless
// it is one that may do so by design or was repeated with success.
std::optional<Transfer> FindLoss(std::string_view function, std::span<const Transfer> transfers);

}  // namespace zemctl
