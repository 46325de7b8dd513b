// The question before something is overwritten or erased.
#pragma once

#include <string>

#include "tools/zemctl/frame/program.h"

namespace zemctl {

// Asks the person at the terminal, unless --yes was given: "WHAT. Go on? [y/N]". Throws ToolFailure
// for every answer but y and yes, in any case, the end of the input included.
void Confirm(const Options& options, const std::string& what);

}  // namespace zemctl
