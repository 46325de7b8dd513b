// What was written, held against what is there.
#pragma once

#include <span>
#include <string>

#include "tools/zemctl/frame/results.h"

namespace zemctl {

// Throws ToolFailure (kNotVerified) when the two differ. `what` names what was read back.
void RequireSame(std::span<const unsigned char> written, std::span<const unsigned char> present,
                 const std::string& what);

// The failure of reading back, beside which what was done before stands: a clause such as "the
// table was written".
CallFailure AfterDone(const std::string& done, const CallFailure& failure);

// What `read` brings; throws AfterDone where it throws CallFailure.
template <class Read>
auto ReadBack(const std::string& done, Read read) {
  try {
    return read();
  } catch (const CallFailure& failure) {
    throw AfterDone(done, failure);
  }
}

}  // namespace zemctl
