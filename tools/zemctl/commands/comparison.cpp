#include "tools/zemctl/commands/comparison.h"

#include <algorithm>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

void RequireSame(std::span<const unsigned char> written, std::span<const unsigned char> present,
                 const std::string& what) {
  if (std::equal(written.begin(), written.end(), present.begin(), present.end())) {
    return;
  }
  const auto [first, other] =
      std::mismatch(written.begin(), written.end(), present.begin(), present.end());
  throw ToolFailure(kNotVerified,
                    what + " differs from what was written, from byte " +
                        HexNumber(static_cast<std::uint64_t>(first - written.begin()), 4) + " on",
                    "Write it again.");
}

}  // namespace zemctl
