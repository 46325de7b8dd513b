// For commands that make no sense without a certain extension unit.
#pragma once

#include <string>

#include "tools/zemctl/camera/session.h"

namespace zemctl {

// What it means that the camera lacks the unit of that name, for a result by its name.
ResultText DescribeAbsentUnit(const std::string& name, const std::string& resultName);

// Throws CallFailure when the camera lacks the unit of that name, see extension_unit_names.h.
void RequireUnit(const Session& session, const std::string& name);

}  // namespace zemctl
