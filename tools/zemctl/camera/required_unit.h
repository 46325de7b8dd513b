// For commands that make no sense without a certain extension unit.
#pragma once

#include <string>

#include "tools/zemctl/camera/session.h"

namespace zemctl {

// Throws CallFailure when the camera lacks the unit of that name, see extension_unit_names.h.
void RequireUnit(const Session& session, const std::string& name);

}  // namespace zemctl
