#include "tools/zemctl/commands/comparison.h"

#include <algorithm>

#include "tools/zemctl/frame/bytes.h"

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

CallFailure AfterDone(const std::string& done, const CallFailure& failure) {
  ResultText text = failure.text();
  text.cameraState = done + "; only reading back failed" +
                     (text.cameraState.empty() ? "" : ": " + text.cameraState);
  return {failure.function(), failure.result(), text};
}

}  // namespace zemctl
