// Firmware versions: six bytes, shown as "01 02 03 04 05 06".
#pragma once

#include <string>

#include "tools/zemctl/camera/session.h"

namespace zemctl {

// The camera's. Throws CallFailure.
std::string ReadVersion(const Session& session);

// The same from a command line, where the blanks may be missing. Throws UsageError for what is
// none.
std::string ParseVersion(const std::string& text);

}  // namespace zemctl
