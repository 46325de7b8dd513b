// What was written, held against what is there.
#pragma once

#include <span>
#include <string>

namespace zemctl {

// Throws ToolFailure (kNotVerified) when the two differ. `what` names what was read back.
void RequireSame(std::span<const unsigned char> written, std::span<const unsigned char> present,
                 const std::string& what);

}  // namespace zemctl
